// The session watchdog: one look at rts every 51 opens, the message from the open after a look
// that missed the row, and the 16-bit counter.

#include "data/dbase.h"
#include "data/session.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "platform/dates.h"

namespace {

class SessionCheckTestFixture : public testing_support::SessionTest {
protected:
    void TearDown() override {
        ResetSessionCheck();
        SessionTest::TearDown();
    }
    // This process's session as the logon wrote it, at a count of no opens.
    void logOn() {
        gLogonTime = rt::Variant::date(rt::Now());
        execute("DELETE FROM rts");
        execute("INSERT INTO rts (lt, uid, fslevel) VALUES (CDATE('" + rt::CStr(gLogonTime) +
                "'),1,0)");
        gWatchdogOff = false;
        ResetSessionCheck();
        ui.messages.clear();
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
    const QString terminated =
        "You're logon has been terminated by another user.  Please press OK until you no longer "
        "receive this message and then exit the application.";
    // Opens before another user changes rts, the change, the opens after, the messages.
    const std::tuple<int, const char*, int, size_t> cases[] = {
        {49, "DELETE FROM rts", 2, 0},                          // the 50th does not look
        {0, "UPDATE rts SET lt = DATEADD(\"s\",5,lt)", 52, 1},  // a second logon replaced the row
        {0, "UPDATE rts SET fslevel = 1", 120, 0},              // a look that finds the row
        {-1, "DELETE FROM rts", 120, 0},  // a process that wrote no row never looks
        {50, "DELETE FROM rts", 2, 1},    // the 51st looks, the 52nd tells
    };
    for (const auto& [before, change, after, messages] : cases) {
        SCOPED_TRACE(change);
        logOn();
        if (before < 0) {
            gLogonTime = rt::Variant();
        }
        opens(std::max(before, 0));
        execute(change);
        opens(after);
        EXPECT_EQ(ui.texts(), std::vector<QString>(messages, terminated));
    }
    ShowBusy();
    opens(2);  // once missed, again at every open, with the hourglass off
    EXPECT_EQ(ui.messages.size(), 3u);
    EXPECT_FALSE(ui.busy);
}

TEST_P(SessionCheckTest, WithTheCheckOffTheCounterOverflowsAtThe32768thOpen) {
    logOn();
    gWatchdogOff = true;
    execute("DELETE FROM rts");
    opens(32767);
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(testing_support::errorOf([this] { opens(1); }), rt::Overflow);
}

}  // namespace
