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

QString significantText(double value, int digits) {
    using namespace detail;
    const Decimal d = roundSignificant(exactDecimal(value), digits);
    if (d.isZero()) {
        return QStringLiteral("0");
    }
    const QString point = QLocale().decimalPoint();
    const QString sign = d.negative ? QStringLiteral("-") : QString();
    if (d.exponent < -4 || d.exponent >= digits) {
        QString mantissa = d.digits.left(1);
        if (d.digits.size() > 1) {
            mantissa += point + d.digits.mid(1);
        }
        const QString exponent = QString::number(std::abs(d.exponent)).rightJustified(2, '0');
        return sign + mantissa + "E" + (d.exponent < 0 ? "-" : "+") + exponent;
    }
    const QString fraction = fractionDigits(d, 0);
    return sign + integerDigits(d) + (fraction.isEmpty() ? QString() : point + fraction);
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

qint64 CCur(const Variant& value) {
    if (value.type() == VarType::Currency) {
        return value.integerValue();
    }
    const double scaled = std::nearbyint(numberOf(value) * 10000.0);
    if (!(std::fabs(scaled) < 9.2233720368547758e18)) {
        throw Error::standard(Overflow);
    }
    return static_cast<qint64>(scaled);
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
            return significantText(static_cast<double>(value.integerValue()) / 10000.0, 19);
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

std::optional<double> parseNumberText(const QString& input, const QLocale& locale) {
    const QString text = input.trimmed();
    if (auto radix = radixPrefixed(text)) {
        return radix;
    }
    const QString currency = locale.currencySymbol();
    const QString group = locale.groupSeparator();
    const QString point = locale.decimalPoint();
    QString plain;  // the number in C form
    int i = 0;
    auto skipCurrency = [&] {
        if (!currency.isEmpty() && text.mid(i, currency.size()) == currency) {
            i += currency.size();
        }
    };
    skipCurrency();
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        plain += text[i++];
    }
    skipCurrency();
    int digits = 0;
    while (i < text.size()) {
        if (text[i].isDigit()) {
            plain += text[i++];
            ++digits;
        } else if (digits > 0 && !group.isEmpty() && text.mid(i, group.size()) == group) {
            i += group.size();
        } else {
            break;
        }
    }
    if (text.mid(i, point.size()) == point) {
        i += point.size();
        plain += '.';
        while (i < text.size() && text[i].isDigit()) {
            plain += text[i++];
            ++digits;
        }
    }
    if (digits == 0) {
        return std::nullopt;
    }
    if (i < text.size() && QStringLiteral("eEdD").contains(text[i])) {
        QString exponent = QStringLiteral("e");
        int j = i + 1;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) {
            exponent += text[j++];
        }
        const int start = j;
        while (j < text.size() && text[j].isDigit()) {
            exponent += text[j++];
        }
        if (j == start) {
            return std::nullopt;
        }
        plain += exponent;
        i = j;
    }
    skipCurrency();
    if (i != text.size()) {
        return std::nullopt;
    }
    bool ok = false;
    const double number = plain.toDouble(&ok);
    if (!ok || !std::isfinite(number)) {
        return std::nullopt;
    }
    return number;
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
