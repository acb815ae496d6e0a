#include "platform/formats.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/decimal_text.h"

#include <QDate>
#include <QLocale>
#include <QTime>

#include <algorithm>
#include <optional>

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

// The pattern language. A pattern is split into sections at ";" and each section into tokens;
// quoted text and backslash escapes are always literal. Whatever a formatter doesn't read as a
// placeholder it shows as written.

enum class TokenKind {
    Literal,
    Digit,     // 0 #
    Point,     // .
    Comma,     // ,
    Percent,   // %
    Exponent,  // E- E+ e- e+
    DatePart,  // d dd ... yyyy h n s w ww q y c ttttt, in either case
    AmPm,      // AM/PM am/pm A/P a/p AMPM, as written
    DateSeparator,
    TimeSeparator,
    TextPlaceholder,  // @ &
    TextFlag,         // < > !
};

struct Token {
    TokenKind kind;
    QString text;
};
using Section = QList<Token>;

// The date codes a run of one letter may form, longest first; a longer run is read as several.
QList<int> dateCodeLengths(QChar letter) {
    switch (letter.toLower().unicode()) {
        case 'd':
            return {6, 5, 4, 3, 2, 1};
        case 'm':
            return {4, 3, 2, 1};
        case 'y':
            return {4, 2, 1};
        case 'h':
        case 'n':
        case 's':
        case 'w':
            return {2, 1};
        case 'q':
        case 'c':
            return {1};
        case 't':
            return {5};
        default:
            return {};
    }
}

int runLength(const QString& pattern, int at) {
    int end = at;
    while (end < pattern.size() && pattern[end].toLower() == pattern[at].toLower()) {
        ++end;
    }
    return end - at;
}

// Reads the token at `at` and moves past it.
Token nextToken(const QString& pattern, int& at) {
    const QChar c = pattern[at];
    if (c == '"') {
        const int close = pattern.indexOf('"', at + 1);
        const int end = close < 0 ? pattern.size() : close;
        const QString text = pattern.mid(at + 1, end - at - 1);
        at = end + 1;
        return {TokenKind::Literal, text};
    }
    if (c == '\\') {
        const QString text = pattern.mid(at + 1, 1);
        at += 2;
        return {TokenKind::Literal, text};
    }
    for (const char* marker : {"AM/PM", "am/pm", "A/P", "a/p", "AMPM"}) {
        const QLatin1String spelled(marker);
        if (QStringView(pattern).mid(at).startsWith(spelled)) {
            at += spelled.size();
            return {TokenKind::AmPm, spelled};
        }
    }
    if ((c == 'E' || c == 'e') && at + 1 < pattern.size() &&
        (pattern[at + 1] == '+' || pattern[at + 1] == '-')) {
        at += 2;
        return {TokenKind::Exponent, pattern.mid(at - 2, 2)};
    }
    const int run = runLength(pattern, at);
    for (const int length : dateCodeLengths(c)) {
        if (length <= run) {
            at += length;
            return {TokenKind::DatePart, pattern.mid(at - length, length)};
        }
    }
    static const QList<std::pair<QChar, TokenKind>> symbols = {
        {'0', TokenKind::Digit},           {'#', TokenKind::Digit},
        {'.', TokenKind::Point},           {',', TokenKind::Comma},
        {'%', TokenKind::Percent},         {'/', TokenKind::DateSeparator},
        {':', TokenKind::TimeSeparator},   {'@', TokenKind::TextPlaceholder},
        {'&', TokenKind::TextPlaceholder}, {'<', TokenKind::TextFlag},
        {'>', TokenKind::TextFlag},        {'!', TokenKind::TextFlag},
    };
    ++at;
    for (const auto& [symbol, kind] : symbols) {
        if (c == symbol) {
            return {kind, QString(c)};
        }
    }
    return {TokenKind::Literal, QString(c)};
}

