#include "platform/engine/pg_database.h"

#include "platform/engine/errors.h"
#include "platform/engine/field_types.h"
#include "platform/engine/pg_functions.h"
#include "platform/engine/pg_recordset.h"
#include "platform/engine/pg_support.h"

#include <QStringList>

#include <algorithm>

namespace engine::pg {

namespace {

const QString kPropertiesTable = QStringLiteral("engine_properties");

// The connection's settings from the URI, with the database replaced when `database` is given.
struct Settings {
    std::vector<QByteArray> keywords;
    std::vector<QByteArray> values;
    QString database;
};

Settings settingsOf(const QString& uri, const QString& database = QString()) {
    char* problem = nullptr;
    PQconninfoOption* options = PQconninfoParse(uri.toUtf8().constData(), &problem);
    if (!options) {
        PQfreemem(problem);
        throw error(InvalidPath, uri);
    }
    Settings settings;
    for (PQconninfoOption* option = options; option->keyword; ++option) {
        if (QByteArray(option->keyword) == "dbname") {
            settings.database = QString::fromUtf8(option->val ? option->val : "");
            if (!database.isEmpty()) {
                settings.keywords.emplace_back("dbname");
                settings.values.push_back(database.toUtf8());
            } else if (option->val) {
                settings.keywords.emplace_back("dbname");
                settings.values.emplace_back(option->val);
            }
        } else if (option->val) {
            settings.keywords.emplace_back(option->keyword);
            settings.values.emplace_back(option->val);
        }
    }
    PQconninfoFree(options);
    // A server that accepts the connection and then stalls would hang the console for good;
    // a URI or PGCONNECT_TIMEOUT may give a wait of its own.
    const bool timeoutGiven = std::find(settings.keywords.begin(), settings.keywords.end(),
                                        "connect_timeout") != settings.keywords.end();
    if (!timeoutGiven && qEnvironmentVariableIsEmpty("PGCONNECT_TIMEOUT")) {
        settings.keywords.emplace_back("connect_timeout");
        settings.values.emplace_back("15");
    }
    return settings;
}

PGconn* connect(const Settings& settings) {
    std::vector<const char*> keywords;
    std::vector<const char*> values;
    for (size_t i = 0; i < settings.keywords.size(); ++i) {
        keywords.push_back(settings.keywords[i].constData());
        values.push_back(settings.values[i].constData());
    }
    keywords.push_back(nullptr);
    values.push_back(nullptr);
    return PQconnectdbParams(keywords.data(), values.data(), 0);
}

void runOrThrow(PGconn* conn, const QString& sql, const QString& uri) {
    Result result(PQexec(conn, sql.toUtf8().constData()));
    const ExecStatusType status = PQresultStatus(result.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
        throw error(CannotOpenFile, uri);
    }
}

}  // namespace

bool PgDatabase::isServerUri(const QString& path) {
    return path.startsWith(QLatin1String("postgresql://"), Qt::CaseInsensitive) ||
           path.startsWith(QLatin1String("postgres://"), Qt::CaseInsensitive);
}

std::unique_ptr<Database> PgDatabase::open(const QString& uri) {
    auto connection = std::make_shared<Connection>();
    connection->conn = connect(settingsOf(uri));
    if (PQstatus(connection->conn) != CONNECTION_OK) {
        const QString message = QString::fromUtf8(PQerrorMessage(connection->conn));
        connection->close();
        // No such database is what a missing file is to the embedded engine.
        throw error(
            message.contains(QLatin1String("does not exist")) ? FileNotFound : CannotOpenFile, uri);
    }
    PQsetClientEncoding(connection->conn, "UTF8");
    runOrThrow(connection->conn,
               QStringLiteral("SET lock_timeout = %1").arg(std::max(1, lockWait())), uri);
    // A database the engine made has its functions; any other is no database of the suite's.
    Result made(
        PQexec(connection->conn, "SELECT 1 FROM pg_proc WHERE proname = 'dialect_like' LIMIT 1"));
    if (PQresultStatus(made.get()) != PGRES_TUPLES_OK || made.rows() == 0) {
        connection->close();
        throw error(UnrecognizedFormat, uri);
    }
    return std::unique_ptr<Database>(new PgDatabase(std::move(connection), uri));
}

std::unique_ptr<Database> PgDatabase::create(const QString& uri) {
    const QString database = settingsOf(uri).database;
    if (database.isEmpty()) {
        throw error(InvalidPath, uri);
    }
    {
        // The server's own maintenance database is where databases are made.
        const Settings maintenance = settingsOf(uri, QStringLiteral("postgres"));
        std::unique_ptr<PGconn, decltype(&PQfinish)> server(connect(maintenance), &PQfinish);
        if (PQstatus(server.get()) != CONNECTION_OK) {
            throw error(CannotOpenFile, uri);
        }
        const QByteArray name = database.toUtf8();
        const char* values[] = {name.constData()};
        Result exists(PQexecParams(server.get(), "SELECT 1 FROM pg_database WHERE datname = $1", 1,
                                   nullptr, values, nullptr, nullptr, 0));
        if (exists.rows() > 0) {
            throw error(DatabaseExists);
        }
        runOrThrow(server.get(), "CREATE DATABASE " + quoteName(database) + " TEMPLATE template0",
                   uri);
    }
    try {
        auto connection = std::make_shared<Connection>();
        connection->conn = connect(settingsOf(uri));
        if (PQstatus(connection->conn) != CONNECTION_OK) {
            throw error(CannotOpenFile, uri);
        }
        runOrThrow(connection->conn, QStringLiteral("CREATE EXTENSION IF NOT EXISTS citext"), uri);
        for (const QString& function : functionDefinitions()) {
            runOrThrow(connection->conn, function, uri);
        }
    } catch (const rt::Error&) {
        drop(uri);  // half made, it would be neither new nor usable
        throw;
    }
    return open(uri);
}

void PgDatabase::drop(const QString& uri) {
    const QString database = settingsOf(uri).database;
    std::unique_ptr<PGconn, decltype(&PQfinish)> server(
        connect(settingsOf(uri, QStringLiteral("postgres"))), &PQfinish);
    if (PQstatus(server.get()) == CONNECTION_OK && !database.isEmpty()) {
        Result(PQexec(server.get(), ("DROP DATABASE IF EXISTS " + quoteName(database)).toUtf8()));
    }
}

PgDatabase::PgDatabase(std::shared_ptr<Connection> connection, QString uri)
    : connection_(std::move(connection)), uri_(std::move(uri)) {}

PgDatabase::~PgDatabase() = default;

QStringList PgDatabase::tableNames() {
    const Result tables = run(*connection_,
                              "SELECT relname FROM pg_class WHERE relkind = 'r' AND relnamespace = "
                              "'public'::regnamespace AND relname <> '" +
                                  kPropertiesTable + "' ORDER BY oid");
    QStringList names;
    for (int r = 0; r < tables.rows(); ++r) {
        names << tables.text(r, 0);
    }
    return names;
}

std::vector<ColumnDeclaration> PgDatabase::columnsOf(const QString& table) {
    std::vector<ColumnDeclaration> columns;
    for (const Connection::Declared& column : connection_->columnsOf(table)) {
        columns.push_back({column.name, column.type, column.counter});
    }
    return columns;
}

void PgDatabase::insertRows(const QString& table, const QStringList& columns,
                            const std::vector<std::vector<rt::Variant>>& rows) {
    QStringList names;
    QStringList places;
    for (qsizetype c = 0; c < columns.size(); ++c) {
        names << quoteName(columns[c]);
        places << QStringLiteral("$%1").arg(c + 1);
    }
    const QString sql = "INSERT INTO " + quoteName(table) + " (" + names.join(", ") + ") VALUES (" +
                        places.join(", ") + ")";
    connection_->writeMade();
    Transaction unit(*this);
    for (const std::vector<rt::Variant>& row : rows) {
        run(*connection_, sql, row);
    }
    unit.commit();
}

namespace {

// The sequence of the table's counter column, empty when it has none.
QString counterSequence(PgDatabase& database, Connection& connection, const QString& table) {
    for (const ColumnDeclaration& column : database.columnsOf(table)) {
        if (column.counter) {
            return run(connection,
                       QStringLiteral("SELECT pg_get_serial_sequence($1::text, $2::text)"),
                       {rt::Variant(quoteName(table)), rt::Variant(column.name)})
                .text(0, 0);
        }
    }
    return {};
}

}  // namespace

qint64 PgDatabase::counterPosition(const QString& table) {
    const QString sequence = counterSequence(*this, *connection_, table);
    if (sequence.isEmpty()) {
        return 0;
    }
    const Result read =
        run(*connection_, "SELECT CASE WHEN is_called THEN last_value ELSE 0 END FROM " + sequence);
    return read.text(0, 0).toLongLong();
}

void PgDatabase::setCounterPosition(const QString& table, qint64 position) {
    const QString sequence = counterSequence(*this, *connection_, table);
    if (sequence.isEmpty()) {
        return;
    }
    connection_->writeMade();
    // Not yet called, the sequence gives its value next: that is how a counter that gave none
    // stands.
    run(*connection_,
        QStringLiteral("SELECT setval($1::text::regclass, $2, %1)")
            .arg(position > 0 ? "true" : "false"),
        {rt::Variant(sequence), rt::Variant(std::max<qint64>(position, 1))});
}

std::unique_ptr<Recordset> PgDatabase::openRecordset(const QString& source) {
    connection_->handle();
    const dialect::Statement statement = dialect::analyse(source);
    if (statement.kind == dialect::Statement::SelectInto ||
        statement.kind == dialect::Statement::Action) {
        throw error(InputTableNotFound, source);
    }
    return std::make_unique<PgRecordset>(connection_, statement, source);
}

void PgDatabase::execute(const QString& sql) {
    connection_->handle();
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
            const dialect::Token& verb = statement.tokens[dialect::topLevel(statement.tokens)[0]];
            if (verb.isWord("create") || verb.isWord("alter") || verb.isWord("drop")) {
                define(sql);
            } else {
                run(*connection_,
                    dialect::renderForServer(serverTokens(*connection_, statement.tokens)), {},
                    sql);
                if (verb.isWord("insert")) {
                    keepCounterAhead(statement.tokens);
                }
            }
            return;
        }
    }
}

