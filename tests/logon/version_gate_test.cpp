// The version gate: only a database of version 6.5 is opened, each other version is refused
// with its own message, and the company's details are copied.

#include "logon/version_gate.h"
#include "data/dbase.h"
#include "fixtures.h"
#include "platform/convert.h"

namespace {

using testing_support::saidOnly;

class VersionGateTest : public testing_support::SessionTest {
protected:
    std::unique_ptr<RecSet> rs;
};

// A database without its row fails with the runtime's own text.
TEST_F(VersionGateTest, EachVersionWithItsMessage) {
    const QString older =
        "The database you are trying to open is a %1 version of the database.  Use the Upkeep "
        "Tool program from your Start Menu to upgrade it to the new version.";
    const QString newer =
        "The database you are trying to open is a %1 version, which is more recent than the "
        "version of you are running.  You must upgrade the program to this version before you "
        "can open this database.";
    const QString app = "Orvane Administration";
    const struct {
        const char* change;
        QString message, title;
    } cases[] = {
        {"UPDATE sysinfo SET dbversion = 6.49", older.arg("6.49"), "Database Upgrade"},
        {"UPDATE sysinfo SET dbversion = 6.51", newer.arg("6.51"), app},
        {"UPDATE sysinfo SET dbversion = 6.5", "", ""},
        {"DELETE FROM sysinfo", "No current record.", app},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.change);
        ui.messages.clear();
        execute(c.change);
        EXPECT_EQ(VerifyOnLogon(rs), c.message.isEmpty());
        EXPECT_TRUE(c.message.isEmpty() ? ui.messages.empty()
                                        : saidOnly(ui, c.message, platform::Msg::OKOnly, c.title));
    }
}

TEST_F(VersionGateTest, APassingDatabaseHandsBackTheCursorAndTheCompany) {
    execute(
        "UPDATE sysinfo SET CompanyName = 'Harbor & Co', companyphone = '555-1', companyfax = "
        "'555-2', companyemail = NULL, Address = 'Line 1' & CHR(10) & 'Line 2', Disclaimer = 'No'");
    ASSERT_TRUE(VerifyOnLogon(rs));
    EXPECT_EQ(rt::CStr(rs->Cols("level10name")), "Administrator");
    EXPECT_EQ(QStringList({gCompanyName, gCompanyPhone, gCompanyFax, gCompanyEmail, gCompanyAddress,
                           gDisclaimer}),
              QStringList({"Harbor & Co", "555-1", "555-2", "", "Line 1\nLine 2", "No"}));
    EXPECT_FALSE(gIsReplica);
    gDBase.theDb->setProperty("LSIsReplica", true);
    ASSERT_TRUE(VerifyOnLogon(rs));
    EXPECT_TRUE(gIsReplica);
    gDBase.theDb->setProperty("LSIsReplica", 1);  // true, but not equal to True
    ASSERT_TRUE(VerifyOnLogon(rs));
    EXPECT_FALSE(gIsReplica);
}

}  // namespace