QList<Section> tokenize(const QString& pattern) {
    QList<Section> sections(1);
    int at = 0;
    while (at < pattern.size()) {
        if (pattern[at] == ';') {
            sections.append(Section());
            ++at;
        } else {
            sections.back().append(nextToken(pattern, at));
        }
    }
    return sections;
}

// Filling placeholders.

// Characters spread over a run of placeholders, from the right (digits of a whole number, text)
// or from the left (decimals, text after "!"). The placeholder at the far end takes whatever
// doesn't fit, so a pattern never cuts a value short.
struct Fill {
    QString chars;
    int places = 0;
    bool fromLeft = false;
    QString groupSeparator;  // before every third character from the right, when set

    QString at(int place) const {
        const int length = static_cast<int>(chars.size());
        int start = 0;
        int end = 0;
        if (fromLeft) {
            start = std::min(place, length);
            end = place == places - 1 ? length : std::min(place + 1, length);
        } else {
            start = place == 0 ? 0 : std::max(0, length - (places - place));
            end = std::max(0, length - (places - 1 - place));
        }
        QString text;
        for (int i = start; i < end; ++i) {
            if (!groupSeparator.isEmpty() && i > 0 && (length - i) % 3 == 0) {
                text += groupSeparator;
            }
            text += chars[i];
        }
        return text;
    }
};

// Numbers ("User-defined numeric formats").

enum Part { IntegerPart, FractionPart, ExponentPart };

// What a number section asks for, read from its placeholders: the "0"/"#" of each part, and for
// every token the part it stands in and, for a placeholder, its place there.
struct NumberLayout {
    QString masks[3];
    QList<Part> parts;
    QList<int> places;
    int pointToken = -1;     // the first ".", the decimal point; any later one is literal
    int exponentToken = -1;  // the first E+ E- e+ e-
    int thousands = 0;       // commas right after the last integer placeholder
    bool grouped = false;
    bool percent = false;

    // The E shows a scientific number only when a placeholder follows it.
    bool scientific() const { return !masks[ExponentPart].isEmpty(); }
};

// A comma between integer placeholders groups by thousands; each comma right after the last one,
// before the point or without one ("#,##0," "0,.00"), divides the number by 1000 instead.
NumberLayout layoutOf(const Section& section) {
    NumberLayout layout;
    Part part = IntegerPart;
    int commas = 0;  // since the last integer placeholder
    for (int i = 0; i < section.size(); ++i) {
        const Token& token = section[i];
        if (token.kind == TokenKind::Point && part == IntegerPart) {
            part = FractionPart;
            layout.pointToken = i;
        } else if (token.kind == TokenKind::Exponent && part != ExponentPart) {
            part = ExponentPart;
            layout.exponentToken = i;
        } else if (token.kind == TokenKind::Comma && part == IntegerPart) {
            ++commas;
        } else if (token.kind == TokenKind::Percent) {
            layout.percent = true;
        }
        QString& mask = layout.masks[part];
        layout.parts.append(part);
        layout.places.append(static_cast<int>(mask.size()));
        if (token.kind == TokenKind::Digit) {
            if (part == IntegerPart) {
                layout.grouped = layout.grouped || (commas > 0 && !mask.isEmpty());
                commas = 0;
            }
            mask += token.text;
        }
    }
    layout.thousands = layout.masks[IntegerPart].isEmpty() ? 0 : commas;
    return layout;
}

// How many digits a run must show: every place from the first "0" on.
int minimumDigits(const QString& mask) {
    const qsizetype firstZero = mask.indexOf('0');
    return firstZero < 0 ? 0 : static_cast<int>(mask.size() - firstZero);
}

// The digits of a whole number, zero-padded to a minimum; none at all for zero.
QString wholeDigits(const QString& digits, int minimum) {
    const QString significant = digits == QLatin1String("0") ? QString() : digits;
    return significant.rightJustified(minimum, '0');
}

detail::Decimal shifted(detail::Decimal value, int powerOfTen) {
    if (!value.isZero()) {
        value.exponent += powerOfTen;
    }
    return value;
}

