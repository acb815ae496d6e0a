#include "settings/options.h"

#include "data/session.h"
#include "platform/convert.h"
#include "platform/ui.h"

std::unique_ptr<RecSet> gOptionsRS;

namespace {

RecSet& optionsCursor() {
    if (!gOptionsRS) {
        throw rt::Error::standard(rt::ObjectNotSet);
    }
    return *gOptionsRS;
}

bool findOptionRow(const QString& sSection, bool bShared) {
    QString search = "section = '" + sSection + "'";
    const qint32 owner = bShared ? 0 : gUsers(0).id;
    return optionsCursor().FindRecord(search, QStringLiteral("section"), sSection,
                                      QStringLiteral("userid"), owner);
}

QString valueColumn(qint16 nTag) {
    return "value" + QString::number(nTag);
}

}  // namespace

void SaveOption(qint16 nTag, const QString& sSection, const rt::Variant& value, bool bShared) {
    try {
        if (nTag < 1 || nTag > 25) {
            ShowMsg(QStringLiteral("Error in saving options.  Option tag out of bounds."));
            return;
        }
        RecSet& rs = optionsCursor();
        if (findOptionRow(sSection, bShared)) {
            rs.Edit();
        } else {
            rs.AddNew();
            rs.Cols("UserID") = bShared ? 0 : gUsers(0).id;
            rs.Cols("section") = sSection;
        }
        rs.Cols(valueColumn(nTag)) = value;
        rs.Update();
    } catch (const rt::Error&) {
    }
}

rt::Variant GetOption(qint16 nTag, const QString& sSection, const rt::Variant& defaultValue,
                      bool bShared) {
    RecSet& rs = optionsCursor();
    if (rs.RecordCount() == 0) {
        return defaultValue;
    }
    if (findOptionRow(sSection, bShared)) {
        const rt::Variant value = rs.Cols(valueColumn(nTag));
        if (rt::CStr(value) != "") {
            return value;
        }
    }
    return defaultValue;
}
