#include "util/value_helpers.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/formats.h"
#include "platform/os.h"
#include "settings/options.h"

#include <QLineEdit>

#include <cmath>

namespace {

// An amount in that form, or "" for a zero that is not to be shown.
QString amountForm(QString (*form)(const rt::Variant&, int), const QString& s, int decimals,
                   bool bShowZero) {
    if (rt::CDbl(s) == 0 && !bShowZero) {
        return {};
    }
    return form(s, decimals);
}

QString numberForm(const QString& s, int decimals, bool bShowZero) {
    return amountForm(rt::FormatNumber, s, decimals, bShowZero);
}

QString dateForm(const QString& s, const char* format) {
    return rt::IsDate(s) ? rt::Format(s, QLatin1String(format)) : QString();
}

}  // namespace

void SelectAllText(QLineEdit* box) {
    box->setSelection(0, int(box->text().size()));
}

void CapitalizeField(QLineEdit* box) {
    QString text = box->text();
    if (text.isEmpty() || box->cursorPosition() != text.size()) {
        return;
    }
    if (box->cursorPosition() == 1) {
        text = text.toUpper();
    } else {
        const QChar before = text[text.size() - 2];
        if (before == ' ' || before == '-') {
            text[text.size() - 1] = text.back().toUpper();
        }
    }
    box->setText(text);
    box->setCursorPosition(int(text.size()));
}

QString FormatValue(const rt::Variant& value, qint16 nType, qint16 decimals, bool bShowZero) {
    try {
        const QString s = rt::CStr(value);
        switch (nType) {
            case 1:
                return numberForm(s, decimals, bShowZero);
            case 2:
            case 42:
            case 43:
            case 19:
            case 41:
            case 46:
            case 51:
            case 52:
            case 55:
            case 57:
            case 59:
                return amountForm(rt::FormatCurrency, s, decimals, bShowZero);
            case 3:
            case 54:
                return dateForm(s, "Short Date");
            case 4:
                return dateForm(s, "Medium Time");
            case 33:
            case 66:
                return dateForm(s, "Long Date");
            case 20:
                return numberForm(s, 6, bShowZero);
            case 56:
                return numberForm(s, 0, bShowZero);
            case 58:
                return rt::Format(s, QStringLiteral("#######"));
            case 62:
                return s == "True" || s == "TRUE" ? QStringLiteral("Yes") : QStringLiteral("No");
            case 72:
                return RichTextToPlain(s);
            default:
                return s;
        }
    } catch (const rt::Error&) {
        return {};
    }
}

bool WildcardIsValid(QString& sText, qint16 nType) {
    sText.replace('*', '1').replace('?', '1');
    switch (nType) {
        case 3:
        case 4:
            return rt::IsDate(sText);
        case 2:
            sText = rt::CStr(rt::CDbl(sText));
            return rt::IsNumeric(sText);
        case 1:
            return rt::IsNumeric(sText);
        default:
            return false;
    }
}

rt::Variant DateOffset(const rt::Variant& vDate, qint16 nUnit, const rt::Variant& nCount,
                       bool bCalendarDays, bool bSkipWeekend) {
    static const char* const intervals[] = {"d", "ww", "m", "yyyy"};  // by unit
    if (nUnit < 0 || nUnit > 3) {
        return {};
    }
    rt::Variant result = nUnit == 0 && !bCalendarDays
                             ? AddBusinessDays(vDate, nCount)
                             : rt::Variant::date(rt::DateAdd(QString::fromLatin1(intervals[nUnit]),
                                                             rt::CDbl(nCount), rt::CDate(vDate)));
    if (bSkipWeekend) {
        const double date = rt::CDate(result);
        const int weekday = rt::Weekday(date);
        if (weekday == 1) {
            result = rt::Variant::date(date + 1);
        } else if (weekday == 7) {
            result = rt::Variant::date(date + 2);
        }
    }
    return result;
}

