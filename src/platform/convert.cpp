#include "platform/convert.h"

#include "platform/dates.h"
#include "platform/decimal_text.h"
#include "platform/rt_error.h"

#include <QRegularExpression>

#include <cmath>
#include <limits>

namespace rt {

namespace {

std::optional<double> radixNumber(const QString& digits, int base) {
    if (digits.isEmpty() || digits.size() > 11) {
        return std::nullopt;
    }
    bool ok = false;
    const quint64 raw = digits.toULongLong(&ok, base);
    if (!ok || raw > 0xFFFFFFFFull) {
        return std::nullopt;
    }
    // Short forms are 16-bit, longer ones 32-bit, both read as signed: &HFFFF is -1.
    if (raw <= 0xFFFF && digits.size() <= (base == 16 ? 4 : 6)) {
        return static_cast<double>(static_cast<qint16>(raw));
    }
    return static_cast<double>(static_cast<qint32>(raw));
}

std::optional<double> radixPrefixed(const QString& text) {
    if (text.size() < 3 || text[0] != '&') {
        return std::nullopt;
    }
    const QChar kind = text[1].toUpper();
    if (kind == 'H') {
        return radixNumber(text.mid(2), 16);
    }
    if (kind == 'O') {
        return radixNumber(text.mid(2), 8);
    }
    return std::nullopt;
}

// Reads a number the way the runtime's own formatting writes one: blanks, a sign, the currency
// symbol and parentheses may stand on either side of the digits, in any order, so "($5.00)",
// "-$5", "$-5", "5-" and "5 $" all read back. Each may occur once, and parentheses already say
// "negative", so "--5", "-5-", "(-5)" and "$5$" are refused; anything else in the text, such as
// a symbol between digits, is too. (Runtime documentation, "NUMPARSE structure": leading and
// trailing white, plus and minus, parentheses, currency symbol and thousands separators.)
class NumberReader {
public:
    NumberReader(const QString& text, const QLocale& locale)
        : text_(text),
          currency_(locale.currencySymbol()),
          group_(locale.groupSeparator()),
          point_(locale.decimalPoint()) {}

    std::optional<detail::Decimal> read() {
        affixes(QStringLiteral("("), opened_);
        if (!mantissa() || !exponent()) {
            return std::nullopt;
        }
        affixes(QStringLiteral(")"), closed_);
        const bool wellFormed = at_ == text_.size() && opened_ == closed_ && opened_ <= 1 &&
                                signs_ + opened_ <= 1 && symbols_ <= 1;
        if (!wellFormed) {
            return std::nullopt;
        }
        return detail::normalised(minus_ || opened_, digits_, whole_ - 1 + power_);
    }

private:
    bool take(const QString& token) {
        if (token.isEmpty() || !text_.sliced(at_).startsWith(token)) {
            return false;
        }
        at_ += token.size();
        return true;
    }

    bool takeDigit() {
        if (at_ == text_.size() || !text_[at_].isDigit()) {
            return false;
        }
        digits_ += text_[at_++];
        return true;
    }

    void affixes(const QString& parenthesis, int& parentheses) {
        while (at_ < text_.size()) {
            if (text_[at_].isSpace()) {
                ++at_;
            } else if (take(parenthesis)) {
                ++parentheses;
            } else if (take(QStringLiteral("-"))) {
                minus_ = true;
                ++signs_;
            } else if (take(QStringLiteral("+"))) {
                ++signs_;
            } else if (take(currency_)) {
                ++symbols_;
            } else {
                return;
            }
        }
    }

    // Group separators may follow any digit of the whole part.
    bool mantissa() {
        while (takeDigit() || (!digits_.isEmpty() && take(group_))) {
        }
        whole_ = digits_.size();
        if (take(point_)) {
            while (takeDigit()) {
            }
        }
        return !digits_.isEmpty();
    }

    bool exponent() {
        if (at_ == text_.size() || !QStringLiteral("eEdD").contains(text_[at_])) {
            return true;
        }
        const int start = ++at_;
        if (!take(QStringLiteral("-"))) {
            take(QStringLiteral("+"));
        }
        while (at_ < text_.size() && text_[at_].isDigit()) {
            ++at_;
        }
        // No double or Currency reaches past a 16-bit power of ten; a bare sign is refused too.
        bool ok = false;
        power_ = text_.sliced(start, at_ - start).toShort(&ok);
        return ok;
    }

