#include "platform/dates.h"

#include "platform/convert.h"
#include "platform/formats.h"
#include "platform/rt_error.h"

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QRegularExpression>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace rt {

namespace {

const QDate kEpoch(1899, 12, 30);
constexpr double kFirstDay = -657434;  // 1 Jan 100
constexpr double kLastDay = 2958465;   // 31 Dec 9999
constexpr qint64 kSecondsPerDay = 86400;
// Times are kept to the second, so a serial within half a second of the last day's end would round
// onto the day after it. A negative serial's time runs forward from its day's midnight as well, so
// the first day takes any fraction.
constexpr double kHalfSecond = 0.5 / kSecondsPerDay;

qint64 floorDiv(qint64 a, qint64 b) {
    return a >= 0 ? a / b : -((-a + b - 1) / b);
}

// A serial the runtime can hold. A date column written by another tool, or a number taken as a
// date, can carry any double; the runtime's dates overflow (6) off the calendar, so every serial
// taken in is checked here before it is split into whole days and seconds.
double calendarSerial(double serial) {
    if (!(serial > kFirstDay - 1 && serial < kLastDay + 1 - kHalfSecond)) {
        throw Error::standard(Overflow);
    }
    return serial;
}

// The day's serial and the seconds into it; a negative serial carries its time as a positive
// fraction, so -1.25 is 29 Dec 1899 at 6:00. A time that rounds up to midnight is the next day's,
// whichever side of the epoch the day lies.
std::pair<qint64, qint64> dayAndSeconds(double serial) {
    const double whole = std::trunc(calendarSerial(serial));
    qint64 day = static_cast<qint64>(whole);
    qint64 seconds = std::llround(std::fabs(serial - whole) * kSecondsPerDay);
    if (seconds >= kSecondsPerDay) {
        seconds -= kSecondsPerDay;
        ++day;
    }
    return {day, seconds};
}

qint64 secondsOf(qint64 hour, qint64 minute, qint64 second) {
    return hour * 3600 + minute * 60 + second;
}

double serialOf(qint64 day, qint64 seconds) {
    const double time = static_cast<double>(seconds) / kSecondsPerDay;
    return day >= 0 ? static_cast<double>(day) + time : static_cast<double>(day) - time;
}

// The seconds since the epoch's midnight, which, unlike serials, run evenly before it too.
qint64 timeline(double serial) {
    const auto [day, seconds] = dayAndSeconds(serial);
    return day * kSecondsPerDay + seconds;
}

// A computed day, checked. The runtime's DateAdd reference: "If the calculated date would precede
// the year 100 ..., an error occurs"; the runtime raises 5 past either end, as DateSerial does.
qint64 calendarDay(qint64 day) {
    if (day < kFirstDay || day > kLastDay) {
        throw Error::standard(InvalidProcedureCall);
    }
    return day;
}

// A computed moment back as a serial.
double calendarResult(qint64 moment) {
    const qint64 day = calendarDay(floorDiv(moment, kSecondsPerDay));
    return serialOf(day, moment - day * kSecondsPerDay);
}

// Two-digit years fall in 1930 to 2029, in text and in DateSerial alike.
int windowedYear(int year) {
    return year < 30 ? 2000 + year : 1900 + year;
}

int twoDigitYear(int year, int digits) {
    return digits > 2 ? year : windowedYear(year);
}

struct Token {
    enum Kind { Number, Word, Separator } kind;
    QString text;
    int value = 0;
};

// Any script's decimal digits count: a full-width or Arabic-Indic "5" is a 5, and the Arabic
// locales write their dates in theirs. (Whether the runtime reads them is unverified; reading them
// beats taking them as something else.)
int digitsValue(const QString& digits) {
    int value = 0;
    for (const QChar digit : digits) {
        value = value * 10 + digit.digitValue();
    }
    return value;
}

std::optional<std::vector<Token>> tokenize(const QString& text) {
    std::vector<Token> tokens;
    int i = 0;
    while (i < text.size()) {
        const QChar c = text[i];
        if (c.isDigit()) {
            int j = i;
            while (j < text.size() && text[j].isDigit()) {
                ++j;
            }
            if (j - i > 9) {
                return std::nullopt;
            }
            tokens.push_back({Token::Number, text.mid(i, j - i), digitsValue(text.mid(i, j - i))});
            i = j;
        } else if (c.isLetter()) {
            int j = i;
            while (j < text.size() && text[j].isLetter()) {
                ++j;
            }
            tokens.push_back({Token::Word, text.mid(i, j - i)});
            i = j;
        } else if (QStringLiteral(":/-,. \t").contains(c)) {
            tokens.push_back({Token::Separator, QString(c)});
            ++i;
        } else {
            return std::nullopt;
        }
    }
    return tokens;
}

// Which of `count` names, 1-based, the word is in its long or short form; 0 for none.
template <typename NameOf>
int nameIndex(const QString& word, int count, NameOf nameOf) {
    for (int i = 1; i <= count; ++i) {
        if (word.compare(nameOf(i, QLocale::LongFormat), Qt::CaseInsensitive) == 0 ||
            word.compare(nameOf(i, QLocale::ShortFormat), Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    return 0;
}

int monthOf(const QString& word, const QLocale& locale) {
    return nameIndex(word, 12,
                     [&](int m, QLocale::FormatType form) { return locale.monthName(m, form); });
}

bool isWeekday(const QString& word, const QLocale& locale) {
    return nameIndex(word, 7,
                     [&](int d, QLocale::FormatType form) { return locale.dayName(d, form); }) != 0;
}

// 0 for no marker, 1 for AM, 2 for PM.
int meridiemOf(const QString& word, const QLocale& locale) {
    if (word.compare(locale.amText(), Qt::CaseInsensitive) == 0 ||
        word.compare(QLatin1String("a"), Qt::CaseInsensitive) == 0) {
        return 1;
    }
    if (word.compare(locale.pmText(), Qt::CaseInsensitive) == 0 ||
        word.compare(QLatin1String("p"), Qt::CaseInsensitive) == 0) {
        return 2;
    }
    return 0;
}

bool isTimeSeparator(const Token& token, const QLocale& locale) {
    if (token.kind != Token::Separator) {
        return false;
    }
    const QString dateSeparator =
        locale.dateFormat(QLocale::ShortFormat).remove(QRegularExpression("[dMy]"));
    return token.text == ":" || (token.text == "." && !dateSeparator.contains('.'));
}

// Takes the time out of the tokens: h:m[:s] or h followed by a marker, and a marker behind it.
// Gives the seconds into the day, or no value where the text holds no time; fails on a bad one.
std::optional<std::optional<int>> takeTime(std::vector<Token>& tokens, const QLocale& locale) {
    for (size_t start = 0; start < tokens.size(); ++start) {
        if (tokens[start].kind != Token::Number) {
            continue;
        }
        std::vector<int> parts{tokens[start].value};
        size_t end = start + 1;
        while (end + 1 < tokens.size() && isTimeSeparator(tokens[end], locale) &&
               tokens[end + 1].kind == Token::Number) {
            parts.push_back(tokens[end + 1].value);
            end += 2;
        }
        size_t marker = end;
        while (marker < tokens.size() && tokens[marker].kind == Token::Separator &&
               tokens[marker].text == " ") {
            ++marker;
        }
        int meridiem = 0;
        if (marker < tokens.size() && tokens[marker].kind == Token::Word) {
            meridiem = meridiemOf(tokens[marker].text, locale);
        }
        if (parts.size() == 1 && meridiem == 0) {
            continue;
        }
        if (parts.size() > 3) {
            return std::nullopt;
        }
        parts.resize(3, 0);
        int hour = parts[0];
        if (hour > 23 || parts[1] > 59 || parts[2] > 59) {
            return std::nullopt;
        }
        if (meridiem != 0 && hour <= 12) {
            hour = (hour % 12) + (meridiem == 2 ? 12 : 0);
        }
        tokens.erase(tokens.begin() + start, tokens.begin() + (meridiem ? marker + 1 : end));
        return std::optional<int>(hour * 3600 + parts[1] * 60 + parts[2]);
    }
    return std::optional<int>();
}

// The order of month, day and year in the locale's short date: "MDY", "DMY" or "YMD".
QString dateOrder(const QLocale& locale) {
    QString order;
    for (QChar c : locale.dateFormat(QLocale::ShortFormat)) {
        const QChar key = c == 'M' ? 'M' : c == 'd' ? 'D' : c == 'y' ? 'Y' : QChar();
        if (!key.isNull() && !order.contains(key)) {
            order += key;
        }
    }
    return order.size() == 3 ? order : QStringLiteral("MDY");
}

bool validDay(int year, int month, int day) {
    return QDate::isValid(year, month, day);
}

std::optional<QDateTime>& pinnedClock() {
    static std::optional<QDateTime> at;
    return at;
}

QDateTime currentDateTime() {
    return pinnedClock().value_or(QDateTime::currentDateTime());
}

struct NumberToken {
    int value;
    int digits;
};

std::optional<QDate> resolveDate(const std::vector<NumberToken>& numbers, int month,
                                 const QLocale& locale) {
    const int currentYear = currentDateTime().date().year();
    auto year = [](const NumberToken& n) { return twoDigitYear(n.value, n.digits); };
    auto make = [](int y, int m, int d) -> std::optional<QDate> {
        if (y < 100 || y > 9999 || !validDay(y, m, d)) {
            return std::nullopt;
        }
        return QDate(y, m, d);
    };
    if (month != 0) {
        if (numbers.size() == 1) {
            const NumberToken& n = numbers[0];
            if (n.digits <= 2 && validDay(currentYear, month, n.value)) {
                return make(currentYear, month, n.value);
            }
            return make(year(n), month, 1);
        }
        if (numbers.size() == 2) {
            const NumberToken& a = numbers[0];
            const NumberToken& b = numbers[1];
            if (a.digits <= 2 && a.value >= 1 && a.value <= 31) {
                return make(year(b), month, a.value);
            }
            return make(year(a), month, b.value);
        }
        return std::nullopt;
    }
    if (numbers.size() == 2) {
        const int a = numbers[0].value;
        const int b = numbers[1].value;
        const bool dayFirst = dateOrder(locale).indexOf('D') < dateOrder(locale).indexOf('M');
        const int m = dayFirst ? b : a;
        const int d = dayFirst ? a : b;
        if (m >= 1 && m <= 12 && validDay(currentYear, m, d)) {
            return make(currentYear, m, d);
        }
        if (d >= 1 && d <= 12 && validDay(currentYear, d, m)) {
            return make(currentYear, d, m);  // the first number can't be a month
        }
        if (m >= 1 && m <= 12 && (numbers[dayFirst ? 0 : 1].digits > 2 || d > 31)) {
            return make(year(numbers[dayFirst ? 0 : 1]), m, 1);
        }
        return std::nullopt;
    }
    if (numbers.size() == 3) {
        if (numbers[0].digits > 2 || numbers[0].value > 31) {
            return make(numbers[0].value, numbers[1].value, numbers[2].value);
        }
        const QString order = dateOrder(locale);
        int values[3];
        for (int i = 0; i < 3; ++i) {
            values[i] = order[i] == 'Y' ? year(numbers[i]) : numbers[i].value;
        }
        int m = values[order.indexOf('M')];
        int d = values[order.indexOf('D')];
        const int y = values[order.indexOf('Y')];
        if (m > 12 && d <= 12) {
            std::swap(m, d);
        }
        if (m < 1 || m > 12) {
            return std::nullopt;
        }
        return make(y, m, d);
    }
    return std::nullopt;
}

// How far one step of an interval goes: a number of months, or else of seconds.
struct Step {
    bool inMonths;
    qint64 size;
};

Step stepOf(const QString& interval) {
    static const QHash<QString, Step> steps{
        {"yyyy", {true, 12}},
        {"q", {true, 3}},
        {"m", {true, 1}},
        {"y", {false, kSecondsPerDay}},
        {"d", {false, kSecondsPerDay}},
        {"w", {false, kSecondsPerDay}},
        {"ww", {false, 7 * kSecondsPerDay}},
        {"h", {false, 3600}},
        {"n", {false, 60}},
        {"s", {false, 1}},
    };
    const auto step = steps.constFind(interval.toLower());
    if (step == steps.cend()) {
        throw Error::standard(InvalidProcedureCall);
    }
    return *step;
}

// The same day of the month that many months on, or the month's last day if it is shorter. A
// shift of more months than the calendar spans lands off it all the same, so it is cut to what
// QDate takes.
qint64 monthsLater(qint64 day, qint64 months) {
    constexpr qint64 kCalendarMonths = 10000 * 12;
    const int shift = static_cast<int>(std::clamp(months, -kCalendarMonths, kCalendarMonths));
    return kEpoch.daysTo(kEpoch.addDays(day).addMonths(shift));
}

// The month of a moment on the timeline, counted from January of year 0.
qint64 monthIndex(qint64 moment) {
    const QDate date = kEpoch.addDays(floorDiv(moment, kSecondsPerDay));
    return date.year() * qint64{12} + date.month() - 1;
}

// How many boundaries, each `start` past a multiple of `step`, lie in (from, to]; negative when
// `to` comes first.
qint64 boundaries(qint64 from, qint64 to, qint64 step, qint64 start = 0) {
    return floorDiv(to - start, step) - floorDiv(from - start, step);
}

// The runtime's DateAdd reference: "If number isn't a Long value, it is rounded to the nearest
// whole number before being evaluated." A number whose whole part lies beyond a Long overflows (6),
// as a Long does; the rounding comes after, so 2147483647.9 days are 2147483648, off the calendar
// (5). Halves go to the even number, as in the runtime's other roundings to a Long (unverified
// here).
qint64 wholeCount(double number) {
    constexpr double kBelowLong = std::numeric_limits<qint32>::min() - 1.0;
    constexpr double kAboveLong = std::numeric_limits<qint32>::max() + 1.0;
    if (!(number > kBelowLong && number < kAboveLong)) {
        throw Error::standard(Overflow);
    }
    return static_cast<qint64>(std::nearbyint(number));  // the default rounding: halves to even
}

}  // namespace

// The runtime's DateSerial reference: each argument is an Integer ("If any single argument is
// outside the range -32,768 to 32,767, an error occurs"); an argument past its unit's range
// "increments to the next larger unit", so month 13 is January of the next year, month 0 December
// of the year before and day 0 the last day of the month before; a year of 0 to 99 falls in the
// same window as in text.
double DateSerial(int year, int month, int day) {
    for (const int argument : {year, month, day}) {
        if (argument < -32768 || argument > 32767) {
            throw Error::standard(Overflow);
        }
    }
    const qint64 months =
        qint64{year >= 0 && year <= 99 ? windowedYear(year) : year} * 12 + month - 1;
    const qint64 firstYear = floorDiv(months, 12);
    // Year 0, which QDate lacks, lies further off the calendar than any count of days can make up.
    const QDate first(static_cast<int>(firstYear), static_cast<int>(months - firstYear * 12) + 1,
                      1);
    if (!first.isValid()) {
        throw Error::standard(InvalidProcedureCall);
    }
    return static_cast<double>(calendarDay(kEpoch.daysTo(first) + day - 1));
}

double TimeSerial(int hour, int minute, int second) {
    return static_cast<double>(secondsOf(hour, minute, second)) / kSecondsPerDay;
}

DateParts splitDate(double serial) {
    const auto [day, seconds] = dayAndSeconds(serial);
    const QDate date = kEpoch.addDays(day);
    return {date.year(),
            date.month(),
            date.day(),
            static_cast<int>(seconds / 3600),
            static_cast<int>(seconds / 60 % 60),
            static_cast<int>(seconds % 60)};
}

double joinDate(const DateParts& parts) {
    const qint64 day = kEpoch.daysTo(QDate(parts.year, parts.month, parts.day));
    return serialOf(day, secondsOf(parts.hour, parts.minute, parts.second));
}

void pinClock(const std::optional<QDateTime>& at) {
    pinnedClock() = at;
}

double Now() {
    const QDateTime now = currentDateTime();
    const QTime time = now.time();
    return joinDate({now.date().year(), now.date().month(), now.date().day(), time.hour(),
                     time.minute(), time.second()});
}

double Today() {
    return static_cast<double>(kEpoch.daysTo(currentDateTime().date()));
}

namespace {

// The text of a date read by the general rules: numbers and names in any order the locale allows.
std::optional<double> generalDateText(const QString& text, const QLocale& locale) {
    auto tokens = tokenize(text);
    if (!tokens || tokens->empty()) {
        return std::nullopt;
    }
    const auto time = takeTime(*tokens, locale);
    if (!time) {
        return std::nullopt;
    }
    std::vector<NumberToken> numbers;
    int month = 0;
    for (const Token& token : *tokens) {
        if (token.kind == Token::Number) {
            numbers.push_back({token.value, static_cast<int>(token.text.size())});
        } else if (token.kind == Token::Word && !isWeekday(token.text, locale)) {
            // A weekday name only restates the date. The runtime's CDate reference says a long
            // date holding one isn't recognized, but the Long Date the program writes holds one
            // and must read back.
            const int m = monthOf(token.text, locale);
            if (m == 0 || month != 0) {
                return std::nullopt;
            }
            month = m;
        }
    }
    const int seconds = time->value_or(0);
    if (numbers.empty() && month == 0) {
        if (!time->has_value()) {
            return std::nullopt;
        }
        return static_cast<double>(seconds) / kSecondsPerDay;
    }
    const auto date = resolveDate(numbers, month, locale);
    if (!date) {
        return std::nullopt;
    }
    return serialOf(kEpoch.daysTo(*date), seconds);
}

// A date and time read by a pattern, as a serial if they are on the calendar.
std::optional<double> serialOfParts(const QDate& date, const QTime& time) {
    if (!date.isValid() || !time.isValid() || date.year() < 100) {
        return std::nullopt;
    }
    return serialOf(kEpoch.daysTo(date), time.msecsSinceStartOfDay() / 1000);
}

// The program's own text of a date, read by the very patterns it writes with: the Short and Long
// Date and the default text (regionalFormats, under QLocale()). The general rules can't take all
// of them (Korean hours are words, Finnish times use ".") and would misread some: a Finnish
// "13.05.09" is a time, not 13 May 2009.
std::optional<double> ownDateText(const QString& text) {
    const RegionalFormats formats = regionalFormats();
    const QLocale locale;
    for (const QString& pattern : {formats.shortDate, formats.longDate}) {
        if (auto serial = serialOfParts(locale.toDate(text, pattern), QTime(0, 0))) {
            return serial;
        }
    }
    if (auto serial = serialOfParts(kEpoch, locale.toTime(text, formats.longTime))) {
        return serial;
    }
    // A date and its time, parted by a blank; the date may hold blanks of its own.
    for (qsizetype blank = text.indexOf(' '); blank >= 0; blank = text.indexOf(' ', blank + 1)) {
        const QDate date = locale.toDate(text.left(blank), formats.shortDate);
        if (auto serial =
                serialOfParts(date, locale.toTime(text.mid(blank + 1), formats.longTime))) {
            return serial;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<double> parseDateText(const QString& input, const QLocale& locale) {
    const QString text = input.trimmed();
    // Only QLocale() is the program's own; a caller's other locale, such as SQL's en-US, has
    // the general rules alone.
    if (locale == QLocale()) {
        if (auto serial = ownDateText(text)) {
            return serial;
        }
    }
    return generalDateText(text, locale);
}

double CDate(const Variant& value) {
    switch (value.type()) {
        case VarType::String:
            if (auto serial = parseDateText(value.text())) {
                return *serial;
            }
            throw Error::standard(TypeMismatch);
        default:
            return calendarSerial(CDbl(value));
    }
}

bool IsDate(const Variant& value) {
    if (value.isDate()) {
        return true;
    }
    return value.isString() && parseDateText(value.text()).has_value();
}

double DateAdd(const QString& interval, double number, double date) {
    const Step step = stepOf(interval);
    const qint64 count = wholeCount(number);
    if (step.inMonths) {
        const auto [day, seconds] = dayAndSeconds(date);
        return calendarResult(monthsLater(day, count * step.size) * kSecondsPerDay + seconds);
    }
    return calendarResult(timeline(date) + count * step.size);
}

qint32 DateDiff(const QString& interval, double date1, double date2) {
    const Step step = stepOf(interval);
    const QString unit = interval.toLower();
    const qint64 from = timeline(date1);
    const qint64 to = timeline(date2);
    qint64 count = 0;
    if (step.inMonths) {
        count = boundaries(monthIndex(from), monthIndex(to), step.size);
    } else if (unit == "w") {
        count = boundaries(from, to, kSecondsPerDay) / 7;  // whole weeks of days, cut toward zero
    } else {
        // Weeks begin on Sunday, which serial 1 is; the other steps begin at midnight.
        count = boundaries(from, to, step.size, unit == "ww" ? kSecondsPerDay : 0);
    }
    // The runtime's DateDiff gives a Long, so a count beyond one overflows as any Long does.
    return CLng(static_cast<double>(count));
}

int Weekday(double date) {
    const qint64 day = dayAndSeconds(date).first;
    return static_cast<int>(((day - 1) % 7 + 7) % 7) + 1;
}

QString dateText(double serial) {
    const auto [day, seconds] = dayAndSeconds(serial);
    const RegionalFormats formats = regionalFormats();
    const QLocale locale;
    const QDate date = kEpoch.addDays(day);
    const QTime time = QTime(0, 0).addSecs(static_cast<int>(seconds));
    if (day == 0) {
        return locale.toString(time, formats.longTime);
    }
    if (seconds == 0) {
        return locale.toString(date, formats.shortDate);
    }
    return locale.toString(date, formats.shortDate) + " " + locale.toString(time, formats.longTime);
}

}  // namespace rt