void PgDatabase::keepCounterAhead(const dialect::Tokens& insert) {
    // Rows written with their ids, as the installer writes them, would leave the counter behind
    // them; the embedded engine's counter goes on from the highest id, whatever wrote it.
    const std::vector<size_t> top = dialect::topLevel(insert);
    if (top.size() < 3 || !insert[top[1]].isWord("into")) {
        return;
    }
    const QString table = insert[top[2]].text;
    for (const ColumnDeclaration& column : columnsOf(table)) {
        if (!column.counter) {
            continue;
        }
        const qint64 highest = run(*connection_, "SELECT COALESCE(MAX(" + quoteName(column.name) +
                                                     "), 0) FROM " + quoteName(table))
                                   .text(0, 0)
                                   .toLongLong();
        if (highest > counterPosition(table)) {
            setCounterPosition(table, highest);
        }
    }
}

void PgDatabase::selectInto(const dialect::Statement& statement) {
    if (statement.intoDatabase.isEmpty()) {
        if (tableNames().contains(statement.intoTable, Qt::CaseInsensitive)) {
            throw error(TableExists, statement.intoTable);
        }
        const QString read =
            dialect::renderForServer(serverTokens(*connection_, statement.intoSource));
        Transaction unit(*this);
        if (!statement.intoSourceTable.isEmpty()) {
            // A copy of a whole table keeps its column types, sizes and collations.
            const std::vector<ColumnDeclaration> columns = columnsOf(statement.intoSourceTable);
            define(tableDefinition(statement.intoTable, columns));
            QStringList names;
            for (const ColumnDeclaration& column : columns) {
                names << quoteName(column.name);
            }
            run(*connection_, "INSERT INTO " + quoteName(statement.intoTable) + " (" +
                                  names.join(", ") + ") " + read);
        } else {
            run(*connection_, "CREATE TABLE " + quoteName(statement.intoTable) + " AS " + read);
            run(*connection_, "ALTER TABLE " + quoteName(statement.intoTable) + " ADD COLUMN " +
                                  quoteName(kRowKey) +
                                  " bigint GENERATED ALWAYS AS IDENTITY UNIQUE");
        }
        unit.commit();
        connection_->forgetDeclarations();
        return;
    }
    // Another database, a file as the suite's other programs read it: the rows go over there.
    std::unique_ptr<Database> target = engine::openDatabase(statement.intoDatabase);
    if (target->tableNames().contains(statement.intoTable, Qt::CaseInsensitive)) {
        throw error(TableExists, statement.intoTable);
    }
    auto rows = openRecordset(dialect::render(statement.intoSource));
    std::vector<ColumnDeclaration> columns;
    if (!statement.intoSourceTable.isEmpty()) {
        columns = columnsOf(statement.intoSourceTable);
    } else {
        for (int c = 0; c < rows->fieldCount(); ++c) {
            const FieldInfo info = rows->fieldInfo(c);
            columns.push_back({info.name, declaredTypeOf(info.type, info.size), false});
        }
    }
    QStringList names;
    for (const ColumnDeclaration& column : columns) {
        names << column.name;
    }
    std::vector<std::vector<rt::Variant>> values;
    for (; !rows->eof(); rows->moveNext()) {
        std::vector<rt::Variant>& row = values.emplace_back();
        for (int c = 0; c < rows->fieldCount(); ++c) {
            row.push_back(rows->fieldValue(c));
        }
    }
    Transaction unit(*target);
    target->execute(tableDefinition(statement.intoTable, columns));
    target->insertRows(statement.intoTable, names, values);
    unit.commit();
}

