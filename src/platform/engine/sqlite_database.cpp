#include "platform/engine/sqlite_database.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/errors.h"
#include "platform/engine/sqlite_recordset.h"
#include "platform/engine/sqlite_support.h"
#include "platform/formats.h"

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

void setResult(sqlite3_context* context, const rt::Variant& value) {
    switch (value.type()) {
        case rt::VarType::Empty:
        case rt::VarType::Null:
            sqlite3_result_null(context);
            return;
        case rt::VarType::Integer:
        case rt::VarType::Long:
        case rt::VarType::Boolean:
            sqlite3_result_int64(context, value.integerValue());
            return;
        case rt::VarType::Currency:
            sqlite3_result_double(context, double(value.integerValue()) / 10000.0);
            return;
        case rt::VarType::Single:
        case rt::VarType::Double:
        case rt::VarType::Date:
            sqlite3_result_double(context, value.realValue());
            return;
        case rt::VarType::Bytes:
            sqlite3_result_blob(context, value.bytes().constData(), int(value.bytes().size()),
                                SQLITE_TRANSIENT);
            return;
        default: {
            const QByteArray text = value.text().toUtf8();
            sqlite3_result_text(context, text.constData(), int(text.size()), SQLITE_TRANSIENT);
        }
    }
}

using Arguments = std::vector<rt::Variant>;

// One of the dialect's functions as the runtime has it.
struct Function {
    const char* name;
    int arguments;
    bool takesNull;  // false: a Null argument gives Null without a call
    rt::Variant (*body)(const Arguments&);
};

void setFailure(sqlite3_context* context, const rt::Error& failure) {
    const QByteArray text = failure.description().toUtf8();
    sqlite3_result_error(context, text.constData(), int(text.size()));
}

void callFunction(sqlite3_context* context, int count, sqlite3_value** values) {
    const auto* function = static_cast<const Function*>(sqlite3_user_data(context));
    Arguments arguments;
    for (int i = 0; i < count; ++i) {
        arguments.push_back(argument(values[i]));
        if (arguments.back().isNull() && !function->takesNull) {
            sqlite3_result_null(context);
            return;
        }
    }
    try {
        setResult(context, function->body(arguments));
    } catch (const rt::Error& failure) {
        setFailure(context, failure);
    }
}

// A count of characters: 5 "Invalid procedure call or argument" below `least`.
int characterCount(const rt::Variant& value, int least) {
    const qint32 count = rt::CLng(value);
    if (count < least) {
        throw rt::Error::standard(rt::InvalidProcedureCall);
    }
    return count;
}

// The runtime's trimming takes off blanks only, not tabs or line breaks.
QString withoutBlanks(const rt::Variant& value, bool leading, bool trailing) {
    const QString text = rt::CStr(value);
    qsizetype first = 0;
    qsizetype end = text.size();
    while (leading && first < end && text[first] == ' ') {
        ++first;
    }
    while (trailing && end > first && text[end - 1] == ' ') {
        --end;
    }
    return text.mid(first, end - first);
}

rt::Variant modulo(const Arguments& a) {
    const qint32 dividend = rt::CLng(a[0]);
    const qint32 divisor = rt::CLng(a[1]);
    if (divisor == 0) {
        throw rt::Error::standard(rt::DivisionByZero);
    }
    return divisor == -1 ? 0 : dividend % divisor;  // the sign of the dividend, as C++ gives it
}

rt::Variant mid(const Arguments& a) {
    const int start = characterCount(a[1], 1);
    const int length = a.size() > 2 ? characterCount(a[2], 0) : -1;
    return rt::CStr(a[0]).mid(start - 1, length);
}

