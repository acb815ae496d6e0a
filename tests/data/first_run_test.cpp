// A new installation's first logon: what temp.tmp sets up, the captions the logon window shows
// meanwhile, and the guards that keep the work from being done twice or on the wrong database.

#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "installation.h"
#include "logon/frm_startup.h"
#include "platform/dates.h"
#include "platform/os.h"
#include "settings/settings_file.h"

#include <QFile>
#include <QLineEdit>

namespace {

const QStringList kAllCaptions = {"Preparing for first run...", "Setting up first user...",
                                  "Setting up company info...", "Setting up default reports...",
                                  "Finished."};
const QStringList kGuardCaptions = {"Preparing for first run...", "Finished."};
const QString kUserAndCompany =
    "SELECT Name, Logon, Password, CompanyName, companyphone, Address FROM users, sysinfo";

// An installation in a program folder of the test's own, logged on to through the logon window.
class FirstRunFixture : public testing_support::SeamTest {
protected:
    void SetUp() override {
        SeamTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        processFolder = platform::programFolder();
        gSystemDir = GetSystemDir();
    }
    void TearDown() override {
        testing_support::endSession();
        platform::setProgramFolder(processFolder);
        SeamTest::TearDown();
    }

    // A program folder as the installer lays it out, which the process now runs from, with its
    // database where the backend makes one; gives the database's location.
    QString install(const installer::FirstRunDetails& details) {
        const QString name = "install" + QString::number(++installs);
        const QString database = testing_support::newDatabaseLocation(backend, folder, name);
        installer::installProgramFolder(path(name), details, database);
        platform::setProgramFolder(path(name));
        return database;
    }
    QString programFile(const QString& name) const {
        return platform::joinPath(platform::programFolder(), name);
    }
    bool firstRunPending() const { return QFile::exists(programFile(installer::kFirstRunFile)); }

    // Logs on through the logon window, recording the captions it shows; true when it succeeded.
    bool logOn(const QString& database, const QString& logon, const QString& password) {
        testing_support::endSession();
        captions.clear();
        frmStartUp window;
        QObject::connect(&window, &QWidget::windowTitleChanged,
                         [this](const QString& caption) { captions << caption; });
        window.bIsAdmin = true;
        window.txtDatabase->setText(database);
        window.txtLogon->setText(logon);
        window.txtPassword->setText(password);
        window.cmdOK_Click();
        return !window.bCanceled;
    }

    // Every row that a first run could change.
    QStringList everything(const QString& database) {
        QStringList all;
        for (const char* table : {"users", "sysinfo", "reminder", "reportsdef", "rptcntlsdef"}) {
            all << rows(database, QStringLiteral("SELECT * FROM ") + table);
        }
        return all;
    }
    QStringList rows(const QString& database, const QString& sql) {
        return testing_support::rowsOf(*engine::openDatabase(database), sql);
    }
    // The start of every reminder, moved by `days`.
    QStringList reminderStarts(const QString& database, int days = 0) {
        return rows(database, "SELECT DATEADD(\"d\"," + QString::number(days) +
                                  ",startd) FROM reminder ORDER BY id");
    }
    int daysSinceSampleDay() { return rt::DateDiff("d", 36766, rt::Today()); }  // 28 Aug 2000

