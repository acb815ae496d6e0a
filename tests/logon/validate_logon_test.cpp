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

using testing_support::saidOnly;

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
    void focusLogon() override { calls << "logon"; }
    void focusPassword() override { calls << "password"; }
    void focusDatabase() override { calls << "database"; }
    void ShowDb() override { calls << "ShowDb"; }
    void cmdCancel_Click() override { calls << "cancel"; }
};

class ValidateLogonFixture : public testing_support::DemoTest {
protected:
    void SetUp() override {
        DemoTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        window.database = demoDatabase();
        WriteIni("LG", ProgramSection(), "someone");
    }
    // Only a logon that is neither the console's nor the documents program's registers a session.
    bool validate(const QString& logon, const QString& password, bool docs = false,
                  bool admin = true) {
        window.logon = logon;
        window.password = password;
        return ValidateLogon(window, "server1", docs, admin);
    }
    QString settings() {
        QStringList values;
        for (const char* key : {"Database", "Server", "LG", "WP"}) {
            values << ReadIni(key, ProgramSection(), "-");
        }
        return values.join('|');
    }
    QString reachable() const {
        QStringList entries;
        for (int i = 1; i < gUserCount; ++i) {
            entries << gUsers(i).Name + (gUsers(i).bMember ? "*" : "");
        }
        return entries.join(", ");
    }
    QStringList sessions() {
        return testing_support::rowsOf(*gDBase.theDb, "SELECT uid, fslevel FROM rts ORDER BY uid");
    }

    FakeLogonWindow window;
};

class ValidateLogonTest : public testing_support::OnEveryBackend<ValidateLogonFixture> {};

ORVANE_ON_EVERY_BACKEND(ValidateLogonTest);

// Only the credentials' checks come after the database was opened and remembered, and no refusal
// writes the logon.
TEST_P(ValidateLogonTest, EachRefusalShowsItsMessageAndSetsTheFocus) {
    const QString db = window.database, m = path("missing.mdb"), app = "Orvane Administration";
    const struct {
        const char *logon, *password;
        QString database, message, title;
        const char* calls;
        bool opened;
    } cases[] = {
        {"", "orvane", db, "You must enter a logon.", "Logon", "logon", false},
        {"ad'min", "orvane", db, "Invalid logon character.", "Logon", "logon", false},
        {"ad\"min", "orvane", db, "Invalid logon character.", "Logon", "logon", false},
        {"admin", "orvane", "", "Invalid database.", "Error", "ShowDb|database", false},
        {"admin", "orvane", m, "Couldn't find file '" + m + "'.", app, "ShowDb", false},
        {"zz", "orvane", db, "You have entered an invalid logon name.", "Logon", "logon", true},
        // The password compares exactly.
        {"admin", "ORVANE", db, "You have entered an invalid password.", "Logon", "password", true},
    };
    WriteIni("Database", ProgramSection(), "");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message.toStdString());
        ui.messages.clear();
        window.calls.clear();
        window.database = c.database;
        EXPECT_FALSE(validate(c.logon, c.password));
        EXPECT_TRUE(saidOnly(ui, c.message, platform::Msg::OKOnly, c.title));
        EXPECT_EQ(window.calls.join('|'), c.calls);
        EXPECT_EQ(gDBase.theDb != nullptr, c.opened);
        EXPECT_EQ(settings(), (c.opened ? db + "|server1" : "-|-") + "|someone|-");
        EXPECT_FALSE(ui.busy);
    }
    EXPECT_TRUE(validate("ADMIN", "orvane"));  // the logon compares as the database does
    EXPECT_EQ(gLogon, "admin");
}

TEST_P(ValidateLogonTest, AGoodLogonFillsTheSessionAndRemembersTheSettings) {
    window.savePassword = 1;
    EXPECT_TRUE(validate("admin", "orvane"));
    EXPECT_EQ(
        QStringList({QString::number(gAccessLevel), gUsers(0).Name, QString::number(gUsers(0).id),
                     gLogon, gPassword, gServer, gLevelNames(9)}),
        QStringList({"10", "Alice Admin", "1", "admin", "orvane", "server1", "Administrator"}));
    EXPECT_EQ(settings(), window.database + "|server1|admin|orvane");
    EXPECT_TRUE(ui.busy);  // the start of the run ends the hourglass
    EXPECT_TRUE(ui.messages.empty());
}