const Function kFunctions[] = {
    {"CDate", 1, false, [](const Arguments& a) { return rt::Variant::date(rt::CDate(a[0])); }},
    {"DateAdd", 3, false,
     [](const Arguments& a) {
         return rt::Variant::date(rt::DateAdd(rt::CStr(a[0]), rt::CDbl(a[1]), rt::CDate(a[2])));
     }},
    {"DateDiff", 3, false,
     [](const Arguments& a) {
         return rt::Variant(int(rt::DateDiff(rt::CStr(a[0]), rt::CDate(a[1]), rt::CDate(a[2]))));
     }},
    {"Now", 0, false, [](const Arguments&) { return rt::Variant::date(rt::Now()); }},
    {"Date", 0, false, [](const Arguments&) { return rt::Variant::date(rt::Today()); }},
    {"Year", 1, false,
     [](const Arguments& a) { return rt::Variant(qint16(rt::splitDate(rt::CDate(a[0])).year)); }},
    {"Month", 1, false,
     [](const Arguments& a) { return rt::Variant(qint16(rt::splitDate(rt::CDate(a[0])).month)); }},
    {"Day", 1, false,
     [](const Arguments& a) { return rt::Variant(qint16(rt::splitDate(rt::CDate(a[0])).day)); }},
    {"Chr", 1, false,
     [](const Arguments& a) { return rt::Variant(QString(QChar(rt::CInt(a[0])))); }},
    {"UCase", 1, false, [](const Arguments& a) { return rt::Variant(rt::CStr(a[0]).toUpper()); }},
    {"LCase", 1, false, [](const Arguments& a) { return rt::Variant(rt::CStr(a[0]).toLower()); }},
    {"Len", 1, false, [](const Arguments& a) { return rt::Variant(int(rt::CStr(a[0]).size())); }},
    {"Left", 2, false,
     [](const Arguments& a) { return rt::Variant(rt::CStr(a[0]).left(characterCount(a[1], 0))); }},
    {"Right", 2, false,
     [](const Arguments& a) { return rt::Variant(rt::CStr(a[0]).right(characterCount(a[1], 0))); }},
    {"Mid", 2, false, mid},
    {"Mid", 3, false, mid},
    {"Trim", 1, false,
     [](const Arguments& a) { return rt::Variant(withoutBlanks(a[0], true, true)); }},
    {"LTrim", 1, false,
     [](const Arguments& a) { return rt::Variant(withoutBlanks(a[0], true, false)); }},
    {"RTrim", 1, false,
     [](const Arguments& a) { return rt::Variant(withoutBlanks(a[0], false, true)); }},
    {"Nz", 2, true, [](const Arguments& a) { return a[0].isNull() ? a[1] : a[0]; }},
    {"IIf", 3, true,
     [](const Arguments& a) { return !a[0].isNull() && rt::CBool(a[0]) ? a[1] : a[2]; }},
    {"Format", 1, false, [](const Arguments& a) { return rt::Variant(rt::Format(a[0])); }},
    {"Format", 2, false,
     [](const Arguments& a) { return rt::Variant(rt::Format(a[0], rt::CStr(a[1]))); }},
    {"Mod", 2, false, modulo},
};

// The embedded engine's LIKE operator calls like(pattern, text); the dialect's wildcards replace
// its own.
void likeFunction(sqlite3_context* context, int, sqlite3_value** values) {
    const rt::Variant pattern = argument(values[0]);
    const rt::Variant text = argument(values[1]);
    if (pattern.isNull() || text.isNull()) {
        sqlite3_result_null(context);
        return;
    }
    try {
        sqlite3_result_int(context,
                           dialect::matchesPattern(rt::CStr(text), rt::CStr(pattern)) ? 1 : 0);
    } catch (const rt::Error& failure) {
        setFailure(context, failure);
    }
}

void registerFunctions(sqlite3* db) {
    for (const Function& function : kFunctions) {
        sqlite3_create_function(db, dialect::functionName(function.name).toUtf8().constData(),
                                function.arguments, SQLITE_UTF8, const_cast<Function*>(&function),
                                callFunction, nullptr, nullptr);
    }
    sqlite3_create_function(db, "like", 2, SQLITE_UTF8, nullptr, likeFunction, nullptr, nullptr);
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
                                     SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
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

QStringList SqliteDatabase::tableNames() {
    Prepared tables(connection_->handle(),
                    "SELECT name FROM sqlite_master WHERE type = 'table' AND substr(name, 1, 7) "
                    "<> 'sqlite_' AND name <> '" +
                        kPropertiesTable + "' ORDER BY rowid");
    QStringList names;
    while (tables.step()) {
        names << QString::fromUtf8(
            reinterpret_cast<const char*>(sqlite3_column_text(tables.get(), 0)));
    }
    return names;
}

std::vector<ColumnDeclaration> SqliteDatabase::columnsOf(const QString& table) {
    sqlite3* db = connection_->handle();
    if (!tableExists(db, QStringLiteral("main"), table)) {
        throw error(InputTableNotFound, table);
    }
    Prepared info(db, "PRAGMA table_info(" + quoteName(table) + ")");
    std::vector<ColumnDeclaration> columns;
    while (info.step()) {
        ColumnDeclaration column;
        column.name =
            QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 1)));
        column.type =
            QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 2)));
        int autoIncrement = 0;
        sqlite3_table_column_metadata(db, nullptr, table.toUtf8().constData(),
                                      column.name.toUtf8().constData(), nullptr, nullptr, nullptr,
                                      nullptr, &autoIncrement);
        column.counter = autoIncrement != 0;
        columns.push_back(column);
    }
    return columns;
}

void SqliteDatabase::insertRows(const QString& table, const QStringList& columns,
                                const std::vector<std::vector<rt::Variant>>& rows) {
    QStringList names;
    QStringList places;
    for (qsizetype c = 0; c < columns.size(); ++c) {
        names << quoteName(columns[c]);
        places << QStringLiteral("?%1").arg(c + 1);
    }
    connection_->writeMade();
    OwnTransaction transaction(*connection_);
    Prepared insert(*connection_, "INSERT INTO " + quoteName(table) + " (" + names.join(", ") +
                                      ") VALUES (" + places.join(", ") + ")");
    for (const std::vector<rt::Variant>& row : rows) {
        insert.reset();
        for (size_t c = 0; c < row.size(); ++c) {
            insert.bind(int(c) + 1, row[c]);
        }
        insert.step();
    }
    transaction.commit();
}

