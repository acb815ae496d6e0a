#include "data/dbase.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/os.h"
#include "platform/rt_error.h"
#include "platform/ui.h"

#include <QFile>

namespace {

const QString kFirstRunFile = QStringLiteral("temp.tmp");
const QString kReportsFile = QStringLiteral("tarnell.new");
const QString kSection = QStringLiteral("Temp");
// What the installer leaves out of temp.tmp still gives the database a name it can show, and one
// that differs from the placeholder, so that the first run is not repeated.
const QString kMissing = QStringLiteral("FirstOn");
const QString kPlaceholderUser = QStringLiteral("New User");
constexpr double kSampleDay = 36766;  // 28 Aug 2000, the day the template's sample data is dated
constexpr int kPathFileAccessError = 75;

QString programFile(const QString& name) {
    return platform::joinPath(platform::programFolder(), name);
}

QString firstRunKey(const QString& key, const QString& defaultValue = QString()) {
    return platform::ReadProfileValue(kSection, key, defaultValue, programFile(kFirstRunFile));
}

void showProgress(const DBase& db, const QString& caption) {
    if (db.showCaption) {
        db.showCaption(caption);
    }
}

void setUpFirstUser(DBase& db, RecSet& user) {
    user.Edit();
    user.Cols("Name") = firstRunKey(QStringLiteral("Name"), kMissing);
    user.Cols("Logon") = firstRunKey(QStringLiteral("Logon"), kMissing);
    user.Cols("Password") = firstRunKey(QStringLiteral("Password"));
    user.Update();
    // The sample reminders move together, so that the sample data looks current. The count is
    // an Integer: far enough from the sample day it overflows.
    const qint16 days = rt::CInt(rt::DateDiff(QStringLiteral("d"), kSampleDay, rt::Today()));
    db.Execute("UPDATE reminder SET startd = DATEADD(\"d\"," + QString::number(days) + ",startd)");
}

// The address lines, a line feed between two, and only those that hold text.
QString companyAddress() {
    QString address = firstRunKey(QStringLiteral("CompanyAddress1"));
    for (const QString& key :
         {QStringLiteral("CompanyAddress2"), QStringLiteral("CompanyAddress3")}) {
        const QString line = firstRunKey(key);
        if (!line.isEmpty()) {
            address += QChar(10) + line;
        }
    }
    return address;
}

void setUpCompany(DBase& db) {
    auto sysinfo = db.OpenRecordset(QStringLiteral("sysinfo"));
    sysinfo->MoveFirst();
    showProgress(db, QStringLiteral("Setting up company info..."));
    DoEvents();
    sysinfo->Edit();
    sysinfo->Cols("CompanyName") = firstRunKey(QStringLiteral("Company"), kMissing);
    sysinfo->Cols("companyphone") = firstRunKey(QStringLiteral("CompanyPhone"), kMissing);
    sysinfo->Cols("Address") = companyAddress();
    sysinfo->Update();
    sysinfo->CloseRS();
}

// The live reports go to tarnell.new for the suite's other programs, and stay in the database as
// the factory default. Whatever of the two tables is missing here is no failure.
void setUpDefaultReports(DBase& db) {
    const QString reportsFile = programFile(kReportsFile);
    auto reports = engine::openDatabase(reportsFile);  // a missing file fails the first run
    rt::resumeNext([&] { reports->deleteTable(QStringLiteral("reports")); });
    rt::resumeNext([&] { reports->deleteTable(QStringLiteral("rptcntls")); });
    rt::resumeNext(DoEvents);
    rt::resumeNext([&] { reports->close(); });
    rt::resumeNext(DoEvents);
    db.Execute("SELECT * INTO [;database=" + reportsFile + "].reports from reports");
    db.Execute("SELECT * INTO [;database=" + reportsFile + "].rptcntls from rptcntls");
    DoEvents();
    rt::resumeNext([&] { db.theDb->deleteTable(QStringLiteral("reportsdef")); });
    rt::resumeNext([&] { db.theDb->deleteTable(QStringLiteral("rptcntlsdef")); });
    db.Execute(QStringLiteral("SELECT * INTO reportsdef from reports"));
    db.Execute(QStringLiteral("SELECT * INTO rptcntlsdef from rptcntls"));
}

void provision(DBase& db, std::unique_ptr<RecSet> user) {
    showProgress(db, QStringLiteral("Setting up first user..."));
    DoEvents();
    setUpFirstUser(db, *user);
    user->CloseRS();
    setUpCompany(db);
    showProgress(db, QStringLiteral("Setting up default reports..."));
    DoEvents();
    setUpDefaultReports(db);
}

void removeFirstRunFile() {
    const QString file = programFile(kFirstRunFile);
    if (!QFile::remove(file)) {
        throw rt::Error::standard(QFile::exists(file) ? kPathFileAccessError : rt::FileNotFound);
    }
}

}  // namespace

void DBase::Check1stRun() {
    if (firstRunKey(QStringLiteral("Logon")).isEmpty()) {
        return;
    }
    ShowBusy();
    showProgress(*this, QStringLiteral("Preparing for first run..."));
    auto user = OpenRecordset(QStringLiteral("SELECT * FROM users WHERE id = 1"));
    user->MoveFirst();
    // A first user with a name of its own was set up by an earlier open, which may have failed
    // after it: what that open did stays, and only the file goes, so the work is never repeated.
    if (rt::CStr(user->Cols("Name")) == kPlaceholderUser) {
        provision(*this, std::move(user));
    }
    removeFirstRunFile();
    DoEvents();
    DoEvents();
    showProgress(*this, QStringLiteral("Finished."));
    ShowIdle();
}
