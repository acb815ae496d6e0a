#include "platform/engine/sqlite_database.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/errors.h"
#include "platform/engine/sqlite_recordset.h"
#include "platform/engine/sqlite_support.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace engine {

namespace {

const QString kIntoSchema = QStringLiteral("jet_into");
const QString kPropertiesTable = QStringLiteral("engine_properties");

rt::Variant argument(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_NULL:
            return rt::Variant::null();
        case SQLITE_INTEGER:
            return rt::Variant(qint64(sqlite3_value_int64(value)));
        case SQLITE_FLOAT:
            return rt::Variant(sqlite3_value_double(value));
        default:
            return rt::Variant(
                QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_value_text(value))));
    }
}

template <typename Body>
void guardedFunction(sqlite3_context* context, Body&& body) {
    try {
        body();
    } catch (const rt::Error& failure) {
        const QByteArray text = failure.description().toUtf8();
        sqlite3_result_error(context, text.constData(), int(text.size()));
    }
}

// CDATE(text or number): a date read under the machine's locale, as a day serial.
void cdateFunction(sqlite3_context* context, int, sqlite3_value** values) {
    guardedFunction(context, [&] {
        const rt::Variant value = argument(values[0]);
        if (value.isNull()) {
            sqlite3_result_null(context);
            return;
        }
        sqlite3_result_double(context, rt::CDate(value));
    });
}

// DATEADD(interval, number, date).
void dateAddFunction(sqlite3_context* context, int, sqlite3_value** values) {
    guardedFunction(context, [&] {
        const rt::Variant date = argument(values[2]);
        if (date.isNull()) {
            sqlite3_result_null(context);
            return;
        }
        sqlite3_result_double(context, rt::DateAdd(rt::CStr(argument(values[0])),
                                                   rt::CDbl(argument(values[1])), rt::CDate(date)));
    });
}

// DATEDIFF(interval, date1, date2).
void dateDiffFunction(sqlite3_context* context, int, sqlite3_value** values) {
    guardedFunction(context, [&] {
        const rt::Variant first = argument(values[1]);
        const rt::Variant second = argument(values[2]);
        if (first.isNull() || second.isNull()) {
            sqlite3_result_null(context);
            return;
        }
        sqlite3_result_int64(context, rt::DateDiff(rt::CStr(argument(values[0])), rt::CDate(first),
                                                   rt::CDate(second)));
    });
}

// CHR(code): the character of that code.
void chrFunction(sqlite3_context* context, int, sqlite3_value** values) {
    guardedFunction(context, [&] {
        const QByteArray text = QString(QChar(rt::CInt(argument(values[0])))).toUtf8();
        sqlite3_result_text(context, text.constData(), int(text.size()), SQLITE_TRANSIENT);
    });
}

void nowFunction(sqlite3_context* context, int, sqlite3_value**) {
    sqlite3_result_double(context, rt::Now());
}

void registerFunctions(sqlite3* db) {
    const int flags = SQLITE_UTF8;
    sqlite3_create_function(db, "CDATE", 1, flags, nullptr, cdateFunction, nullptr, nullptr);
    sqlite3_create_function(db, "DATEADD", 3, flags, nullptr, dateAddFunction, nullptr, nullptr);
    sqlite3_create_function(db, "DATEDIFF", 3, flags, nullptr, dateDiffFunction, nullptr, nullptr);
    sqlite3_create_function(db, "CHR", 1, flags, nullptr, chrFunction, nullptr, nullptr);
    sqlite3_create_function(db, "NOW", 0, flags, nullptr, nowFunction, nullptr, nullptr);
}

bool tableExists(sqlite3* db, const QString& schema, const QString& table) {
    Prepared find(db, "SELECT 1 FROM " + schema +
                          ".sqlite_master WHERE type = 'table' AND name = ?1 "
                          "COLLATE NOCASE");
    find.bind(1, rt::Variant(table));
    return find.step();
}

}  // namespace

