#include "platform/engine/sqlite_support.h"

#include "platform/engine/field_types.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/engine.h"
#include "platform/engine/errors.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace engine {

namespace {
// Enough for the texts a screen repeats; texts with literal values in them mostly pass once.
constexpr size_t kIdleStatements = 64;
}  // namespace

Connection::~Connection() {
    close();
}

void Connection::close() {
    for (const Idle& idle : idle_) {
        sqlite3_finalize(idle.statement);
    }
    idle_.clear();
    if (db) {
        sqlite3_close_v2(db);
        db = nullptr;
    }
}

sqlite3_stmt* Connection::takeStatement(const QByteArray& sql) {
    for (auto it = idle_.rbegin(); it != idle_.rend(); ++it) {
        if (it->sql == sql) {
            sqlite3_stmt* statement = it->statement;
            idle_.erase(std::next(it).base());
            return statement;
        }
    }
    return nullptr;
}

void Connection::giveBackStatement(QByteArray sql, sqlite3_stmt* statement) {
    if (!statement) {
        return;
    }
    if (!db) {
        // Closed while the statement was out: the handle lingers until it is finalized.
        sqlite3_finalize(statement);
        return;
    }
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    idle_.push_back({std::move(sql), statement});
    if (idle_.size() > kIdleStatements) {
        sqlite3_finalize(idle_.front().statement);
        idle_.erase(idle_.begin());
    }
}

bool Connection::readsStandStill() const {
    return db && !sqlite3_get_autocommit(db);
}

sqlite3* Connection::handle() const {
    if (!db) {
        throw error(ObjectInvalid);
    }
    return db;
}

rt::Error sqliteFailure(sqlite3* db, int code, const QString& sql, FailureContext context) {
    const QString message = QString::fromUtf8(sqlite3_errmsg(db));
    const int extended = sqlite3_extended_errcode(db);
    auto after = [&](const char* prefix) {
        return message.mid(message.indexOf(QLatin1String(prefix)) + int(strlen(prefix))).trimmed();
    };
    switch (code & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return error(Locked);
        case SQLITE_READONLY:
            return error(ReadOnly);
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
            return error(UnrecognizedFormat, sqlite3_db_filename(db, "main"));
        case SQLITE_TOOBIG:
            return error(DataTooLong);
        case SQLITE_CONSTRAINT:
            if (extended == SQLITE_CONSTRAINT_NOTNULL) {
                return error(NullNotAllowed, after(": ").section('.', -1));
            }
            if (extended == SQLITE_CONSTRAINT_CHECK) {
                return error(DataTooLong);
            }
            return error(DuplicateValue);
        default:
            break;
    }
    if (message.startsWith(QLatin1String("no such table:"))) {
        return error(InputTableNotFound, after("no such table:").section('.', -1));
    }
    if (message.startsWith(QLatin1String("no such column:"))) {
        if (context == FailureContext::Criteria) {
            return error(UnknownName, after("no such column:"));
        }
        return error(TooFewParameters, QStringLiteral("1"));
    }
    if (message.contains(QLatin1String("already exists"))) {
        static const QRegularExpression name(
            QStringLiteral("table \"?([^\" ]+)\"? already exists"));
        return error(TableExists, name.match(message).captured(1));
    }
    if (message.contains(QLatin1String("syntax error")) ||
        message.contains(QLatin1String("incomplete input")) ||
        message.contains(QLatin1String("unrecognized token"))) {
        return error(SyntaxError, QStringLiteral("Syntax error (missing operator)"), sql);
    }
    if (context == FailureContext::Criteria) {
        return error(CriteriaMismatch);
    }
    return rt::Error(3000 + (code & 0xFF), message, QStringLiteral("Engine"));
}

Prepared::Prepared(sqlite3* db, const QString& sql, const QString& original, FailureContext context)
    : db_(db), original_(original.isEmpty() ? sql : original), context_(context) {
    key_ = sql.toUtf8();
    prepare(0);
    key_.clear();
}

Prepared::Prepared(Connection& connection, const QString& sql, const QString& original,
                   FailureContext context)
    : db_(connection.handle()),
      original_(original.isEmpty() ? sql : original),
      context_(context),
      key_(sql.toUtf8()) {
    statement_ = connection.takeStatement(key_);
    if (!statement_) {
        prepare(SQLITE_PREPARE_PERSISTENT);
    }
    cache_ = &connection;
}

void Prepared::prepare(unsigned flags) {
    const char* tail = nullptr;
    const int code =
        sqlite3_prepare_v3(db_, key_.constData(), int(key_.size()), flags, &statement_, &tail);
    if (code != SQLITE_OK) {
        throw sqliteFailure(db_, code, original_, context_);
    }
    if (tail && QByteArray(tail).trimmed().size() > 0) {
        sqlite3_finalize(statement_);
        statement_ = nullptr;
        throw error(CharactersAfterEnd);
    }
    if (!statement_) {
        throw error(SyntaxError, QStringLiteral("Syntax error"), original_);
    }
}

