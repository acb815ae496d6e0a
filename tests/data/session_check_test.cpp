// The session watchdog: one look at rts every 51 opens, the message from the open after a look
// that missed the row, and the 16-bit counter.

#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "platform/dates.h"

namespace {

const QString kTerminated =
    "You're logon has been terminated by another user.  Please press OK until you no longer "
    "receive this message "
    "and then exit the application.";

class SessionCheckTestFixture : public testing_support::SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        // This process's session, as the logon wrote it.
        gLogonTime = rt::Variant::date(rt::Now());
        execute("INSERT INTO rts (lt, uid, fslevel) VALUES (CDATE('" + rt::CStr(gLogonTime) +
                "'),1,0)");
        gWatchdogOff = false;
        ResetSessionCheck();
    }
    void TearDown() override {
        ResetSessionCheck();
        SessionTest::TearDown();
    }
    // Opens that many cursors; each runs the check.
    void opens(int n) {
        for (int i = 0; i < n; ++i) {
            gDBase.OpenRecordset(QStringLiteral("SELECT id FROM users WHERE id = 0"));
        }
    }
};

class SessionCheckTest : public testing_support::OnEveryBackend<SessionCheckTestFixture> {};

ORVANE_ON_EVERY_BACKEND(SessionCheckTest);

TEST_P(SessionCheckTest, TheFiftyFirstOpenLooksAndTheMessageComesAtTheOpenAfter) {
    opens(50);
    execute("DELETE FROM rts");  // an administrator took the row away
    EXPECT_TRUE(ui.messages.empty());
    opens(1);  // the 51st looks, and finds the row gone
    EXPECT_TRUE(ui.messages.empty());
    opens(1);
    EXPECT_EQ(ui.texts(), std::vector<QString>{kTerminated});
    ShowBusy();
    opens(2);  // again at every open, with the hourglass off
    EXPECT_EQ(ui.messages.size(), 3u);
    EXPECT_FALSE(ui.busy);
}

TEST_P(SessionCheckTest, TheFiftiethDoesNotLook) {
    opens(49);
    execute("DELETE FROM rts");
    opens(1);  // the 50th
    opens(1);  // the 51st: the look, which finds nothing
    opens(1);
    EXPECT_EQ(ui.messages.size(), 1u);
    ResetSessionCheck();
    execute("INSERT INTO rts (lt, uid, fslevel) VALUES (CDATE('" + rt::CStr(gLogonTime) +
            "'),1,0)");
    opens(60);  // a look that finds this session's row: nothing to say
    EXPECT_EQ(ui.messages.size(), 1u);
}

TEST_P(SessionCheckTest, ASecondLogonOfTheEmployeeReplacesTheRow) {
    execute("DELETE FROM rts");
    execute("INSERT INTO rts (lt, uid, fslevel) VALUES (DATEADD(\"s\",5,CDATE('" +
            rt::CStr(gLogonTime) + "')),1,0)");
    opens(52);
    EXPECT_EQ(ui.texts(), std::vector<QString>{kTerminated});
}

TEST_P(SessionCheckTest, AProcessThatWroteNoRowNeverLooks) {
    gLogonTime = rt::Variant();
    execute("DELETE FROM rts");
    opens(120);
    EXPECT_TRUE(ui.messages.empty());
}

TEST_P(SessionCheckTest, WithTheCheckOffTheCounterOverflowsAtThe32768thOpen) {
    gWatchdogOff = true;
    execute("DELETE FROM rts");
    opens(32767);
    EXPECT_TRUE(ui.messages.empty());
    try {
        opens(1);
        FAIL() << "the 32768th open went through";
    } catch (const rt::Error& e) {
        EXPECT_EQ(e.number(), rt::Overflow);
    }
}

}  // namespace