std::unique_ptr<Database> SqliteDatabase::open(const QString& path) {
    const QFileInfo file(path);
    if (path.trimmed().isEmpty() || file.isDir()) {
        throw error(InvalidPath, path);
    }
    if (!file.exists()) {
        throw error(FileNotFound, path);
    }
    if (file.size() == 0) {
        throw error(UnrecognizedFormat, path);
    }
    auto connection = std::make_shared<Connection>();
    const int code = sqlite3_open_v2(path.toUtf8().constData(), &connection->db,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_FULLMUTEX, nullptr);
    if (code != SQLITE_OK) {
        throw error(CannotOpenFile, path);
    }
    sqlite3_extended_result_codes(connection->db, 1);
    sqlite3_busy_timeout(connection->db, lockWait());
    const int check = sqlite3_exec(connection->db, "SELECT count(*) FROM sqlite_master", nullptr,
                                   nullptr, nullptr);
    if (check != SQLITE_OK) {
        if ((check & 0xFF) == SQLITE_NOTADB || (check & 0xFF) == SQLITE_CORRUPT) {
            throw error(UnrecognizedFormat, path);
        }
        throw sqliteFailure(connection->db, check, path);
    }
    registerFunctions(connection->db);
    return std::unique_ptr<Database>(new SqliteDatabase(std::move(connection), path));
}

