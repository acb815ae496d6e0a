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

// Format(value, format): the named formats ("Short Date", "Long Date", "Medium Time", ...,
// "Currency", "Fixed", "Standard", "Percent", "General Number") or a number pattern of "0", "#",
// ",", "." and "%". A value that the format can't take comes back as its default text.
QString Format(const Variant& value, const QString& format = QString());

// Numbers with `decimals` digits after the point (-1 for the locale's 2), the locale's group
// separator and a leading zero; halves round away from zero. The currency form puts a negative
// amount in parentheses, as the desktop's en-US default does.
QString FormatNumber(const Variant& value, int decimals = -1);
QString FormatCurrency(const Variant& value, int decimals = -1);

}  // namespace rt
