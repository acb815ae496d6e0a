// An office moving onto a server: its database copied there whole, and the console on the copy.

#include "console_fixture.h"
#include "copy.h"
#include "installation.h"
#include "platform/convert.h"
#include "platform/os.h"
#include "settings/settings_file.h"

#include <QCryptographicHash>

namespace {

class CopyToServerTest : public ConsoleFixture {
protected:
    void SetUp() override {
        if (testing_support::lacksServer(testing_support::Backend::Postgresql)) {
            GTEST_SKIP() << testing_support::kNoServer;
        }
        ConsoleFixture::SetUp();
    }
    // Each table's row count and a checksum of its rows, whatever order they come in.
    static QStringList contents(engine::Database& db) {
        QStringList tables;
        for (const QString& table : db.tableNames()) {
            auto rows = db.openRecordset("SELECT * FROM [" + table + "]");
            QStringList lines;
            for (; !rows->eof(); rows->moveNext()) {
                QStringList values;
                for (int c = 0; c < rows->fieldCount(); ++c) {
                    const rt::Variant value = rows->fieldValue(c);
                    values << QString::number(int(value.type())) + ":" +
                                  (value.isNull() ? QString() : rt::CStr(value));
                }
                lines << values.join('|');
            }
            lines.sort();
            tables << table.toLower() + " " + QString::number(lines.size()) + " " +
                          QCryptographicHash::hash(lines.join('\n').toUtf8(),
                                                   QCryptographicHash::Sha256)
                              .toHex();
        }
        tables.sort();
        return tables;
    }
};

TEST_F(CopyToServerTest, TheCopyHoldsEveryRowAndTheConsoleWorksOnIt) {
    const QString server = testing_support::newDatabaseLocation(
        testing_support::Backend::Postgresql, folder, QStringLiteral("office"));
    db->setProperty("LSIsReplica", rt::Variant(true));
    installer::copyDatabase(demoDatabase(), server, [](const QString&) {});
    auto copy = engine::openDatabase(server);
    const QStringList original = contents(*db);
    EXPECT_EQ(contents(*copy), original);
    EXPECT_EQ(copy->counterPosition("users"), db->counterPosition("users"));
    EXPECT_EQ(copy->propertyNames(), QStringList{"LSIsReplica"});
    EXPECT_EQ(copy->property("LSIsReplica"), db->property("LSIsReplica"));

    // A second copy onto it is refused and leaves it as it was.
    EXPECT_THROW(installer::copyDatabase(demoDatabase(), server, [](const QString&) {}),
                 installer::InstallError);
    EXPECT_EQ(contents(*copy), original);
    copy->close();

    // Each workstation then points at the server, and the first logon there sets it up.
    WriteIni("Database", FolderSection(platform::programFolder()), server);
    logOn();
    const QStringList employees = rows(console.lstEmployees);
    EXPECT_EQ(employees.size(), count("users", "type = 0"));
    EXPECT_TRUE(employees.join('\n').contains(":Alice Admin|"))
        << employees.join(", ").toStdString();
}

}  // namespace
