// Logon validation: each check with its message, title and focus, what a good logon leaves
// behind, the reachable entries, and the session branch.

#include "logon/validate_logon.h"
#include "access/right_catalogue.h"
#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "logon/command_line.h"
#include "logon/logon_state.h"
#include "platform/convert.h"
#include "settings/settings_file.h"

namespace {

using platform::Msg::No;
using platform::Msg::Yes;

// The logon window as the validation sees it, with what was done to it recorded.
class FakeLogonWindow : public LogonWindow {
public:
    QString logon, password, database;
    int savePassword = 0;
    QStringList calls;

    QString logonText() const override { return logon; }
    QString passwordText() const override { return password; }
    QString databaseText() const override { return database; }
    int savePasswordValue() const override { return savePassword; }
    void focusLogon() override { calls << "focus logon"; }
    void focusPassword() override { calls << "focus password"; }
    void focusDatabase() override { calls << "focus database"; }
    void ShowDb() override { calls << "ShowDb"; }
    void cmdCancel_Click() override { calls << "cmdCancel"; }
};

class ValidateLogonFixture : public testing_support::DemoTest {
protected:
    void SetUp() override {
        DemoTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        window.database = demoDatabase();
        window.logon = "admin";
        window.password = "orvane";
        WriteIni("LG", ProgramSection(), "someone");
    }
    bool validate(bool docs = false, bool admin = true) {
        return ValidateLogon(window, "server1", docs, admin);
    }
    QString setting(const QString& key) { return ReadIni(key, ProgramSection(), "<none>"); }
    QStringList reachable() const {
        QStringList entries;
        for (int i = 1; i < gUserCount; ++i) {
            entries << gUsers(i).Name + (gUsers(i).bMember ? "*" : "");
        }
        return entries;
    }
    qint32 sessionRows(qint32 uid) {
        return rt::CLng(
            gDBase.OpenRecordset("SELECT count(*) FROM rts WHERE uid = " + QString::number(uid))
                ->ColsWithNull(0));
    }

    FakeLogonWindow window;
};

class ValidateLogonTest : public testing_support::OnEveryBackend<ValidateLogonFixture> {};

ORVANE_ON_EVERY_BACKEND(ValidateLogonTest);

// Each check shows its message and sets the focus; only the credentials' come after the
// database was opened and remembered, and no refusal writes the logon.
TEST_P(ValidateLogonTest, EachRefusalShowsItsMessageAndSetsTheFocus) {
    const QString database = window.database;
    const QString missing = path("missing.mdb");
    const struct {
        const char* logon;
        const char* password;
        QString database;
        QString message;
        const char* title;
        QStringList calls;
        bool opened;
    } cases[] = {
        {"", "orvane", database, "You must enter a logon.", "Logon", {"focus logon"}, false},
        {"ad'min", "orvane", database, "Invalid logon character.", "Logon", {"focus logon"}, false},
        {"ad\"min",
         "orvane",
         database,
         "Invalid logon character.",
         "Logon",
         {"focus logon"},
         false},
        {"admin", "orvane", "", "Invalid database.", "Error", {"ShowDb", "focus database"}, false},
        {"admin",
         "orvane",
         missing,
         "Couldn't find file '" + missing + "'.",
         "Orvane Administration",
         {"ShowDb"},
         false},
        {"nobody",
         "orvane",
         database,
         "You have entered an invalid logon name.",
         "Logon",
         {"focus logon"},
         true},
        // The password compares exactly.
        {"admin",
         "ORVANE",
         database,
         "You have entered an invalid password.",
         "Logon",
         {"focus password"},
         true},
    };
    WriteIni("Database", ProgramSection(), "");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message.toStdString());
        ui.messages.clear();
        window.calls.clear();
        window.logon = c.logon;
        window.password = c.password;
        window.database = c.database;
        EXPECT_FALSE(validate());
        EXPECT_TRUE(testing_support::saidOnly(ui, c.message, platform::Msg::OKOnly, c.title));
        EXPECT_EQ(window.calls, c.calls);
        EXPECT_EQ(gDBase.theDb != nullptr, c.opened);
        EXPECT_EQ(setting("Database"), c.opened ? database : "<none>");
        EXPECT_EQ(setting("Server"), c.opened ? "server1" : "<none>");
        EXPECT_EQ(setting("LG"), "someone");
        EXPECT_FALSE(ui.busy);
    }
    window.logon = "ADMIN";  // the logon compares as the database does
    window.password = "orvane";
    EXPECT_TRUE(validate());
    EXPECT_EQ(gLogon, "admin");
}

TEST_P(ValidateLogonTest, AGoodLogonFillsTheSessionAndRemembersTheSettings) {
    window.savePassword = 1;
    EXPECT_TRUE(validate());
    EXPECT_EQ(gAccessLevel, 10);
    EXPECT_EQ(gFSLevel, 0);
    EXPECT_EQ(gUsers(0).Name, "Alice Admin");
    EXPECT_EQ(gUsers(0).id, 1);
    EXPECT_EQ(gUsers(0).Type, 0);
    EXPECT_FALSE(gUsers(0).bMember);
    EXPECT_EQ(gLogon, "admin");
    EXPECT_EQ(gPassword, "orvane");
    EXPECT_EQ(gServer, "server1");
    EXPECT_EQ(gLevelNames(9), "Administrator");
    EXPECT_EQ(setting("LG"), "admin");
    EXPECT_EQ(setting("WP"), "orvane");
    EXPECT_TRUE(ui.busy);  // the start of the run ends the hourglass
    EXPECT_TRUE(ui.messages.empty());

    window.savePassword = 0;
    EXPECT_TRUE(validate());
    EXPECT_EQ(setting("WP"), "<none>");  // saved empty, which reads as not set
}

