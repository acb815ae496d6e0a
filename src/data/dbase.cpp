#include "data/dbase.h"

#include "data/session.h"
#include "platform/convert.h"
#include "platform/ui.h"

DBase gDBase;

engine::Database& DBase::db() const {
    if (!theDb) {
        throw rt::Error::standard(rt::ObjectNotSet);
    }
    return *theDb;
}

void DBase::Execute(const QString& sql) {
    db().execute(sql);
}

void DBase::CloseDB() {
    try {
        if (theDb) {
            theDb->close();
        }
    } catch (const rt::Error&) {
    }
}

std::unique_ptr<RecSet> DBase::OpenRecordset(const QString& sql) {
    auto recset = std::make_unique<RecSet>();
    recset->locRecordset(db().openRecordset(sql));
    SessionCheck();
    return recset;
}

bool DBase::DBInit(const QString& localDBS) {
    try {
        gDatabasePath = localDBS;
        theDb = engine::openDatabase(gDatabasePath);
        Check1stRun();
        return true;
    } catch (const rt::Error& failure) {
        ShowIdle();
        ShowMsg(failure.description());
        return false;
    }
}

void DBase::ReadTogether(const std::function<void()>& reads) {
    engine::ReadScope scope(db());
    reads();
}

QSet<qint32> DBase::IdsOf(const QString& sql) {
    QSet<qint32> ids;
    ReadTogether([&] {
        auto rows = OpenRecordset(sql);
        if (rows->RecordCount() > 0) {
            const int id = rows->ColumnIndex(QStringLiteral("id"));
            rows->MoveFirst();
            while (!rows->Eof()) {
                ids.insert(rt::CLng(rows->ColsAt(id)));
                rows->MoveNext();
            }
        }
        rows->CloseRS();
    });
    return ids;
}

bool DBase::RunAsOneUnit(const std::function<void()>& command) {
    try {
        engine::Transaction unit(db());
        command();
        unit.commit();
        return true;
    } catch (const rt::Error& failure) {
        ShowIdle();
        ShowMsg(failure.description());
        return false;
    }
}