// The mantissa with `integerPlaces` digits before the point and at most `decimals` after it,
// rounded first so that 9.996 as "0.00E+00" becomes 1.00E+01, not 10.00E+00.
detail::Decimal mantissaOf(const detail::Decimal& value, int integerPlaces, int decimals,
                           int& exponent) {
    if (value.isZero()) {
        exponent = 0;
        return value;
    }
    const detail::Decimal rounded =
        detail::roundSignificant(value, std::max(1, integerPlaces + decimals));
    exponent = rounded.exponent + 1 - integerPlaces;
    return shifted(rounded, -exponent);
}

// One section applied to the number, showing a minus sign when the number has one and doesn't
// round to zero. Percent and thousands scaling shift the exact decimal, so they add no binary
// rounding of their own.
QString numberSectionText(const Section& section, const detail::Decimal& value) {
    const NumberLayout layout = layoutOf(section);
    const QString& integerMask = layout.masks[IntegerPart];
    const QString& fractionMask = layout.masks[FractionPart];
    const QString& exponentMask = layout.masks[ExponentPart];
    const int decimals = static_cast<int>(fractionMask.size());
    const QLocale locale;

    detail::Decimal number = shifted(value, (layout.percent ? 2 : 0) - 3 * layout.thousands);
    int exponent = 0;
    if (layout.scientific()) {
        number = mantissaOf(number, static_cast<int>(integerMask.size()), decimals, exponent);
    }
    number = detail::roundFixed(number, decimals);
    QString fraction = detail::fractionDigits(number, decimals);
    const int minDecimals = static_cast<int>(fractionMask.lastIndexOf('0') + 1);
    while (fraction.size() > minDecimals && fraction.endsWith('0')) {
        fraction.chop(1);
    }
    const Fill fills[] = {
        {wholeDigits(detail::integerDigits(number), minimumDigits(integerMask)),
         static_cast<int>(integerMask.size()), false,
         layout.grouped ? locale.groupSeparator() : QString()},
        {fraction, decimals, true, {}},
        {wholeDigits(QString::number(std::abs(exponent)), minimumDigits(exponentMask)),
         static_cast<int>(exponentMask.size()),
         false,
         {}},
    };

    QString text = number.negative && !number.isZero() ? QStringLiteral("-") : QString();
    for (int i = 0; i < section.size(); ++i) {
        const Token& token = section[i];
        if (token.kind == TokenKind::Digit) {
            text += fills[layout.parts[i]].at(layout.places[i]);
        } else if (i == layout.pointToken) {
            // Without integer placeholders the whole number still shows, before the point.
            text += (integerMask.isEmpty() ? fills[IntegerPart].chars : QString()) +
                    locale.decimalPoint();
        } else if (i == layout.exponentToken && layout.scientific()) {
            const bool showPlus = token.text.endsWith('+') && exponent >= 0;
            text += token.text.left(1) + (exponent < 0 ? "-" : showPlus ? "+" : "");
        } else if (token.kind != TokenKind::Comma) {
            text += token.text;
        }
    }
    return text;
}

// Sections: positive;negative;zero;Null. A negative value shown by its own section shows no sign
// of its own; an empty or missing section takes the positive one's form, with a minus sign for a
// negative value ("User-defined numeric formats").
QString numberFormatted(double value, const QList<Section>& sections) {
    const auto given = [&](int index) {
        return index < sections.size() && !sections[index].isEmpty();
    };
    detail::Decimal exact = detail::exactDecimal(value);
    if (value < 0 && given(1)) {
        exact.negative = false;
        return numberSectionText(sections[1], exact);
    }
    if (value == 0 && given(2)) {
        return numberSectionText(sections[2], exact);
    }
    return numberSectionText(sections[0], exact);
}

// Dates ("User-defined date/time formats").

QString twoDigits(int number) {
    return QString::number(number).rightJustified(2, '0');
}

