#include "access/level_store.h"

#include "access/right_catalogue.h"
#include "data/dbase.h"

namespace {

QString levelColumn(qint16 nLevel) {
    return "level" + QString::number(nLevel + 1);
}

}  // namespace

void ReadLevel(qint16 nLevel) {
    auto rs = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM sysinfo"));
    rs->MoveFirst();
    LoadAccessLevel(nLevel, *rs);
    rs->CloseRS();
}

std::vector<qint16> RightsOfGroup(qint16 nGroup) {
    std::vector<qint16> positions;
    for (qint16 p = 0; p < kRightSlots; ++p) {
        if (gRightGroups(p) == nGroup && gRightAvailable(p)) {
            positions.push_back(p);
        }
    }
    return positions;
}

QString LevelTextOfRights() {
    QString text;
    text.reserve(kStoredRights);
    for (int p = 0; p < kStoredRights; ++p) {
        text += gRightValues(p) ? '1' : '0';
    }
    return text;
}

void WriteLevel(qint16 nLevel, const QString& sName) {
    auto rs = gDBase.OpenRecordset(QStringLiteral("sysinfo"));
    rs->MoveFirst();
    rs->Edit();
    const QString text = LevelTextOfRights();
    rs->Cols(levelColumn(nLevel) + "name") = sName;
    rs->Cols(levelColumn(nLevel)) = text;
    rs->Update();
    rs->CloseRS();
    // The session's copy follows only what was stored.
    gLevelNames(nLevel) = sName;
    gLevelText = text.leftJustified(kRightSlots, ' ');
}
