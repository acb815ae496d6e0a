// The version gate: only a database of version 6.5 is opened, each other version is refused
// with its own message, and the company's details are copied.

#include "logon/version_gate.h"
#include "data/dbase.h"
#include "fixtures.h"
#include "platform/convert.h"

namespace {

class VersionGateTest : public testing_support::SessionTest {
protected:
    bool verify(const QString& version) {
        execute("UPDATE sysinfo SET dbversion = " + version);
        std::unique_ptr<RecSet> rs;
        return VerifyOnLogon(rs);
    }
};

TEST_F(VersionGateTest, EachVersionWithItsMessage) {
    const struct {
        const char* stored;
        bool passes;
        const char* message;
        const char* title;
    } cases[] = {
        {"6.49", false,
         "The database you are trying to open is a 6.49 version of the database.  Use the Upkeep "
         "Tool program "
         "from your Start Menu to upgrade it to the new version.",
         "Database Upgrade"},
        {"6.51", false,
         "The database you are trying to open is a 6.51 version, which is more recent than the "
         "version of you are "
         "running.  You must upgrade the program to this version before you can open this "
         "database.",
         "Orvane Administration"},
        {"6.5", true, nullptr, nullptr},
        {"6.50", true, nullptr, nullptr},
        {"2", false,
         "The database you are trying to open is a 2 version of the database.  Use the Upkeep Tool "
         "program from "
         "your Start Menu to upgrade it to the new version.",
         "Database Upgrade"},
    };
    for (const auto& c : cases) {
        ui.messages.clear();
        EXPECT_EQ(verify(c.stored), c.passes) << c.stored;
        if (c.message) {
            EXPECT_TRUE(testing_support::saidOnly(ui, c.message, platform::Msg::OKOnly, c.title));
        } else {
            EXPECT_TRUE(ui.messages.empty()) << c.stored;
        }
    }
}

TEST_F(VersionGateTest, APassingDatabaseHandsBackTheCursorAndTheCompany) {
    execute(
        "UPDATE sysinfo SET CompanyName = 'Harbor & Co', companyphone = '555-1', companyfax = "
        "NULL, "
        "companyemail = NULL, Address = 'Line 1' & CHR(10) & 'Line 2', Disclaimer = 'None'");
    std::unique_ptr<RecSet> rs;
    ASSERT_TRUE(VerifyOnLogon(rs));
    EXPECT_EQ(rt::CStr(rs->Cols("level10name")), "Administrator");
    EXPECT_EQ(gCompanyName, "Harbor & Co");
    EXPECT_EQ(gCompanyPhone, "555-1");
    EXPECT_EQ(gCompanyEmail, "");
    EXPECT_EQ(gCompanyFax, "");
    EXPECT_EQ(gCompanyAddress, "Line 1\nLine 2");
    EXPECT_EQ(gDisclaimer, "None");
    EXPECT_FALSE(gIsReplica);
    gDBase.theDb->setProperty("LSIsReplica", true);
    ASSERT_TRUE(VerifyOnLogon(rs));
    EXPECT_TRUE(gIsReplica);
    gDBase.theDb->setProperty("LSIsReplica", 1);  // true, but not equal to True
    ASSERT_TRUE(VerifyOnLogon(rs));
    EXPECT_FALSE(gIsReplica);
}

TEST_F(VersionGateTest, ADatabaseWithoutItsRowFailsWithTheRuntimesText) {
    execute("DELETE FROM sysinfo");
    std::unique_ptr<RecSet> rs;
    EXPECT_FALSE(VerifyOnLogon(rs));
    EXPECT_TRUE(testing_support::saidOnly(ui, "No current record."));
}

}  // namespace
