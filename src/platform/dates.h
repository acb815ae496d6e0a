#pragma once

#include "platform/variant.h"

#include <QDateTime>
#include <QLocale>

#include <optional>

// Dates as the runtime keeps them: a day serial (0 = Saturday 30 Dec 1899) whose fraction is the
// time of day, from 1 Jan 100 to 31 Dec 9999. Whatever takes a serial raises 6 for one off that
// calendar.
namespace rt {

struct DateParts {
    int year = 1899, month = 12, day = 30;
    int hour = 0, minute = 0, second = 0;
};

// Months and days past their range roll into the next larger unit (month 13 is January of the next
// year, day 0 the last of the month before); years 0 to 99 are 2000 to 2029 and 1930 to 1999.
// Raises 6 for an argument beyond an Integer and 5 for a day outside the calendar of 100 to 9999.
double DateSerial(int year, int month, int day);
double TimeSerial(int hour, int minute, int second);
DateParts splitDate(double serial);
double joinDate(const DateParts& parts);

double Now();  // whole seconds, local time
double Today();
// Makes the clock that Now, Today and the current year of a date without one read stand at
// `at`, for a run that must see one day whatever the calendar says; nothing sets it back to the
// real clock.
void pinClock(const std::optional<QDateTime>& at);

// To a date serial; text is read under QLocale(), the program's own date text by the very patterns
// it was written with, in any script's digits. Raises 13 for text that is no date, 94 for
// Null and 6 for a number outside the calendar.
double CDate(const Variant& value);
bool IsDate(const Variant& value);
std::optional<double> parseDateText(const QString& text, const QLocale& locale = QLocale());

// Intervals "yyyy", "q", "m", "y", "d", "w", "ww", "h", "n", "s"; another raises 5. DateAdd
// raises 6 for a number beyond a Long and 5 for a result off the calendar; DateDiff raises 6 for
// a count beyond a Long.
double DateAdd(const QString& interval, double number, double date);
qint32 DateDiff(const QString& interval, double date1, double date2);
int Weekday(double date);  // Sunday = 1

// The default text of a date: the date alone at midnight, the time alone on day 0.
QString dateText(double serial);

}  // namespace rt