void PgDatabase::define(const QString& sql) {
    std::vector<std::pair<QString, QString>> declarations;
    QString table;
    run(*connection_, definition(sql, declarations, table), {}, sql);
    // The declared types are kept beside the columns, where a cursor finds its field types.
    for (const auto& [column, type] : declarations) {
        run(*connection_, "COMMENT ON COLUMN " + quoteName(table) + "." + quoteName(column) +
                              " IS " + "'" + QString(type).replace("'", "''") + "'");
    }
    connection_->forgetDeclarations();
}

void PgDatabase::close() {
    connection_->close();
}

void PgDatabase::deleteTable(const QString& name) {
    connection_->handle();
    connection_->writeMade();
    try {
        run(*connection_, "DROP TABLE " + quoteName(name));
    } catch (const rt::Error& failure) {
        if (failure.number() == InputTableNotFound) {
            throw error(ItemNotFound);
        }
        throw;
    }
    connection_->forgetDeclarations();
}

rt::Variant PgDatabase::property(const QString& name) const {
    connection_->handle();
    const Result found = run(
        *connection_, QStringLiteral("SELECT to_regclass('%1') IS NOT NULL").arg(kPropertiesTable));
    if (found.text(0, 0) == "t") {
        const Result read =
            run(*connection_, "SELECT value, kind FROM " + kPropertiesTable + " WHERE name = $1",
                {rt::Variant(name)});
        if (read.rows() > 0) {
            if (read.isNull(0, 0)) {
                return rt::Variant::null();
            }
            const int kind = read.text(0, 1).toInt();
            return readValue(read, 0, 0, kind);
        }
    }
    throw error(PropertyNotFound);
}

