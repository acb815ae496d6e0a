#pragma once

#include "platform/ui.h"
#include "platform/variant.h"

#include <QString>

class QLineEdit;

// Small routines without state that the windows share. ShowMsg, ShowBusy and ShowIdle live
// with the UI seam (platform/ui.h), since the data layer below needs them too.

void SelectAllText(QLineEdit* box);
// Capitalises each word's first letter as it is typed at the end of the box.
void CapitalizeField(QLineEdit* box);

// The display form of a value by field type; "" on any failure.
QString FormatValue(const rt::Variant& value, qint16 nType, qint16 decimals, bool bShowZero);
// Whether a search text with * and ? is possible for that field type. The wildcards in
// `sText` are replaced by "1" for the caller too.
bool WildcardIsValid(QString& sText, qint16 nType);

// Adds a span in units of 0 days, 1 weeks, 2 months, 3 years; Empty for another unit.
rt::Variant DateOffset(const rt::Variant& vDate, qint16 nUnit, const rt::Variant& nCount,
                       bool bCalendarDays, bool bSkipWeekend);
// Adds working days of five a week; `vDate` unchanged unless it is a date and `nDays` a
// number other than 0.
rt::Variant AddBusinessDays(const rt::Variant& vDate, const rt::Variant& nDays);

// Replaces each occurrence, searching on one character past each find.
QString ReplaceText(const QString& sText, const QString& sFind, const QString& sReplace);

// The file dialog: the chosen path, or what was given when it is cancelled.
QString BrowseForFile(const QString& sDefault, const QString& sFilter, bool bMustExist);
QString DefaultDocumentFolder();

// The plain text of a rich text value, as a rich text box shows it.
QString RichTextToPlain(const QString& rtf);