Prepared::~Prepared() {
    if (cache_) {
        cache_->giveBackStatement(std::move(key_), statement_);
    } else {
        sqlite3_finalize(statement_);
    }
}

void Prepared::bind(int index, const rt::Variant& value) {
    using rt::VarType;
    switch (value.type()) {
        case VarType::Empty:
        case VarType::Null:
            sqlite3_bind_null(statement_, index);
            break;
        case VarType::Integer:
        case VarType::Long:
        case VarType::Boolean:
            sqlite3_bind_int64(statement_, index, value.integerValue());
            break;
        case VarType::Currency:
            sqlite3_bind_double(statement_, index, double(value.integerValue()) / 10000.0);
            break;
        case VarType::Single:
        case VarType::Double:
        case VarType::Date:
            sqlite3_bind_double(statement_, index, value.realValue());
            break;
        case VarType::String: {
            const QByteArray text = value.text().toUtf8();
            sqlite3_bind_text(statement_, index, text.constData(), int(text.size()),
                              SQLITE_TRANSIENT);
            break;
        }
        case VarType::Bytes:
            sqlite3_bind_blob(statement_, index, value.bytes().constData(),
                              int(value.bytes().size()), SQLITE_TRANSIENT);
            break;
    }
}

bool Prepared::step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code == SQLITE_DONE) {
        return false;
    }
    const rt::Error failure = sqliteFailure(db_, code, original_, context_);
    sqlite3_reset(statement_);
    throw failure;
}

void Prepared::reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

int Prepared::columnCount() const {
    return sqlite3_column_count(statement_);
}

void run(sqlite3* db, const QString& sql, const QString& original) {
    Prepared statement(db, sql, original);
    while (statement.step()) {
    }
}

void run(Connection& connection, const QString& sql, const QString& original) {
    Prepared statement(connection, sql, original);
    while (statement.step()) {
    }
}

void abandonTransaction(sqlite3* db) {
    if (!sqlite3_get_autocommit(db)) {
        sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

OwnTransaction::OwnTransaction(Connection& connection)
    : db_(connection.handle()), open_(sqlite3_get_autocommit(db_) != 0) {
    if (open_) {
        run(db_, QStringLiteral("BEGIN IMMEDIATE"));
        connection.transactionBegun();
    }
}

OwnTransaction::~OwnTransaction() {
    if (open_) {
        abandonTransaction(db_);
    }
}

void OwnTransaction::commit() {
    if (open_) {
        run(db_, QStringLiteral("COMMIT"));
        open_ = false;
    }
}

rt::Variant readColumn(sqlite3_stmt* statement, int column, int type) {
    const int stored = sqlite3_column_type(statement, column);
    if (stored == SQLITE_NULL) {
        return rt::Variant::null();
    }
    auto text = [&] {
        return QString::fromUtf8(
            reinterpret_cast<const char*>(sqlite3_column_text(statement, column)),
            sqlite3_column_bytes(statement, column));
    };
    auto blob = [&] {
        return QByteArray(static_cast<const char*>(sqlite3_column_blob(statement, column)),
                          sqlite3_column_bytes(statement, column));
    };
    // Read only in the form asked for: a text read as a number is parsed each time.
    auto integer = [&] { return sqlite3_column_int64(statement, column); };
    auto real = [&] { return sqlite3_column_double(statement, column); };
    switch (type) {
        case dbBoolean:
            return rt::Variant(integer() != 0);
        case dbByte:
        case dbInteger:
            return rt::Variant(static_cast<qint16>(integer()));
        case dbLong:
            return rt::Variant(static_cast<int>(integer()));
        case dbBigInt:
            return rt::Variant(integer());
        case dbCurrency:
            return rt::Variant::currency(std::llround(real() * 10000.0));
        case dbSingle:
            return rt::Variant(static_cast<float>(real()));
        case dbDouble:
        case dbDecimal:
            return rt::Variant(real());
        case dbDate:
            if (stored == SQLITE_TEXT) {
                if (auto serial = rt::parseDateText(text())) {
                    return rt::Variant::date(*serial);
                }
                return rt::Variant(text());
            }
            return rt::Variant::date(real());
        case dbText:
        case dbMemo:
        case dbGUID:
            return rt::Variant(text());
        case dbBinary:
        case dbLongBinary:
            return rt::Variant(blob());
        default:
            break;
    }
    switch (stored) {
        case SQLITE_INTEGER:
            return rt::Variant(integer());
        case SQLITE_FLOAT:
            return rt::Variant(real());
        case SQLITE_BLOB:
            return rt::Variant(blob());
        default:
            return rt::Variant(text());
    }
}

QString quoteName(const QString& name) {
    return "\"" + QString(name).replace(QLatin1String("\""), QLatin1String("\"\"")) + "\"";
}

}  // namespace engine