// The date or the time of a serial in one of the regional Qt patterns.
QString regionalText(double serial, const QString& pattern, bool time) {
    const DateParts parts = splitDate(serial);
    const QLocale locale;
    if (time) {
        return locale.toString(QTime(parts.hour, parts.minute, parts.second), pattern);
    }
    return locale.toString(QDate(parts.year, parts.month, parts.day), pattern);
}

// The first character of a regional pattern that is no field: its separator.
QString separatorIn(const QString& pattern) {
    for (const QChar c : pattern) {
        if (!c.isLetter() && !c.isSpace() && c != '\'') {
            return QString(c);
        }
    }
    return {};
}

struct Moment {
    double serial;
    DateParts parts;
    QDate date;
    int clockHour;  // 1 to 12 when the pattern has AM/PM, else 0 to 23
};

// Week 1 holds 1 January and weeks start on Sunday, the runtime's defaults for "ww".
int weekOfYear(const QDate& date) {
    const int firstWeekday = QDate(date.year(), 1, 1).dayOfWeek() % 7;  // Sunday = 0
    return (date.dayOfYear() - 1 + firstWeekday) / 7 + 1;
}

QString dateCodeText(const QString& code, const Moment& m) {
    using Writer = QString (*)(const Moment&);
    static const QList<std::pair<QString, Writer>> writers = {
        {"d", [](const Moment& m) { return QString::number(m.parts.day); }},
        {"dd", [](const Moment& m) { return twoDigits(m.parts.day); }},
        {"ddd",
         [](const Moment& m) {
             return QLocale().dayName(m.date.dayOfWeek(), QLocale::ShortFormat);
         }},
        {"dddd", [](const Moment& m) { return QLocale().dayName(m.date.dayOfWeek()); }},
        {"ddddd",
         [](const Moment& m) {
             return regionalText(m.serial, regionalFormats().shortDate, false);
         }},
        {"dddddd",
         [](const Moment& m) { return regionalText(m.serial, regionalFormats().longDate, false); }},
        {"w", [](const Moment& m) { return QString::number(Weekday(m.serial)); }},
        {"ww", [](const Moment& m) { return QString::number(weekOfYear(m.date)); }},
        {"m", [](const Moment& m) { return QString::number(m.parts.month); }},
        {"mm", [](const Moment& m) { return twoDigits(m.parts.month); }},
        {"mmm",
         [](const Moment& m) { return QLocale().monthName(m.parts.month, QLocale::ShortFormat); }},
        {"mmmm", [](const Moment& m) { return QLocale().monthName(m.parts.month); }},
        {"q", [](const Moment& m) { return QString::number((m.parts.month + 2) / 3); }},
        {"y", [](const Moment& m) { return QString::number(m.date.dayOfYear()); }},
        {"yy", [](const Moment& m) { return twoDigits(m.parts.year % 100); }},
        {"yyyy", [](const Moment& m) { return QString::number(m.parts.year); }},
        {"h", [](const Moment& m) { return QString::number(m.clockHour); }},
        {"hh", [](const Moment& m) { return twoDigits(m.clockHour); }},
        {"n", [](const Moment& m) { return QString::number(m.parts.minute); }},
        {"nn", [](const Moment& m) { return twoDigits(m.parts.minute); }},
        {"s", [](const Moment& m) { return QString::number(m.parts.second); }},
        {"ss", [](const Moment& m) { return twoDigits(m.parts.second); }},
        {"ttttt",
         [](const Moment& m) { return regionalText(m.serial, regionalFormats().longTime, true); }},
        {"c", [](const Moment& m) { return dateText(m.serial); }},
    };
    for (const auto& [name, write] : writers) {
        if (name == code) {
            return write(m);
        }
    }
    return code;
}

