#pragma once

#include "platform/variant.h"

#include <QLocale>

#include <optional>

// The runtime's conversions between kinds of value. They raise rt::Error as the runtime does:
// 6 Overflow, 13 Type mismatch, 94 Invalid use of Null. Text is read under QLocale(), the
// program's locale.
namespace rt {

qint16 CInt(const Variant& value);  // rounds half to even
qint32 CLng(const Variant& value);  // rounds half to even
float CSng(const Variant& value);
double CDbl(const Variant& value);
qint64 CCur(const Variant& value);  // scaled by 10000; text is read exactly
bool CBool(const Variant& value);
QString CStr(const Variant& value);

bool IsNumeric(const Variant& value);

// The number at the start of a text, read with "." as the decimal point whatever the locale;
// blanks are skipped and the first character that can't belong to a number ends it.
double Val(const QString& text);

// A numeric text as CDbl reads it under the locale: group separators, an exponent, or "&H"/"&O"
// forms; blanks, one sign, one currency symbol or one pair of parentheses (negative) on either
// side of the digits, as the locale's own currency format places them.
std::optional<double> parseNumberText(const QString& text, const QLocale& locale = QLocale());

// The default text of a Single (7 significant digits) and a Double (15).
QString singleText(float value);
QString doubleText(double value);

}  // namespace rt
