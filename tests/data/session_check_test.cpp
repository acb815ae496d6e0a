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
    "receive this message and then exit the application.";

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
    const struct {
        const char* what;
        int opensBefore;     // before another user changes rts...
        const char* change;  // ...so
        int opensAfter;
        size_t messages;
    } cases[] = {
        {"the 50th does not look", 49, "DELETE FROM rts", 2, 0},
        {"a second logon of the employee replaces the row", 0,
         "UPDATE rts SET lt = DATEADD(\"s\",5,lt)", 52, 1},
        {"a look that finds the row has nothing to say", 0, nullptr, 120, 0},
        {"a process that wrote no row never looks", -1, "DELETE FROM rts", 120, 0},
        {"the 51st looks, the 52nd tells", 50, "DELETE FROM rts", 2, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        logOn();
        if (c.opensBefore < 0) {
            gLogonTime = rt::Variant();
        }
        opens(std::max(c.opensBefore, 0));
        if (c.change) {
            execute(c.change);
        }
        opens(c.opensAfter);
        EXPECT_EQ(ui.texts(), std::vector<QString>(c.messages, kTerminated));
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