// "AM/PM", "am/pm", "A/P" and "a/p" show the half of the day as they spell it; "AMPM" shows the
// locale's own designators.
QString dayHalfText(const QString& marker, bool morning) {
    if (marker == QLatin1String("AMPM")) {
        return morning ? QLocale().amText() : QLocale().pmText();
    }
    return marker.section('/', morning ? 0 : 1, morning ? 0 : 1);
}

// "m" and "mm" right after an hour, with only literals between, are the minute.
QString afterHour(const QString& code) {
    return code == QLatin1String("m") || code == QLatin1String("mm") ? QString(code).fill('n')
                                                                     : code;
}

QString dateFormatted(double serial, const Section& section) {
    const DateParts parts = splitDate(serial);
    const bool twelveHour = std::any_of(section.begin(), section.end(), [](const Token& token) {
        return token.kind == TokenKind::AmPm;
    });
    const Moment moment{serial, parts, QDate(parts.year, parts.month, parts.day),
                        twelveHour ? (parts.hour + 11) % 12 + 1 : parts.hour};
    const RegionalFormats regional = regionalFormats();
    QString text;
    bool hourBefore = false;
    for (const Token& token : section) {
        if (token.kind == TokenKind::DatePart) {
            const QString code = token.text.toLower();
            text += dateCodeText(hourBefore ? afterHour(code) : code, moment);
            hourBefore = code.startsWith('h');
        } else if (token.kind == TokenKind::AmPm) {
            text += dayHalfText(token.text, parts.hour < 12);
        } else if (token.kind == TokenKind::DateSeparator) {
            text += separatorIn(regional.shortDate);
        } else if (token.kind == TokenKind::TimeSeparator) {
            text += separatorIn(regional.longTime);
        } else {
            text += token.text;
        }
    }
    return text;
}

// Text ("User-defined string formats"): "@" shows a character or a space, "&" a character or
// nothing; placeholders fill from the right unless "!" asks for the left; "<" and ">" force lower
// and upper case. A section without placeholders shows the whole text after its literals.

QString textFormatted(QString text, const Section& section) {
    Fill fill;
    for (const Token& token : section) {
        if (token.kind == TokenKind::TextPlaceholder) {
            ++fill.places;
        } else if (token.text == QLatin1String("!")) {
            fill.fromLeft = true;
        } else if (token.text == QLatin1String("<")) {
            text = text.toLower();
        } else if (token.text == QLatin1String(">")) {
            text = text.toUpper();
        }
    }
    fill.chars = text;
    QString result;
    int place = 0;
    for (const Token& token : section) {
        if (token.kind == TokenKind::TextPlaceholder) {
            const QString chars = fill.at(place++);
            result +=
                chars.isEmpty() && token.text == QLatin1String("@") ? QStringLiteral(" ") : chars;
        } else if (token.kind != TokenKind::TextFlag) {
            result += token.text;
        }
    }
    return fill.places == 0 ? result + text : result;
}

// Reading the value.

// The pattern, not the value, decides how a value is read (as with the named forms, whose
// "Short Date" takes a number as a day serial): a date pattern reads a number as a serial and
// text as a date; a number pattern reads a date as its serial and numeric text as the number.
// Text that the pattern can't read comes back as it is.
std::optional<double> serialOf(const Variant& value) {
    if (value.isDate() || value.isNumber() || IsDate(value)) {
        return CDate(value);
    }
    return std::nullopt;
}

std::optional<double> numberOf(const Variant& value) {
    if (value.isDate() || IsNumeric(value)) {
        return CDbl(value);
    }
    return std::nullopt;
}

enum class PatternKind { Number, Date, Text };

// The first placeholder decides: a date code or AM/PM makes a date pattern, "@ & < > !" a text
// pattern, "0" or "#" a number pattern, and later letters are literal. The documentation's own
// "#,##0.00;;;Nil" shows "Nil" for Null, so its "N" is no minute there.
PatternKind kindOf(const QList<Section>& sections) {
    for (const Section& section : sections) {
        for (const Token& token : section) {
            switch (token.kind) {
                case TokenKind::DatePart:
                case TokenKind::AmPm:
                    return PatternKind::Date;
                case TokenKind::TextPlaceholder:
                case TokenKind::TextFlag:
                    return PatternKind::Text;
                case TokenKind::Digit:
                    return PatternKind::Number;
                default:
                    break;
            }
        }
    }
    return PatternKind::Number;
}

