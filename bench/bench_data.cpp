#include "bench_data.h"

#include "installation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#ifndef ORVANE_BENCH_DATA
#define ORVANE_BENCH_DATA "bench-data"
#endif

namespace bench {

namespace {

// Bumped whenever the generator changes, so that no stale cached file is measured.
constexpr const char* kGeneration = "v1";

// A small deterministic generator: the same size always gives the same database.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    int below(int bound) { return int(next() % std::uint64_t(bound)); }

private:
    std::uint64_t state_;
};

const char* const kFirstNames[] = {
    "Maria", "James", "Aiko",  "Brian", "Carmen", "Derek",  "Erin",  "Farid",  "Greta",
    "Hugo",  "Ines",  "Jonas", "Keiko", "Liam",   "Mona",   "Nils",  "Olga",   "Pavel",
    "Quinn", "Rosa",  "Samir", "Tess",  "Ulla",   "Victor", "Wanda", "Xavier", "Yara",
    "Zane",  "Amara", "Boris", "Chloe", "Dmitri", "Elena",  "Felix", "Gemma",  "Henrik"};
const char* const kLastNames[] = {
    "Okafor",    "Smith",   "Tanaka", "Cole",   "Diaz",    "Evans",  "Ford",    "Haddad",
    "Lindqvist", "Moreau",  "Silva",  "Becker", "Sato",    "Murphy", "Khan",    "Berg",
    "Ivanova",   "Novak",   "Reyes",  "Costa",  "Nasser",  "Walsh",  "Nyberg",  "Hugo",
    "Kowalski",  "Dubois",  "Farah",  "Grant",  "Adeyemi", "Petrov", "Laurent", "Volkov",
    "Romano",    "Schmidt", "Brooks", "Larsen"};

template <class T, size_t N>
constexpr int countOf(T (&)[N]) {
    return int(N);
}

class Connection {
public:
    explicit Connection(const QString& path) {
        if (sqlite3_open_v2(path.toUtf8().constData(), &db_, SQLITE_OPEN_READWRITE, nullptr) !=
            SQLITE_OK) {
            throw std::runtime_error("cannot open " + path.toStdString());
        }
    }
    ~Connection() { sqlite3_close_v2(db_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void exec(const char* sql) {
        char* message = nullptr;
        if (sqlite3_exec(db_, sql, nullptr, nullptr, &message) != SQLITE_OK) {
            const std::string text = message ? message : "?";
            sqlite3_free(message);
            throw std::runtime_error(text + " in " + sql);
        }
    }
    sqlite3* get() const { return db_; }

private:
    sqlite3* db_ = nullptr;
};

// One prepared INSERT, run with its values in order; gives the new row's id.
class Insert {
public:
    Insert(Connection& db, const char* sql) : db_(db.get()), sql_(sql) {
        if (sqlite3_prepare_v2(db_, sql, -1, &statement_, nullptr) != SQLITE_OK) {
            throw std::runtime_error(std::string(sqlite3_errmsg(db_)) + " in " + sql);
        }
    }
    ~Insert() { sqlite3_finalize(statement_); }
    Insert(const Insert&) = delete;
    Insert& operator=(const Insert&) = delete;

    template <class... Values>
    std::int64_t operator()(const Values&... values) {
        int index = 0;
        (bind(++index, values), ...);
        if (sqlite3_step(statement_) != SQLITE_DONE) {
            throw std::runtime_error(std::string(sqlite3_errmsg(db_)) + " in " + sql_);
        }
        sqlite3_reset(statement_);
        ++rows;
        return sqlite3_last_insert_rowid(db_);
    }

    static inline std::int64_t rows = 0;  // all the rows inserted through any Insert

private:
    void bind(int index, int value) { sqlite3_bind_int64(statement_, index, value); }
    void bind(int index, std::int64_t value) { sqlite3_bind_int64(statement_, index, value); }
    void bind(int index, double value) { sqlite3_bind_double(statement_, index, value); }
    void bind(int index, const std::string& value) {
        sqlite3_bind_text(statement_, index, value.data(), int(value.size()), SQLITE_TRANSIENT);
    }
    void bind(int index, const char* value) {
        sqlite3_bind_text(statement_, index, value, -1, SQLITE_TRANSIENT);
    }

    sqlite3* db_;
    const char* sql_;
    sqlite3_stmt* statement_ = nullptr;
};

constexpr double kEdited = 36766.5;  // day serials, as the engine stores dates
constexpr double kAdded = 36700.25;

std::string personName(Random& random, int id) {
    return std::string(kFirstNames[random.below(countOf(kFirstNames))]) + " " +
           kLastNames[random.below(countOf(kLastNames))] + " " + std::to_string(id);
}

// Employees 1 to n (1 being the administrator), then the workgroups and the equipment.
void fillDirectory(Connection& db, int employees) {
    Random random(std::uint64_t(employees) * 7919);
    {
        std::string admin =
            "UPDATE users SET Name = 'Alice Admin', Logon = '" + kAdministratorLogon.toStdString() +
            "', Password = '" + kAdministratorPassword.toStdString() +
            "', accLevel = 10, fslevel = 3 WHERE id = " + std::to_string(kAdministratorId);
        db.exec(admin.c_str());
    }
    Insert user(db,
                "INSERT INTO users (id, Name, Logon, Password, accLevel, fslevel, Type, num, "
                "lastedit, lastmodby, addedon, addedby) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 1, ?, "
                "1)");
    Insert link(db, "INSERT INTO extaccess (userid, extid) VALUES (?, ?)");
    Insert session(db, "INSERT INTO rts (lt, uid, fslevel) VALUES (?, ?, ?)");

    for (int id = kAdministratorId + 1; id <= employees; ++id) {
        const int level = id % 50 == 0 ? 10 : 1 + random.below(9);
        user(id, personName(random, id), "u" + std::to_string(id), "p" + std::to_string(id % 997),
             level, random.below(4), 0, 0, kEdited, kAdded);
        // Some employees share their planner with two others.
        if (id % 5 == 0) {
            link(id, 2 + random.below(employees - 1));
            link(id, 2 + random.below(employees - 1));
        }
        // None, one or two live sessions, as rows left by runs that ended read as logged in too.
        for (int s = 0; s < id % 3; ++s) {
            session(kEdited + 0.01 * s, id, random.below(4));
        }
    }
    const int groups = workgroupCount(employees);
    for (int g = 0; g < groups; ++g) {
        const int id = employees + 1 + g;
        int members = 10;
        for (int m = 0; m < 10; ++m) {
            link(id, 2 + random.below(employees - 1));
        }
        if (g % 20 == 0) {
            link(id, kAdministratorId);
            ++members;
        }
        user(id,
             "Workgroup " + std::string(kLastNames[random.below(countOf(kLastNames))]) + " " +
                 std::to_string(g + 1),
             "zq", "zq", 1, 0, 1, members, kEdited, kAdded);
    }
    for (int e = 0; e < groups; ++e) {
        const int id = employees + 1 + groups + e;
        for (int m = 0; m < 3; ++m) {
            link(id, 2 + random.below(employees - 1));
        }
        user(id, "Room " + std::to_string(e + 1), "zq", "zq", 1, 0, 2, 0, kEdited, kAdded);
    }
}

// Rows owned by `owner`, about `rows` of them: a tenth in the employee's own data, the rest in
// clients with their accounts and everything hanging on those. Gives the count made.
std::int64_t fillOwned(Connection& db, std::int32_t owner, std::int64_t rows) {
    Insert udfs(db,
                "INSERT INTO udfs (Parent, Col, Descrpn, Type, Decimals, Class, userid) VALUES "
                "('clntudf', ?, 'Own field', 0, 0, 2, ?)");
    Insert reminder(db,
                    "INSERT INTO reminder (userid, startd, endd, subject, acttype) VALUES (?, ?, "
                    "?, 'Call back', 1)");
    Insert billcode(db, "INSERT INTO billcode (userid, code, description) VALUES (?, ?, 'Advice')");
    Insert options(db, "INSERT INTO options (userid, section, value1) VALUES (?, ?, 'x')");
    Insert automation(db, "INSERT INTO auto (userid, Name) VALUES (?, 'Follow-up')");
    Insert autostep(db, "INSERT INTO autostep (autoid, stepno, description) VALUES (?, ?, 'Step')");
    Insert budget(db, "INSERT INTO budgets (parentid, type, amount) VALUES (?, ?, 1250.5)");
    Insert busdev(db, "INSERT INTO busdev (userid, description) VALUES (?, 'Prospect')");
    Insert report(db, "INSERT INTO reports (userid, Name, rpttype) VALUES (?, 'My report', 0)");
    Insert reportControl(db,
                         "INSERT INTO rptcntls (rptid, cntlname, cntlvalue) VALUES (?, ?, 'v')");
    Insert modeling(db, "INSERT INTO modeling (userid, Name) VALUES (?, 'Model')");
    Insert reflib(db,
                  "INSERT INTO reflib (userid, title, docpath) VALUES (?, 'Guide', '/docs/g.pdf')");
    Insert list(db, "INSERT INTO lists (listid, userid, Name) VALUES (?, ?, 'Mailing')");
    Insert listField(db, "INSERT INTO listflds (listid, fieldname) VALUES (?, 'Name')");
    Insert listMember(db, "INSERT INTO listmmbr (listid, clientid) VALUES (?, ?)");
    Insert listUdf(db, "INSERT INTO listudf (id, udf1) VALUES (?, 'x')");

    Insert client(db, "INSERT INTO clients (userid, Name, addedon) VALUES (?, ?, ?)");
    Insert clientUdf(db, "INSERT INTO clntudf (id, udf1) VALUES (?, 'x')");
    Insert clientUdf2(db, "INSERT INTO clntudf2 (id, udf1) VALUES (?, 'Low')");
    Insert history(db, "INSERT INTO history (client_id, histdate, note) VALUES (?, ?, 'Met')");
    Insert file(db, "INSERT INTO files (ownerid, Name, acctno) VALUES (?, 'Account', ?)");
    Insert accountUdf(db, "INSERT INTO acctudf (id, udf1) VALUES (?, 'Joint')");
    Insert projectUdf(db, "INSERT INTO projudf (id, udf1) VALUES (?, 'x')");
    Insert relatedDocument(db, "INSERT INTO RelDocs (accid, docpath) VALUES (?, '/d/a.pdf')");
    Insert relatedPerson(db,
                         "INSERT INTO RelPple (accid, clientid, relation) VALUES (?, ?, 'Spouse')");
    Insert balance(db, "INSERT INTO balance (accid, asof, amount) VALUES (?, ?, 100.25)");
    Insert transaction(db, "INSERT INTO trans (acc_id, transdate, amount) VALUES (?, ?, 10.5)");
    Insert billSetup(db, "INSERT INTO billsetup (accid, rate) VALUES (?, 150)");
    Insert funds(db, "INSERT INTO funds (accid, amount) VALUES (?, 500)");
    Insert charge(db,
                  "INSERT INTO charges (accid, userid, chargedate, amount) VALUES (?, ?, ?, 75)");
    Insert invoice(db,
                   "INSERT INTO invoice (accid, userid, invdate, amount) VALUES (?, ?, ?, 300)");
    Insert disburse(db, "INSERT INTO disburse (invoiceid, amount) VALUES (?, 20)");

    const std::int64_t before = Insert::rows;
    constexpr int kPersonalUnit = 19;  // rows of one round of the employee's own data
    constexpr int kClientUnit = 54;    // rows of one client with its two accounts
    const std::int64_t personalUnits = std::max<std::int64_t>(1, rows / 10 / kPersonalUnit);
    const std::int64_t clients =
        std::max<std::int64_t>(1, (rows - personalUnits * kPersonalUnit) / kClientUnit);

    for (std::int64_t u = 0; u < personalUnits; ++u) {
        const std::string n = std::to_string(u % 1000000);
        udfs("udf" + std::to_string(u % 10 + 1), owner);
        reminder(owner, kEdited + double(u % 365), kEdited + double(u % 365) + 0.04);
        billcode(owner, "B" + n);
        options(owner, "S" + n);
        const std::int64_t automationId = automation(owner);
        autostep(automationId, 1);
        autostep(automationId, 2);
        budget(owner, 1);
        busdev(owner);
        const std::int64_t reportId = report(owner);
        reportControl(reportId, "Title");
        reportControl(reportId, "SortBy");
        modeling(owner);
        reflib(owner);
        const std::int64_t listKey = std::int64_t(owner) * 10000000 + u;
        const std::int64_t listId = list(listKey, owner);
        listField(listKey);
        listMember(listKey, u);
        listMember(listKey, u + 1);
        listUdf(listId);
    }
    for (std::int64_t c = 0; c < clients; ++c) {
        const std::int64_t clientId =
            client(owner, "Client " + std::to_string(c), kAdded + double(c % 900));
        clientUdf(clientId);
        clientUdf2(clientId);
        for (int h = 0; h < 3; ++h) {
            history(clientId, kEdited - h);
        }
        for (int a = 0; a < 2; ++a) {
            const std::int64_t fileId =
                file(clientId, "A" + std::to_string(c) + "-" + std::to_string(a));
            accountUdf(fileId);
            projectUdf(fileId);
            relatedDocument(fileId);
            relatedPerson(fileId, clientId);
            balance(fileId, kEdited);
            balance(fileId, kEdited - 30);
            for (int t = 0; t < 5; ++t) {
                transaction(fileId, kEdited - t);
            }
            billSetup(fileId);
            funds(fileId);
            budget(fileId, 0);
            for (int k = 0; k < 3; ++k) {
                charge(fileId, owner, kEdited - k);
            }
            for (int i = 0; i < 2; ++i) {
                const std::int64_t invoiceId = invoice(fileId, owner, kEdited - i);
                disburse(invoiceId);
                disburse(invoiceId);
            }
        }
    }
    return Insert::rows - before;
}

QString cachedPath(const QString& kind, int size) {
    return QDir(dataFolder())
        .filePath(
            QStringLiteral("%1-%2-%3.mdb").arg(kind, QString::fromLatin1(kGeneration)).arg(size));
}

// Makes the file through `fill` under a temporary name and renames it when complete, so an
// interrupted run never leaves a half-made database to be measured later.
template <class Fill>
QString generated(const QString& path, Fill fill) {
    if (QFileInfo::exists(path)) {
        return path;
    }
    QDir().mkpath(dataFolder());
    const QString part = path + ".part";
    QFile::remove(part);
    QFile::remove(part + "-journal");
    std::fprintf(stderr, "generating %s ...\n", qPrintable(QFileInfo(path).fileName()));
    installer::createDatabase(part);
    {
        Connection db(part);
        db.exec("BEGIN");
        fill(db);
        db.exec("COMMIT");
    }
    if (!QFile::rename(part, path)) {
        throw std::runtime_error("cannot rename " + part.toStdString());
    }
    return path;
}

}  // namespace

QString dataFolder() {
    const QByteArray chosen = qgetenv("ORVANE_BENCH_DATA");
    return chosen.isEmpty() ? QStringLiteral(ORVANE_BENCH_DATA) : QString::fromLocal8Bit(chosen);
}

int workgroupCount(int employees) {
    return employees / 10;
}

std::int32_t sampleWorkgroup(int employees) {
    return employees + 1 + workgroupCount(employees) / 2;
}

QString directoryDatabase(int employees) {
    return generated(cachedPath(QStringLiteral("directory"), employees),
                     [employees](Connection& db) { fillDirectory(db, employees); });
}

QString deletionDatabase(int ownedRows) {
    const QString path = cachedPath(QStringLiteral("deletion"), ownedRows);
    return generated(path, [ownedRows, path](Connection& db) {
        fillDirectory(db, 1000);
        const std::int64_t owned = fillOwned(db, kDeletedEmployee, ownedRows);
        // Others own rows in the same tables, so the deletion has to find the employee's.
        for (std::int32_t other = kReceivingEmployee; other < kReceivingEmployee + 50; ++other) {
            fillOwned(db, other, ownedRows / 10 / 50);
        }
        QFile count(path + ".count");
        if (!count.open(QIODevice::WriteOnly) ||
            count.write(QByteArray::number(qint64(owned))) < 0) {
            throw std::runtime_error("cannot write " + count.fileName().toStdString());
        }
    });
}

std::int64_t ownedRowsOf(int ownedRows) {
    QFile count(cachedPath(QStringLiteral("deletion"), ownedRows) + ".count");
    if (!count.open(QIODevice::ReadOnly)) {
        return 0;
    }
    return count.readAll().trimmed().toLongLong();
}

}  // namespace bench