qint64 SqliteDatabase::counterPosition(const QString& table) {
    sqlite3* db = connection_->handle();
    if (!tableExists(db, QStringLiteral("main"), QStringLiteral("sqlite_sequence"))) {
        return 0;
    }
    Prepared read(db, QStringLiteral("SELECT seq FROM sqlite_sequence WHERE name = ?1"));
    read.bind(1, rt::Variant(table));
    return read.step() ? sqlite3_column_int64(read.get(), 0) : 0;
}

void SqliteDatabase::setCounterPosition(const QString& table, qint64 position) {
    connection_->writeMade();
    OwnTransaction transaction(*connection_);
    Prepared remove(*connection_, QStringLiteral("DELETE FROM sqlite_sequence WHERE name = ?1"));
    remove.bind(1, rt::Variant(table));
    remove.step();
    Prepared add(*connection_,
                 QStringLiteral("INSERT INTO sqlite_sequence (name, seq) VALUES (?1, ?2)"));
    add.bind(1, rt::Variant(table));
    add.bind(2, rt::Variant(position));
    add.step();
    transaction.commit();
}

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
    connection_->writeMade();
    switch (statement.kind) {
        case dialect::Statement::Select:
        case dialect::Statement::TableName:
            throw error(CannotExecuteSelect);
        case dialect::Statement::SelectInto:
            selectInto(statement);
            return;
        case dialect::Statement::Action: {
            // Row changes come again and again with the same text; definitions mostly once.
            const dialect::Token& verb = statement.tokens[dialect::topLevel(statement.tokens)[0]];
            if (verb.isWord("insert") || verb.isWord("update") || verb.isWord("delete")) {
                run(*connection_, dialect::render(statement.tokens), sql);
            } else {
                run(db, dialect::render(statement.tokens), sql);
            }
            return;
        }
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
        OwnTransaction transaction(*connection_);
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
    connection_->close();
}

void SqliteDatabase::deleteTable(const QString& name) {
    sqlite3* db = connection_->handle();
    if (!tableExists(db, QStringLiteral("main"), name)) {
        throw error(ItemNotFound);
    }
    connection_->writeMade();
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
    connection_->writeMade();
    run(db, "CREATE TABLE IF NOT EXISTS " + kPropertiesTable +
                " (name TEXT PRIMARY KEY COLLATE NOCASE, value)");
    Prepared write(db,
                   "INSERT OR REPLACE INTO " + kPropertiesTable + " (name, value) VALUES (?1, ?2)");
    write.bind(1, rt::Variant(name));
    write.bind(2, value);
    write.step();
}

QStringList SqliteDatabase::propertyNames() const {
    sqlite3* db = connection_->handle();
    QStringList names;
    if (tableExists(db, QStringLiteral("main"), kPropertiesTable)) {
        Prepared read(db, "SELECT name FROM " + kPropertiesTable);
        while (read.step()) {
            names << QString::fromUtf8(
                reinterpret_cast<const char*>(sqlite3_column_text(read.get(), 0)));
        }
    }
    return names;
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

bool SqliteDatabase::beginRead() {
    sqlite3* db = connection_->handle();
    if (openLevels() > 0 || !sqlite3_get_autocommit(db)) {
        return false;
    }
    // A deferred transaction takes the shared lock at its first read and keeps it to the end;
    // the read of the schema takes it at once, so the moment is the scope's start.
    run(db, QStringLiteral("BEGIN"));
    connection_->transactionBegun();
    try {
        run(db, QStringLiteral("SELECT count(*) FROM sqlite_master"));
    } catch (const rt::Error&) {
        abandonTransaction(db);
        throw;
    }
    return true;
}

void SqliteDatabase::endRead() {
    // Nothing was written, so there is nothing to lose: a commit that fails is rolled back. A
    // database closed meanwhile ended the transaction with it.
    sqlite3* db = connection_->db;
    if (db && sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
        abandonTransaction(db);
    }
}

void SqliteDatabase::beginTrans() {
    sqlite3* db = connection_->handle();
    openLevels();
    connection_->beginLevel([db](const QString& sql) { run(db, sql); },
                            QStringLiteral("BEGIN IMMEDIATE"));
}

void SqliteDatabase::commitTrans() {
    endTransaction(true);
}

void SqliteDatabase::rollback() {
    endTransaction(false);
}

void SqliteDatabase::endTransaction(bool keep) {
    sqlite3* db = connection_->handle();
    openLevels();
    connection_->endLevel(
        keep, [db](const QString& sql) { run(db, sql); }, [db] { abandonTransaction(db); });
}

}  // namespace engine