// Null shows the number pattern's fourth section or the text pattern's second; an empty text
// shows that second section too.
QString patternFormatted(const Variant& value, const QString& pattern) {
    const QList<Section> sections = tokenize(pattern);
    switch (kindOf(sections)) {
        case PatternKind::Date: {
            if (value.isNull()) {
                return {};
            }
            const auto serial = serialOf(value);
            return serial ? dateFormatted(*serial, sections[0]) : CStr(value);
        }
        case PatternKind::Text: {
            const QString text = value.isNull() ? QString() : CStr(value);
            if (text.isEmpty()) {
                return sections.size() > 1 ? textFormatted(text, sections[1]) : QString();
            }
            return textFormatted(text, sections[0]);
        }
        case PatternKind::Number:
            break;
    }
    if (value.isNull()) {
        return sections.size() > 3 ? numberSectionText(sections[3], {}) : QString();
    }
    const auto number = numberOf(value);
    return number ? numberFormatted(*number, sections) : CStr(value);
}

// Named forms ("Named formats"). Most are patterns: Fixed and Standard show two decimals and a
// leading digit, Standard with thousands grouped; Percent multiplies by 100; Scientific is
// standard scientific notation; Yes/No, True/False and On/Off show the second word for zero.
struct NamedPattern {
    const char* name;
    const char* pattern;
};
const NamedPattern kNamedPatterns[] = {
    {"fixed", "0.00"},
    {"standard", "#,##0.00"},
    {"percent", "0.00%"},
    {"scientific", "0.00E+00"},
    {"yes/no", R"("Yes";"Yes";"No")"},
    {"true/false", R"("True";"True";"False")"},
    {"on/off", R"("On";"On";"Off")"},
};

// The rest follow the regional settings.
struct NamedForm {
    const char* name;
    bool date;
    QString (*write)(double);
};
const NamedForm kNamedForms[] = {
    {"general date", true, [](double serial) { return dateText(serial); }},
    {"short date", true,
     [](double serial) { return regionalText(serial, regionalFormats().shortDate, false); }},
    {"long date", true,
     [](double serial) { return regionalText(serial, regionalFormats().longDate, false); }},
    {"medium date", true,
     [](double serial) { return regionalText(serial, regionalFormats().mediumDate, false); }},
    {"long time", true,
     [](double serial) { return regionalText(serial, regionalFormats().longTime, true); }},
    {"medium time", true,
     [](double serial) { return regionalText(serial, regionalFormats().mediumTime, true); }},
    {"short time", true,
     [](double serial) { return regionalText(serial, regionalFormats().shortTime, true); }},
    {"general number", false, [](double number) { return doubleText(number); }},
    {"currency", false, [](double number) { return FormatCurrency(number); }},
};

std::optional<QString> namedFormatted(const Variant& value, const QString& format) {
    const QString name = format.toLower();
    for (const NamedPattern& named : kNamedPatterns) {
        if (name == QLatin1String(named.name)) {
            return patternFormatted(value, QString::fromLatin1(named.pattern));
        }
    }
    for (const NamedForm& named : kNamedForms) {
        if (name == QLatin1String(named.name)) {
            if (value.isNull()) {
                return QString();
            }
            const auto read = named.date ? serialOf(value) : numberOf(value);
            return read ? named.write(*read) : CStr(value);
        }
    }
    return std::nullopt;
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
    if (value.isEmpty() || (value.isNull() && format.isEmpty())) {
        return {};
    }
    if (format.isEmpty()) {
        return CStr(value);
    }
    if (const auto named = namedFormatted(value, format)) {
        return *named;
    }
    return patternFormatted(value, format);
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
