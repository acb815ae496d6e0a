#include "platform/formats.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/decimal_text.h"

#include <QDate>
#include <QLocale>
#include <QTime>

namespace rt {

namespace {

bool isUnitedStates(const QLocale& locale) {
    return locale.language() == QLocale::English && locale.territory() == QLocale::UnitedStates;
}

QString withFourDigitYear(QString pattern) {
    if (!pattern.contains(QLatin1String("yyyy"))) {
        pattern.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    }
    return pattern;
}

QString grouped(const QString& digits, const QString& separator) {
    QString result;
    for (int i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0) {
            result += separator;
        }
        result += digits[i];
    }
    return result;
}

// The number rounded to `decimals`, with the integer part grouped if asked, unsigned.
QString fixedText(const detail::Decimal& rounded, int minDecimals, bool group, bool leadingZero) {
    const QLocale locale;
    QString integer = detail::integerDigits(rounded);
    if (integer == "0" && !leadingZero) {
        integer.clear();
    }
    if (group) {
        integer = grouped(integer, locale.groupSeparator());
    }
    const QString fraction = detail::fractionDigits(rounded, minDecimals);
    return fraction.isEmpty() ? integer : integer + locale.decimalPoint() + fraction;
}

QString numberText(double value, int decimals, bool group) {
    const detail::Decimal rounded = detail::roundFixed(detail::exactDecimal(value), decimals);
    const QString text = fixedText(rounded, decimals, group, true);
    return rounded.negative ? "-" + text : text;
}

QString patternText(double value, QString pattern) {
    const bool percent = pattern.contains('%');
    if (percent) {
        value *= 100;
    }
    static const QString placeholders = QStringLiteral("0#,.%");
    int first = 0;
    while (first < pattern.size() && !placeholders.contains(pattern[first])) {
        ++first;
    }
    int last = pattern.size() - 1;
    while (last >= first && !placeholders.contains(pattern[last])) {
        --last;
    }
    const QString prefix = pattern.left(first);
    const QString suffix = pattern.mid(last + 1);
    const QString body = pattern.mid(first, last - first + 1).remove('%');
    const int point = body.indexOf('.');
    const QString integerPart = point < 0 ? body : body.left(point);
    const QString fractionPart = point < 0 ? QString() : body.mid(point + 1);
    const int maxDecimals = static_cast<int>(fractionPart.count('0') + fractionPart.count('#'));
    const int minDecimals = static_cast<int>(fractionPart.count('0'));
    const int minIntegerDigits = static_cast<int>(integerPart.count('0'));

    detail::Decimal rounded = detail::roundFixed(detail::exactDecimal(value), maxDecimals);
    QString fraction = detail::fractionDigits(rounded, maxDecimals);
    while (fraction.size() > minDecimals && fraction.endsWith('0')) {
        fraction.chop(1);
    }
    QString integer = detail::integerDigits(rounded);
    if (integer == "0") {
        integer.clear();
    }
    integer = integer.rightJustified(minIntegerDigits, '0');
    if (integerPart.contains(',')) {
        integer = grouped(integer, QLocale().groupSeparator());
    }
    const QString text =
        fraction.isEmpty() ? integer : integer + QLocale().decimalPoint() + fraction;
    const QString sign = rounded.negative && !rounded.isZero() ? QStringLiteral("-") : QString();
    return sign + prefix + text + (percent ? QStringLiteral("%") : QString()) + suffix;
}

QString dateFormatted(const Variant& value, const QString& pattern, bool dateOnly, bool timeOnly) {
    const double serial = CDate(value);
    const DateParts parts = splitDate(serial);
    const QLocale locale;
    if (timeOnly) {
        return locale.toString(QTime(parts.hour, parts.minute, parts.second), pattern);
    }
    const QDate date(parts.year, parts.month, parts.day);
    return dateOnly ? locale.toString(date, pattern) : QString();
}

}  // namespace

RegionalFormats regionalFormats() {
    const QLocale locale;
    if (isUnitedStates(locale)) {
        return {"M/d/yyyy", "dddd, MMMM dd, yyyy", "dd-MMM-yy", "h:mm:ss AP", "hh:mm AP", "HH:mm"};
    }
    QString longTime = locale.timeFormat(QLocale::LongFormat);
    longTime.remove(QLatin1String(" t")).remove(QLatin1String("t"));
    return {withFourDigitYear(locale.dateFormat(QLocale::ShortFormat)),
            locale.dateFormat(QLocale::LongFormat),
            "dd-MMM-yy",
            longTime.trimmed(),
            locale.timeFormat(QLocale::ShortFormat),
            "HH:mm"};
}

QString Format(const Variant& value, const QString& format) {
    if (value.isNull() || value.isEmpty()) {
        return {};
    }
    if (format.isEmpty()) {
        return CStr(value);
    }
    const RegionalFormats formats = regionalFormats();
    const QString name = format.toLower();
    const bool isDateLike = value.isDate() || IsDate(value) || value.isNumber();
    struct NamedDate {
        const char* name;
        QString pattern;
        bool timeOnly;
    };
    const NamedDate named[] = {
        {"short date", formats.shortDate, false},   {"long date", formats.longDate, false},
        {"medium date", formats.mediumDate, false}, {"long time", formats.longTime, true},
        {"medium time", formats.mediumTime, true},  {"short time", formats.shortTime, true},
    };
    for (const NamedDate& n : named) {
        if (name == QLatin1String(n.name)) {
            if (!isDateLike) {
                return CStr(value);
            }
            return dateFormatted(value, n.pattern, !n.timeOnly, n.timeOnly);
        }
    }
    if (name == "general date") {
        return isDateLike ? dateText(CDate(value)) : CStr(value);
    }
    if (!IsNumeric(value)) {
        return CStr(value);
    }
    const double number = CDbl(value);
    if (name == "general number") {
        return doubleText(number);
    }
    if (name == "currency") {
        return FormatCurrency(value);
    }
    if (name == "fixed") {
        return numberText(number, 2, false);
    }
    if (name == "standard") {
        return numberText(number, 2, true);
    }
    if (name == "percent") {
        return numberText(number * 100, 2, false) + "%";
    }
    return patternText(number, format);
}

QString FormatNumber(const Variant& value, int decimals) {
    return numberText(CDbl(value), decimals < 0 ? 2 : decimals, true);
}

QString FormatCurrency(const Variant& value, int decimals) {
    const QLocale locale;
    const double number = CDbl(value);
    const int places = decimals < 0 ? 2 : decimals;
    const detail::Decimal rounded = detail::roundFixed(detail::exactDecimal(number), places);
    const QString amount = fixedText(rounded, places, true, true);
    const QString symbol = locale.currencySymbol();
    if (isUnitedStates(locale)) {
        return rounded.negative ? "(" + symbol + amount + ")" : symbol + amount;
    }
    return locale.toCurrencyString(number, symbol, places);
}

}  // namespace rt
