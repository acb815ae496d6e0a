// An employee deletion killed at random moments in a process of its own: whatever the moment, the
// file is sound and the employee is wholly there or wholly gone, and no one else lost a row.

#include "fixtures.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <sqlite3.h>

#include <random>

namespace {

constexpr int kRowsEach = 10000;  // clients of each owner, each with a file and its account rows
constexpr int kTrialsEach = 10;   // for each choice

// The rows of the query, read from the file directly as another tool would, one line a row.
QStringList rowsOnFile(const QString& path, const QString& sql) {
    sqlite3* db = nullptr;
    sqlite3_open(path.toUtf8().constData(), &db);
    QStringList rows;
    const auto addRow = [](void* out, int columns, char** values, char**) {
        QStringList row;
        for (int c = 0; c < columns; ++c) {
            row << QString::fromUtf8(values[c]);
        }
        static_cast<QStringList*>(out)->append(row.join('|'));
        return 0;
    };
    sqlite3_exec(db, sql.toUtf8().constData(), addRow, &rows, nullptr);
    sqlite3_close(db);
    return rows;
}

// Every row of every table, in one hash.
QByteArray fingerprint(const QString& path) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QString& table :
         rowsOnFile(path, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")) {
        hash.addData(table.toUtf8());
        hash.addData(
            rowsOnFile(path, "SELECT * FROM \"" + table + "\" ORDER BY rowid").join('\n').toUtf8());
    }
    return hash.result();
}

class DeletionCrashTest : public testing_support::SeamTest {
protected:
    void SetUp() override {
        SeamTest::SetUp();
        seed = newDatabase(QStringLiteral("seed.mdb"));
        QString sql =
            "BEGIN; INSERT INTO users (id, Name, Logon, Password, accLevel, fslevel, Type, num) "
            "VALUES (2, 'Brian', 'bcole', 'b', 1, 0, 0, 0), "
            "(3, 'Carmen', 'cdiaz', 'c', 1, 0, 0, 0), (4, 'Derek', 'devans', 'd', 1, 0, 0, 0); "
            "INSERT INTO extaccess (userid, extid) VALUES (2, 3), (3, 2), (3, 4);";
        // Brian (2) is deleted; Carmen (3) is the bystander, with as many rows of every kind.
        for (int owner : {2, 3}) {
            const QString rows = QStringLiteral(
                                     "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM "
                                     "n WHERE i < %1) SELECT %2 * 100000 + i, %2 FROM n")
                                     .arg(kRowsEach)
                                     .arg(owner);
            for (const char* insert :
                 {"clients (id, userid)", "files (id, ownerid)", "charges (accid, userid)",
                  "invoice (accid, userid)", "trans (acc_id, amount)", "balance (accid, amount)",
                  "history (client_id, histdate)", "reminder (userid, startd)"}) {
                sql += QStringLiteral(" INSERT INTO %1 %2;").arg(insert, rows);
            }
        }
        testing_support::runOnFile(seed, (sql + " COMMIT;").toUtf8().constData());
        untouched = fingerprint(seed);
    }

    // A fresh copy of the seeded file.
    QString trialFile() {
        const QString trial = path(QStringLiteral("trial.mdb"));
        QFile::remove(trial);
        QFile::remove(trial + "-journal");
        EXPECT_TRUE(QFile::copy(seed, trial));
        return trial;
    }

    // Runs the deletion in a child process on the file, killed `killAfter` ms after it started
    // deleting, or let to finish; gives the milliseconds it ran for after starting.
    qint64 runChild(const QString& file, const QStringList& choice,
                    std::optional<int> killAfter = std::nullopt) {
        QProcess child;
        child.start(QStringLiteral(DELETION_CHILD), QStringList{file, "2"} + choice);
        EXPECT_TRUE(child.waitForReadyRead(30000)) << "the child never started";
        QElapsedTimer deleting;
        deleting.start();
        if (killAfter) {
            QThread::msleep(*killAfter);
            child.kill();
        }
        EXPECT_TRUE(child.waitForFinished(60000));
        if (!killAfter) {
            EXPECT_EQ(child.exitCode(), 0) << child.readAllStandardError().toStdString();
        }
        return deleting.elapsed();
    }

    QString seed;
    QByteArray untouched;
};

TEST_F(DeletionCrashTest, AKilledDeletionLeavesTheEmployeeWhollyThereOrWhollyGone) {
    const unsigned seedOfTrials = std::random_device{}();
    SCOPED_TRACE("random seed " + std::to_string(seedOfTrials));
    std::mt19937 random(seedOfTrials);
    for (const QStringList& choice : {QStringList(), QStringList{"4"}}) {
        SCOPED_TRACE(choice.isEmpty() ? "all data" : "handed over");
        const QString whole = trialFile();
        const qint64 duration = runChild(whole, choice);
        const QByteArray done = fingerprint(whole);
        ASSERT_NE(done, untouched);
        for (int trial = 0; trial < kTrialsEach; ++trial) {
            const QString file = trialFile();
            // A little past the whole run too, so that some kills find the commit done.
            const int killAfter =
                std::uniform_int_distribution<int>(0, int(duration * 5 / 4))(random);
            SCOPED_TRACE("killed after " + std::to_string(killAfter) + " ms");
            runChild(file, choice, killAfter);
            EXPECT_EQ(rowsOnFile(file, "PRAGMA integrity_check"), QStringList{"ok"});
            EXPECT_TRUE(fingerprint(file) == untouched || fingerprint(file) == done);
        }
    }
}

}  // namespace
