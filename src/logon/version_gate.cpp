#include "logon/version_gate.h"

#include "data/dbase.h"
#include "platform/convert.h"
#include "platform/ui.h"

QString gCompanyName;
QString gCompanyPhone;
QString gCompanyFax;
QString gDisclaimer;
QString gCompanyEmail;
QString gCompanyWebsite;
QString gCompanyAddress;
bool gIsReplica = false;

bool VerifyOnLogon(std::unique_ptr<RecSet>& rsOut) {
    try {
        rsOut = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM sysinfo"));
        rsOut->MoveFirst();
        const float version = rt::CSng(rsOut->Cols("dbversion"));
        const QString versionText = rt::singleText(version);
        if (version < kDatabaseVersion) {
            ShowMsg("The database you are trying to open is a " + versionText +
                        " version of the database.  Use the Upkeep Tool program from your Start "
                        "Menu to "
                        "upgrade it to the new version.",
                    platform::Msg::OKOnly, QStringLiteral("Database Upgrade"));
            return false;
        }
        if (version > kDatabaseVersion) {
            // The product's name belongs between "of" and "you"; the console has none to give.
            ShowMsg("The database you are trying to open is a " + versionText +
                    " version, which is more recent than the version of you are running.  You must "
                    "upgrade "
                    "the program to this version before you can open this database.");
            return false;
        }
        gIsReplica = IsReplica(*gDBase.theDb);
        ReadCompanyDetails(*rsOut);
        return true;
    } catch (const rt::Error& failure) {
        ShowMsg(failure.description());
        return false;
    }
}

bool IsReplica(engine::Database& db) {
    try {
        const rt::Variant value = db.property(QStringLiteral("LSIsReplica"));
        return value.type() == rt::VarType::Boolean ? value.integerValue() == -1
                                                    : rt::CDbl(value) == -1;
    } catch (const rt::Error&) {
        return false;
    }
}

void ReadCompanyDetails(RecSet& rs) {
    gCompanyAddress = rt::CStr(rs.Cols("Address"));
    gDisclaimer = rt::CStr(rs.Cols("Disclaimer"));
    gCompanyEmail = rt::CStr(rs.Cols("companyemail"));
    gCompanyFax = rt::CStr(rs.Cols("companyfax"));
    gCompanyName = rt::CStr(rs.Cols("CompanyName"));
    gCompanyPhone = rt::CStr(rs.Cols("companyphone"));
    gCompanyWebsite = rt::CStr(rs.Cols("companywebsite"));
}
