#pragma once

#include "platform/variant.h"

#include <QString>

namespace rt {

// The machine's regional date and time forms, as Qt date-time patterns. For en-US they are the
// desktop's defaults ("M/d/yyyy", "dddd, MMMM dd, yyyy", "h:mm:ss AP"); other locales take
// theirs from QLocale() with a four-digit year.
struct RegionalFormats {
    QString shortDate;
    QString longDate;
    QString mediumDate;
    QString longTime;
    QString mediumTime;
    QString shortTime;
};
RegionalFormats regionalFormats();

// Format(value, format): a named format ("General Date", "Short Date", ..., "General Number",
// "Currency", "Fixed", "Standard", "Percent", "Scientific", "Yes/No", "True/False", "On/Off",
// in any case) or a pattern: a number pattern of up to four sections (positive;negative;zero;
// Null), a date pattern of date and time codes, or a text pattern of "@ & < > !". The pattern
// decides how the value is read; a value it can't take comes back as its default text. Empty gives
// "", and so does Null unless the pattern has a section for it.
QString Format(const Variant& value, const QString& format = QString());

// Numbers with `decimals` digits after the point (-1 for the locale's 2), the locale's group
// separator and a leading zero; halves round away from zero. The currency form puts a negative
// amount in parentheses, as the desktop's en-US default does.
QString FormatNumber(const Variant& value, int decimals = -1);
QString FormatCurrency(const Variant& value, int decimals = -1);

}  // namespace rt