rt::Variant AddBusinessDays(const rt::Variant& vDate, const rt::Variant& nDays) {
    if (!vDate.isDate() || !nDays.isNumber() || rt::CDbl(nDays) == 0) {
        return vDate;
    }
    const double days = rt::CDbl(nDays);
    const bool forward = days > 0;
    const qint64 whole = qint64(std::trunc(std::fabs(days)));
    double date = vDate.realValue();
    const int start = rt::Weekday(date);
    if (forward) {
        date += start == 1 ? -2 : start == 7 ? -1 : 0;  // back to the Friday
    } else {
        date += start == 1 ? 1 : start == 7 ? 2 : 0;  // on to the Monday
    }
    const qint64 weeks = whole / 5;
    const qint64 rest = whole - weeks * 5;
    const int sign = forward ? 1 : -1;
    date += double(sign * weeks * 7);
    const int weekday = rt::Weekday(date);
    const bool crossesWeekend = forward ? weekday + rest > 6 : weekday - rest < 2;
    date += double(sign * (crossesWeekend ? rest + 2 : rest));
    return rt::Variant::date(date);
}

QString ReplaceText(const QString& sText, const QString& sFind, const QString& sReplace) {
    QString result;
    qsizetype position = 0;
    while (true) {
        const qsizetype found = sFind.isEmpty() ? -1 : sText.indexOf(sFind, position);
        if (found < 0) {
            return result + sText.mid(position);
        }
        result += sText.mid(position, found - position) + sReplace;
        position = found + 1;
    }
}

QString BrowseForFile(const QString& sDefault, const QString& sFilter, bool bMustExist) {
    platform::FileDialogRequest request;
    try {
        request.initialDir = DefaultDocumentFolder();
    } catch (const rt::Error&) {
        // No options cursor is open in the console: the dialog starts in the program's folder.
        request.initialDir = platform::programFolder();
    }
    if (!sDefault.contains('.') && !sDefault.trimmed().isEmpty()) {
        request.initialDir = sDefault;
    }
    if (sDefault.contains('.')) {
        request.fileName = sDefault;
    }
    request.filter = sFilter;
    request.filterIndex = 1;
    request.mustExist = bMustExist;
    if (const auto chosen = platform::ui().openFileDialog(request)) {
        return *chosen;
    }
    return request.fileName;
}

QString DefaultDocumentFolder() {
    return rt::CStr(GetOption(
        4, QStringLiteral("Options2"),
        platform::joinPath(platform::programFolder(), QStringLiteral("Documents")), false));
}

QString RichTextToPlain(const QString& rtf) {
    if (!rtf.startsWith(QLatin1String("{\\rtf"))) {
        return rtf;
    }
    // Groups that hold no text of the document: font and colour tables, styles, pictures and
    // the like, and every group that starts with \*.
    static const QStringList hidden = {"fonttbl", "colortbl", "stylesheet", "info",
                                       "pict",    "header",   "footer",     "generator"};
    QString text;
    std::vector<bool> skipping{false};
    int i = 0;
    while (i < rtf.size()) {
        const QChar c = rtf[i];
        if (c == '{') {
            skipping.push_back(skipping.back());
            ++i;
        } else if (c == '}') {
            if (skipping.size() > 1) {
                skipping.pop_back();
            }
            ++i;
        } else if (c == '\\') {
            ++i;
            if (i >= rtf.size()) {
                break;
            }
            const QChar next = rtf[i];
            if (next == '\\' || next == '{' || next == '}') {
                if (!skipping.back()) {
                    text += next;
                }
                ++i;
            } else if (next == '\'') {
                if (!skipping.back()) {
                    text += QChar(rtf.mid(i + 1, 2).toInt(nullptr, 16));
                }
                i += 3;
            } else if (next == '*') {
                skipping.back() = true;
                ++i;
            } else {
                int j = i;
                while (j < rtf.size() && rtf[j].isLetter()) {
                    ++j;
                }
                const QString word = rtf.mid(i, j - i);
                while (j < rtf.size() && (rtf[j].isDigit() || rtf[j] == '-')) {
                    ++j;
                }
                if (j < rtf.size() && rtf[j] == ' ') {
                    ++j;
                }
                if (hidden.contains(word)) {
                    skipping.back() = true;
                } else if (!skipping.back() && (word == "par" || word == "line")) {
                    text += '\n';
                } else if (!skipping.back() && word == "tab") {
                    text += '\t';
                }
                i = j;
            }
        } else {
            if (!skipping.back() && c != '\r' && c != '\n') {
                text += c;
            }
            ++i;
        }
    }
    return text.endsWith('\n') ? text.chopped(1) : text;
}