std::unique_ptr<Database> SqliteDatabase::create(const QString& path) {
    const QFileInfo file(path);
    if (file.exists()) {
        throw error(DatabaseExists);
    }
    if (path.trimmed().isEmpty() || !file.absoluteDir().exists()) {
        throw error(InvalidPath, path);
    }
    sqlite3* db = nullptr;
    const int code = sqlite3_open_v2(path.toUtf8().constData(), &db,
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    // A file only comes into being with its first page; write one so that it opens as a database.
    const int written = code == SQLITE_OK
                            ? sqlite3_exec(db, "PRAGMA user_version = 1", nullptr, nullptr, nullptr)
                            : code;
    sqlite3_close_v2(db);
    if (written != SQLITE_OK) {
        QFile::remove(path);
        throw error(CannotOpenFile, path);
    }
    return open(path);
}

SqliteDatabase::SqliteDatabase(std::shared_ptr<Connection> connection, QString path)
    : connection_(std::move(connection)), path_(std::move(path)) {}

SqliteDatabase::~SqliteDatabase() = default;

std::unique_ptr<Recordset> SqliteDatabase::openRecordset(const QString& source) {
    connection_->handle();
    const dialect::Statement statement = dialect::analyse(source);
    if (statement.kind == dialect::Statement::SelectInto ||
        statement.kind == dialect::Statement::Action) {
        throw error(InputTableNotFound, source);
    }
    return std::make_unique<SqliteRecordset>(connection_, statement, source);
}

void SqliteDatabase::execute(const QString& sql) {
    sqlite3* db = connection_->handle();
    const dialect::Statement statement = dialect::analyse(sql);
    switch (statement.kind) {
        case dialect::Statement::Select:
        case dialect::Statement::TableName:
            throw error(CannotExecuteSelect);
        case dialect::Statement::SelectInto:
            selectInto(statement);
            return;
        case dialect::Statement::Action:
            run(db, dialect::render(statement.tokens), sql);
            return;
    }
}

void SqliteDatabase::selectInto(const dialect::Statement& statement) {
    sqlite3* db = connection_->handle();
    QString schema = QStringLiteral("main");
    const bool external = !statement.intoDatabase.isEmpty();
    if (external) {
        if (!QFileInfo::exists(statement.intoDatabase)) {
            throw error(FileNotFound, statement.intoDatabase);
        }
        Prepared attach(db, "ATTACH DATABASE ?1 AS " + kIntoSchema);
        attach.bind(1, rt::Variant(statement.intoDatabase));
        attach.step();
        schema = kIntoSchema;
    }
    auto finish = [&] {
        if (external) {
            sqlite3_exec(db, ("DETACH DATABASE " + kIntoSchema).toUtf8().constData(), nullptr,
                         nullptr, nullptr);
        }
    };
    try {
        if (tableExists(db, schema, statement.intoTable)) {
            throw error(TableExists, statement.intoTable);
        }
        OwnTransaction transaction(db);
        const QString target = schema + "." + quoteName(statement.intoTable);
        const QString source = dialect::render(statement.intoSource);
        if (!statement.intoSourceTable.isEmpty()) {
            // A copy of a whole table keeps its column types, sizes and collations.
            Prepared definition(
                db, QStringLiteral(
                        "SELECT sql FROM main.sqlite_master WHERE type = 'table' AND name = ?1 "
                        "COLLATE NOCASE"));
            definition.bind(1, rt::Variant(statement.intoSourceTable));
            if (!definition.step()) {
                throw error(InputTableNotFound, statement.intoSourceTable);
            }
            const QString create = QString::fromUtf8(
                reinterpret_cast<const char*>(sqlite3_column_text(definition.get(), 0)));
            run(db, "CREATE TABLE " + target + " " + create.mid(create.indexOf('(')));
            run(db, "INSERT INTO " + target + " " + source, dialect::render(statement.tokens));
        } else {
            run(db, "CREATE TABLE " + target + " AS " + source, dialect::render(statement.tokens));
        }
        transaction.commit();
    } catch (...) {
        finish();
        throw;
    }
    finish();
}

void SqliteDatabase::close() {
    if (connection_->db) {
        sqlite3_close_v2(connection_->db);
        connection_->db = nullptr;
    }
}

void SqliteDatabase::deleteTable(const QString& name) {
    sqlite3* db = connection_->handle();
    if (!tableExists(db, QStringLiteral("main"), name)) {
        throw error(ItemNotFound);
    }
    run(db, "DROP TABLE " + quoteName(name));
}

rt::Variant SqliteDatabase::property(const QString& name) const {
    sqlite3* db = connection_->handle();
    if (tableExists(db, QStringLiteral("main"), kPropertiesTable)) {
        Prepared read(db,
                      "SELECT value FROM " + kPropertiesTable + " WHERE name = ?1 COLLATE NOCASE");
        read.bind(1, rt::Variant(name));
        if (read.step()) {
            return readColumn(read.get(), 0, 0);
        }
    }
    throw error(PropertyNotFound);
}

void SqliteDatabase::setProperty(const QString& name, const rt::Variant& value) {
    sqlite3* db = connection_->handle();
    run(db, "CREATE TABLE IF NOT EXISTS " + kPropertiesTable +
                " (name TEXT PRIMARY KEY COLLATE NOCASE, value)");
    Prepared write(db,
                   "INSERT OR REPLACE INTO " + kPropertiesTable + " (name, value) VALUES (?1, ?2)");
    write.bind(1, rt::Variant(name));
    write.bind(2, value);
    write.step();
}

int& SqliteDatabase::openLevels() {
    // SQLite ends a transaction by itself on some failures (a full disk, a conflict clause of
    // ROLLBACK, the undoing of a unit whose commit failed); the levels counted went with it.
    if (sqlite3_get_autocommit(connection_->handle()) && connection_->transactionDepth > 0) {
        connection_->levelUndone(1);
        connection_->transactionDepth = 0;
    }
    return connection_->transactionDepth;
}

void SqliteDatabase::beginTrans() {
    sqlite3* db = connection_->handle();
    int& depth = openLevels();
    run(db, depth == 0 ? QStringLiteral("BEGIN IMMEDIATE")
                       : QStringLiteral("SAVEPOINT level%1").arg(depth));
    ++depth;
}

void SqliteDatabase::commitTrans() {
    endTransaction(true);
}

void SqliteDatabase::rollback() {
    endTransaction(false);
}

void SqliteDatabase::endTransaction(bool keep) {
    sqlite3* db = connection_->handle();
    int& depth = openLevels();
    if (depth == 0) {
        throw error(NoTransaction);
    }
    try {
        if (depth == 1) {
            run(db, keep ? QStringLiteral("COMMIT") : QStringLiteral("ROLLBACK"));
        } else {
            const QString level = QStringLiteral("level%1").arg(depth - 1);
            if (!keep) {
                run(db, "ROLLBACK TO " + level);
            }
            run(db, "RELEASE " + level);
        }
    } catch (const rt::Error&) {
        // A unit whose commit failed is undone whole: left open, it would take in every later
        // statement only to lose them at close. A nested level that couldn't be ended stays open
        // for the caller to roll back.
        if (depth == 1) {
            abandonTransaction(db);
            connection_->levelUndone(1);
        }
        throw;
    }
    if (keep) {
        connection_->levelKept(depth);
    } else {
        connection_->levelUndone(depth);
    }
    --depth;
}

}  // namespace engine