void PgDatabase::setProperty(const QString& name, const rt::Variant& value) {
    connection_->handle();
    connection_->writeMade();
    run(*connection_, "CREATE TABLE IF NOT EXISTS " + kPropertiesTable +
                          " (name citext PRIMARY KEY, value text, kind integer)");
    // The value as text beside the engine type it is read back as.
    int kind = dbText;
    switch (value.type()) {
        case rt::VarType::Integer:
            kind = dbInteger;
            break;
        case rt::VarType::Long:
            kind = dbLong;
            break;
        case rt::VarType::Boolean:
            kind = dbBoolean;
            break;
        case rt::VarType::Single:
        case rt::VarType::Double:
            kind = dbDouble;
            break;
        case rt::VarType::Date:
            kind = dbDate;
            break;
        case rt::VarType::Currency:
            kind = dbCurrency;
            break;
        default:
            break;
    }
    run(*connection_,
        "INSERT INTO " + kPropertiesTable +
            " (name, value, kind) VALUES ($1, $2::text, $3) ON CONFLICT (name) DO UPDATE SET "
            "value = EXCLUDED.value, kind = EXCLUDED.kind",
        {rt::Variant(name), value, rt::Variant(kind)});
}

QStringList PgDatabase::propertyNames() const {
    connection_->handle();
    const Result found = run(
        *connection_, QStringLiteral("SELECT to_regclass('%1') IS NOT NULL").arg(kPropertiesTable));
    QStringList names;
    if (found.text(0, 0) == "t") {
        const Result read = run(*connection_, "SELECT name FROM " + kPropertiesTable);
        for (int r = 0; r < read.rows(); ++r) {
            names << read.text(r, 0);
        }
    }
    return names;
}

bool PgDatabase::beginRead() {
    PGconn* conn = connection_->handle();
    if (connection_->transactionDepth > 0 || PQtransactionStatus(conn) != PQTRANS_IDLE) {
        return false;
    }
    // One snapshot for all the reads of the scope, as the embedded engine's read lock gives.
    control(*connection_, QStringLiteral("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY"));
    connection_->transactionBegun();
    connection_->snapshot = true;
    return true;
}

void PgDatabase::endRead() {
    connection_->snapshot = false;
    if (connection_->conn) {
        Result(PQexec(connection_->conn, "COMMIT"));
    }
}

void PgDatabase::beginTrans() {
    connection_->beginLevel([this](const QString& sql) { control(*connection_, sql); },
                            QStringLiteral("BEGIN"));
}

void PgDatabase::commitTrans() {
    endTransaction(true);
}

void PgDatabase::rollback() {
    endTransaction(false);
}

void PgDatabase::endTransaction(bool keep) {
    PGconn* conn = connection_->handle();
    connection_->endLevel(
        keep, [this](const QString& sql) { control(*connection_, sql); },
        [conn] { Result(PQexec(conn, "ROLLBACK")); });
}

}  // namespace engine::pg