    QString processFolder;
    QStringList captions;
    int installs = 0;
};

class FirstRunTest : public testing_support::OnEveryBackend<FirstRunFixture> {};

ORVANE_ON_EVERY_BACKEND(FirstRunTest);

const installer::FirstRunDetails kDetails = {"Pat Boss", "boss",      "secret",  "Boss & Sons",
                                             "555-0199", "1 Main St", "Floor 2", ""};

TEST_P(FirstRunTest, TheFirstLogonSetsUpTheInstallation) {
    const QString database = install(kDetails);
    const QString reportsFile = programFile(installer::kReportsDatabaseFile);
    const QStringList movedStarts = reminderStarts(database, daysSinceSampleDay());
    ASSERT_EQ(movedStarts.size(), 5);
    {
        // A report of the live database that the shipped defaults lack, and a stale one in
        // tarnell.new: after the first run both copies are the live tables. A copy missing
        // beforehand is no failure.
        auto db = engine::openDatabase(database);
        db->execute("INSERT INTO reports (id, userid, Name, rpttype) VALUES (9, 0, 'Own', 1)");
        db->execute("INSERT INTO rptcntls (rptid, cntlname, cntlvalue) VALUES (9, 'Title', 'x')");
        db->deleteTable("rptcntlsdef");
        auto reports = engine::openDatabase(reportsFile);
        reports->execute("INSERT INTO reports (id, userid, Name, rpttype) VALUES (7, 0, 'Old', 1)");
        reports->deleteTable("rptcntls");
    }

    ASSERT_TRUE(logOn(database, "boss", "secret"));
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(captions, kAllCaptions);
    EXPECT_EQ(gUsers(0).Name, "Pat Boss");
    EXPECT_EQ(rows(database, kUserAndCompany),
              QStringList({"Pat Boss|boss|secret|Boss & Sons|555-0199|1 Main St\nFloor 2"}));
    EXPECT_EQ(reminderStarts(database), movedStarts);
    for (const auto& [table, count] : {std::pair{"reports", 4}, std::pair{"rptcntls", 7}}) {
        const QString select = QString("SELECT * FROM ") + table;
        const QStringList live = rows(database, select + " ORDER BY 1, 2, 3");
        EXPECT_EQ(live.size(), count) << table;
        EXPECT_EQ(rows(reportsFile, select + " ORDER BY 1, 2, 3"), live) << table;
        EXPECT_EQ(rows(database, select + "def ORDER BY 1, 2, 3"), live) << table;
    }
    EXPECT_FALSE(firstRunPending());
    EXPECT_FALSE(gDBase.showCaption) << "the logon window is gone";
}

// Address lines are joined only for keys that hold text; missing keys give their defaults.
TEST_P(FirstRunTest, TheDetailsAsStored) {
    const std::pair<installer::FirstRunDetails, const char*> cases[] = {
        {{"Pat Boss", "boss", "", "Boss & Sons", "555-0199", "1 Main St", "Floor 2", "Suite 4"},
         "Pat Boss|boss||Boss & Sons|555-0199|1 Main St\nFloor 2\nSuite 4"},
        {{"Pat Boss", "boss", "", "Boss & Sons", "555-0199", "1 Main St", "", "Suite 4"},
         "Pat Boss|boss||Boss & Sons|555-0199|1 Main St\nSuite 4"},
        {{"Pat Boss", "boss", "", "Boss & Sons", "555-0199", "", "Floor 2", ""},
         "Pat Boss|boss||Boss & Sons|555-0199|\nFloor 2"},
        {{"", "boss", "", "", "", "", "", ""}, "FirstOn|boss||FirstOn|FirstOn|"},
    };
    for (const auto& [details, stored] : cases) {
        SCOPED_TRACE(stored);
        const QString database = install(details);
        ASSERT_TRUE(logOn(database, "boss", ""));
        EXPECT_EQ(rows(database, kUserAndCompany), QStringList({stored}));
    }
}

TEST_P(FirstRunTest, AnotherDatabaseOpenedOnTheInstallationOnlyTakesTheFileAway) {
    install(kDetails);
    const QString other = newDatabase("other.mdb");
    engine::openDatabase(other)->execute(
        "UPDATE users SET Name = 'Ann Other', Logon = 'ann' WHERE id = 1");
    const QStringList before = everything(other);

    ASSERT_TRUE(logOn(other, "ann", ""));
    EXPECT_EQ(captions, kGuardCaptions);
    EXPECT_EQ(everything(other), before);
    EXPECT_FALSE(firstRunPending());
    EXPECT_EQ(rows(programFile(installer::kReportsDatabaseFile), "SELECT count(*) FROM reports"),
              QStringList({"0"}));
}

// A missing reports file fails the first run at its last step; more days since the sample data
// than an Integer holds fail it right after the first user. Either way what was done stays, and
// the next logon, whose first user is set up, only takes the file away.
TEST_P(FirstRunTest, AFailedFirstRunKeepsWhatItDidAndIsNotRepeated) {
    for (const bool overflow : {false, true}) {
        SCOPED_TRACE(overflow);
        const QString database = install(kDetails);
        const QString reportsFile = programFile(installer::kReportsDatabaseFile);
        const QStringList keptStarts =
            reminderStarts(database, overflow ? 0 : daysSinceSampleDay());
        if (overflow) {
            rt::pinClock(QDateTime(QDate(2000, 8, 28).addDays(32768), QTime(9, 0)));
        } else {
            ASSERT_TRUE(QFile::remove(reportsFile));
        }
        const bool loggedOn = logOn(database, "boss", "secret");
        rt::pinClock(std::nullopt);

        EXPECT_FALSE(loggedOn);
        EXPECT_TRUE(testing_support::saidOnly(
            ui, overflow ? "Overflow" : "Couldn't find file '" + reportsFile + "'."));
        EXPECT_EQ(captions, kAllCaptions.mid(0, overflow ? 2 : 4));
        EXPECT_TRUE(firstRunPending());
        EXPECT_EQ(reminderStarts(database), keptStarts);

        ui.messages.clear();
        ASSERT_TRUE(logOn(database, "boss", "secret"));
        EXPECT_TRUE(ui.messages.empty());
        EXPECT_EQ(captions, kGuardCaptions);
        EXPECT_EQ(reminderStarts(database), keptStarts);
        EXPECT_EQ(rows(database, "SELECT Name, CompanyName FROM users, sysinfo"),
                  QStringList({overflow ? "Pat Boss|Your Company" : "Pat Boss|Boss & Sons"}));
        EXPECT_FALSE(firstRunPending());
    }
}

TEST_P(FirstRunTest, AFileWithAnEmptyLogonDoesNothingAndStays) {
    const QString database = install(kDetails);
    ASSERT_TRUE(platform::WritePrivateProfileString("Temp", QStringLiteral("Logon"), QString(),
                                                    programFile(installer::kFirstRunFile)));
    ASSERT_TRUE(logOn(database, "new", ""));
    EXPECT_TRUE(captions.isEmpty());
    EXPECT_EQ(rows(database, "SELECT Name FROM users"), QStringList({"New User"}));
    EXPECT_TRUE(firstRunPending());
}

}  // namespace