// Level 10 and level 8 hold the right to all clients; a member of a workgroup sees it starred.
TEST_P(ValidateLogonTest, TheRightToAllClientsOrExtendedAccessDecidesWhatIsReachable) {
    const struct {
        const char *logon, *password;
        bool allClients;
        const char* entries;
    } cases[] = {
        {"admin", "orvane", true,
         "Brian Cole, Carmen Diaz, Conference Room, Derek Evans, Downtown Office, Erin Ford, "
         "Northside Office, Projector, Sales Team, Support Desk"},
        {"devans", "derek", true,
         "Alice Admin, Brian Cole, Carmen Diaz, Conference Room, Downtown Office, Erin Ford, "
         "Northside Office, Projector, Sales Team*, Support Desk"},
        {"bcole", "brian", false, "Sales Team*"},
        {"cdiaz", "carmen", false, "Support Desk*"},
        // A null password matches an empty box; Erin reaches what the Downtown branch reaches.
        {"eford", "", false, "Alice Admin, Carmen Diaz, Conference Room, Downtown Office"},
    };
    ASSERT_TRUE(gDBase.DBInit(window.database));
    gDBase.Execute("UPDATE users SET Password = NULL WHERE id = 5");
    gDBase.Execute("INSERT INTO extaccess (userid, extid) VALUES (5, 10)");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.logon);
        EXPECT_TRUE(validate(c.logon, c.password));
        EXPECT_EQ(gPassword, c.password);
        EXPECT_EQ(gRightValues(kRightAccessAllClients), c.allClients);
        EXPECT_EQ(reachable(), c.entries);
        EXPECT_EQ(gUsers.size(), gUserCount + 1);
    }
    gDBase.Execute("DELETE FROM extaccess WHERE userid = 2 OR extid = 2");
    EXPECT_TRUE(validate("bcole", "brian"));
    EXPECT_EQ(gUsers.size(), 2);
}

TEST_P(ValidateLogonTest, TheSessionBranchRegistersTheLogonInRts) {
    const QStringList derekOnly = {"4|2"};  // the demo shows Derek logged on already
    EXPECT_TRUE(validate("bcole", "brian", false, true));
    EXPECT_TRUE(validate("bcole", "brian", true, false));
    EXPECT_EQ(sessions(), derekOnly);
    EXPECT_TRUE(gLogonTime.isEmpty());

    ui.answers = {platform::Msg::No, platform::Msg::Yes};
    EXPECT_FALSE(validate("devans", "derek", false, false));
    EXPECT_TRUE(saidOnly(ui,
                         "The network shows you already logged on.  Do you wish to continue, "
                         "terminating the previous logon?",
                         platform::Msg::YesNo, "Already Logged On"));
    EXPECT_EQ(window.calls, QStringList({"cancel"}));
    EXPECT_EQ(sessions(), derekOnly);
    EXPECT_TRUE(gLogonTime.isEmpty());

    gDBase.Execute("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 4, 1)");
    EXPECT_TRUE(validate("devans", "derek", false, false));  // every earlier row goes
    EXPECT_EQ(testing_support::rowsOf(*gDBase.theDb, "SELECT lt, uid, fslevel FROM rts"),
              QStringList({rt::CStr(gLogonTime) + "|4|0"}));

    ui.messages.clear();
    EXPECT_TRUE(validate("bcole", "brian", false, false));  // no earlier row: no question
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(sessions(), QStringList({"2|0", "4|0"}));
}

// A blank right behind a switch gives nothing, a path holding one wins, and -c and -d run to the
// end.
TEST(CommandSwitches, AreFoundAnywhereInEitherCase) {
    const struct {
        const char *line, *found;  // -l|-p|-d
    } cases[] = {
        {"-ladmin -porvane", "admin|orvane|"},
        {"-LADMIN -Psecret", "ADMIN|secret|"},
        {"-l john -pjohn", "|john|"},
        {"/data/my-library.mdb -ladmin", "ibrary.mdb||"},
        {"-ladmin -dC:\\My Data\\suite.mdb", "admin||C:\\My Data\\suite.mdb"},
    };
    for (const auto& c : cases) {
        SetCommandLine(c.line);
        EXPECT_EQ(
            QStringList({GetCommandSwitch("-l"), GetCommandSwitch("-p"), GetCommandSwitch("-d")})
                .join('|'),
            c.found)
            << c.line;
    }
    SetCommandLine(QString());
}

}  // namespace