TEST_P(ValidateLogonTest, WithTheRightToAllClientsEveryOtherEntryIsReachable) {
    EXPECT_TRUE(validate());
    EXPECT_TRUE(gRightValues(kRightAccessAllClients));
    EXPECT_EQ(reachable(),
              QStringList({"Brian Cole", "Carmen Diaz", "Conference Room", "Derek Evans",
                           "Downtown Office", "Erin Ford", "Northside Office", "Projector",
                           "Sales Team", "Support Desk"}));
    EXPECT_EQ(gUserCount, 11);
    EXPECT_EQ(gUsers.size(), 12);  // one slot more than the count, left empty
    EXPECT_EQ(gUsers(11).id, 0);

    window.logon = "devans";  // level 8 holds the right too; a member of the Sales Team
    window.password = "derek";
    EXPECT_TRUE(validate());
    EXPECT_EQ(reachable().filter("*"), QStringList({"Sales Team*"}));
    EXPECT_EQ(gUserCount, 11);
}

TEST_P(ValidateLogonTest, WithoutTheRightOnlyWhatExtendedAccessReaches) {
    const struct {
        const char* logon;
        const char* password;
        QStringList entries;
    } cases[] = {
        {"bcole", "brian", {"Sales Team*"}},
        {"cdiaz", "carmen", {"Support Desk*"}},
        // A null password matches an empty box.
        {"eford", "", {"Alice Admin", "Carmen Diaz", "Conference Room", "Downtown Office"}},
    };
    ASSERT_TRUE(gDBase.DBInit(window.database));
    gDBase.Execute("UPDATE users SET Password = NULL WHERE id = 5");
    gDBase.Execute("INSERT INTO extaccess (userid, extid) VALUES (5, 10)");  // Erin reaches the
                                                                             // Downtown branch
    for (const auto& c : cases) {
        window.logon = c.logon;
        window.password = c.password;
        EXPECT_TRUE(validate()) << c.logon;
        EXPECT_EQ(gPassword, c.password);
        EXPECT_FALSE(gRightValues(kRightAccessAllClients)) << c.logon;
        EXPECT_EQ(reachable(), c.entries) << c.logon;
    }
    gDBase.Execute("DELETE FROM extaccess WHERE userid = 2 OR extid = 2");
    window.logon = "bcole";
    window.password = "brian";
    EXPECT_TRUE(validate());
    EXPECT_EQ(gUserCount, 1);
    EXPECT_EQ(gUsers.size(), 2);
}

TEST_P(ValidateLogonTest, TheSessionBranchRegistersTheLogonInRts) {
    window.logon = "bcole";  // the console and the documents program write no row
    window.password = "brian";
    EXPECT_TRUE(validate(false, true));
    EXPECT_TRUE(validate(true, false));
    EXPECT_EQ(sessionRows(2), 0);
    EXPECT_TRUE(gLogonTime.isEmpty());

    window.logon = "devans";  // the demo shows Derek logged on already
    window.password = "derek";
    ui.answers.push_back(No);
    EXPECT_FALSE(validate(false, false));
    EXPECT_TRUE(testing_support::saidOnly(ui,
                                          "The network shows you already logged on.  Do you "
                                          "wish to continue, terminating the previous logon?",
                                          platform::Msg::YesNo, "Already Logged On"));
    EXPECT_EQ(window.calls, QStringList({"cmdCancel"}));
    EXPECT_EQ(sessionRows(4), 1);
    EXPECT_TRUE(gLogonTime.isEmpty());

    gDBase.Execute("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 4, 1)");
    ui.answers.push_back(Yes);
    EXPECT_TRUE(validate(false, false));
    EXPECT_EQ(sessionRows(4), 1);
    auto row = gDBase.OpenRecordset("SELECT * FROM rts WHERE uid = 4");
    EXPECT_EQ(rt::Variant(row->Cols("lt")), gLogonTime);
    EXPECT_EQ(rt::CInt(row->Cols("fslevel")), 0);

    window.logon = "bcole";  // no earlier row: no question
    window.password = "brian";
    ui.messages.clear();
    EXPECT_TRUE(validate(false, false));
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(sessionRows(2), 1);
}

TEST(CommandSwitches, AreFoundAnywhereInEitherCase) {
    const struct {
        const char* line;
        const char* logon;
        const char* password;
    } cases[] = {
        {"-ladmin -porvane", "admin", "orvane"},
        {"-porvane -ladmin", "admin", "orvane"},
        {"-LADMIN -Psecret", "ADMIN", "secret"},
        {"-l john -pjohn", "", "john"},  // a blank right behind the switch
        {"-ladmin", "admin", ""},
        {"/data/my-library.mdb -ladmin", "ibrary.mdb", ""},  // a path holding the switch wins
        {"", "", ""},
    };
    for (const auto& c : cases) {
        SetCommandLine(c.line);
        EXPECT_EQ(GetCommandSwitch("-l"), QString(c.logon)) << c.line;
        EXPECT_EQ(GetCommandSwitch("-p"), QString(c.password)) << c.line;
    }
    SetCommandLine("-ladmin -dC:\\My Data\\suite.mdb");
    EXPECT_EQ(GetCommandSwitch("-d"), "C:\\My Data\\suite.mdb");  // -c and -d run to the end
    SetCommandLine(QString());
}

}  // namespace