    const QString& text_;
    const QString currency_;
    const QString group_;
    const QString point_;
    int at_ = 0;
    QString digits_;
    int whole_ = 0;  // digits before the decimal point
    int power_ = 0;
    bool minus_ = false;
    int signs_ = 0;
    int symbols_ = 0;
    int opened_ = 0;
    int closed_ = 0;
};

std::optional<detail::Decimal> readNumberText(const QString& text, const QLocale& locale) {
    if (auto radix = radixPrefixed(text.trimmed())) {
        return detail::exactDecimal(*radix);
    }
    return NumberReader(text, locale).read();
}

double numberOf(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
            return 0;
        case VarType::Null:
            throw Error::standard(InvalidUseOfNull);
        case VarType::Integer:
        case VarType::Long:
        case VarType::Boolean:
            return static_cast<double>(value.integerValue());
        case VarType::Currency:
            return static_cast<double>(value.integerValue()) / 10000.0;
        case VarType::Single:
        case VarType::Double:
        case VarType::Date:
            return value.realValue();
        case VarType::String:
            if (auto number = parseNumberText(value.text())) {
                return *number;
            }
            throw Error::standard(TypeMismatch);
        case VarType::Bytes:
            break;
    }
    throw Error::standard(TypeMismatch);
}

template <typename Int>
Int roundedInteger(const Variant& value) {
    const double rounded = std::nearbyint(numberOf(value));  // the FPU's half-to-even
    if (!(rounded >= std::numeric_limits<Int>::min() &&
          rounded <= std::numeric_limits<Int>::max())) {
        throw Error::standard(Overflow);
    }
    return static_cast<Int>(rounded);
}

// All the digits of a number, without trailing zeros, in the locale.
QString plainText(const detail::Decimal& d) {
    const QString sign = d.negative ? QStringLiteral("-") : QString();
    const QString fraction = detail::fractionDigits(d, 0);
    return sign + detail::integerDigits(d) +
           (fraction.isEmpty() ? QString() : QLocale().decimalPoint() + fraction);
}

QString significantText(double value, int digits) {
    using namespace detail;
    const Decimal d = roundSignificant(exactDecimal(value), digits);
    if (d.isZero() || (d.exponent >= -4 && d.exponent < digits)) {
        return plainText(d);
    }
    const QString sign = d.negative ? QStringLiteral("-") : QString();
    QString mantissa = d.digits.left(1);
    if (d.digits.size() > 1) {
        mantissa += QLocale().decimalPoint() + d.digits.mid(1);
    }
    const QString exponent = QString::number(std::abs(d.exponent)).rightJustified(2, '0');
    return sign + mantissa + "E" + (d.exponent < 0 ? "-" : "+") + exponent;
}

// Currency counts units of 1/10000 in 64 bits (runtime documentation, "Currency data type":
// -922,337,203,685,477.5808 to 922,337,203,685,477.5807); past that is an overflow.
constexpr int currencyDecimals = 4;

qint64 currencyFromFloat(double value) {
    const double scaled = std::nearbyint(value * 10000.0);  // the FPU's half-to-even
    if (!(scaled >= -0x1p63 && scaled < 0x1p63)) {
        throw Error::standard(Overflow);
    }
    return static_cast<qint64>(scaled);
}

// Text is taken digit for digit, so that every Currency value survives a trip through its text.
qint64 currencyFromText(const QString& text) {
    const auto number = readNumberText(text, QLocale());
    if (!number) {
        throw Error::standard(TypeMismatch);
    }
    const auto rounded = detail::roundFixed(*number, currencyDecimals, detail::Ties::ToEven);
    if (const auto scaled = detail::scaledInteger(rounded, currencyDecimals)) {
        return *scaled;
    }
    throw Error::standard(Overflow);
}

}  // namespace

qint16 CInt(const Variant& value) {
    return roundedInteger<qint16>(value);
}

qint32 CLng(const Variant& value) {
    return roundedInteger<qint32>(value);
}

float CSng(const Variant& value) {
    const double number = numberOf(value);
    if (std::fabs(number) > std::numeric_limits<float>::max()) {
        throw Error::standard(Overflow);
    }
    return static_cast<float>(number);
}

double CDbl(const Variant& value) {
    return numberOf(value);
}

// Rounds half to even at four decimals: the rule "Type Conversion Functions" (runtime
// documentation) gives for CInt and CLng, applied at Currency's last digit.
qint64 CCur(const Variant& value) {
    switch (value.type()) {
        case VarType::Currency:
            return value.integerValue();
        case VarType::String:
            return currencyFromText(value.text());
        default:
            return currencyFromFloat(numberOf(value));
    }
}

bool CBool(const Variant& value) {
    if (value.isString()) {
        const QString text = value.text().trimmed();
        if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
            return true;
        }
        if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0) {
            return false;
        }
    }
    return numberOf(value) != 0;
}

QString CStr(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
            return {};
        case VarType::Null:
            throw Error::standard(InvalidUseOfNull);
        case VarType::Integer:
        case VarType::Long:
            return QString::number(value.integerValue());
        case VarType::Single:
            return singleText(static_cast<float>(value.realValue()));
        case VarType::Double:
            return doubleText(value.realValue());
        case VarType::Currency:
            return plainText(detail::scaledDecimal(value.integerValue(), currencyDecimals));
        case VarType::Date:
            return dateText(value.realValue());
        case VarType::String:
            return value.text();
        case VarType::Boolean:
            return value.integerValue() ? QStringLiteral("True") : QStringLiteral("False");
        case VarType::Bytes:
            return QString::fromLatin1(value.bytes());
    }
    return {};
}

QString singleText(float value) {
    return significantText(value, 7);
}

QString doubleText(double value) {
    return significantText(value, 15);
}

bool IsNumeric(const Variant& value) {
    switch (value.type()) {
        case VarType::Empty:
        case VarType::Integer:
        case VarType::Long:
        case VarType::Single:
        case VarType::Double:
        case VarType::Currency:
        case VarType::Boolean:
            return true;
        case VarType::String:
            return parseNumberText(value.text()).has_value();
        default:
            return false;
    }
}

std::optional<double> parseNumberText(const QString& text, const QLocale& locale) {
    const auto number = readNumberText(text, locale);
    if (!number) {
        return std::nullopt;
    }
    const double value = detail::toDouble(*number);
    if (!std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

double Val(const QString& input) {
    QString text = input;
    text.remove(QRegularExpression(QStringLiteral("[ \\t\\r\\n]")));
    if (auto radix = radixPrefixed(text)) {
        return *radix;
    }
    static const QRegularExpression leadingNumber(
        QStringLiteral("^[+-]?(\\d*\\.?\\d*)([eEdD][+-]?\\d+)?"));
    QString number = leadingNumber.match(text).captured(0);
    number.replace('d', 'e').replace('D', 'e');
    bool ok = false;
    const double value = number.toDouble(&ok);
    return ok ? value : 0;
}

}  // namespace rt
