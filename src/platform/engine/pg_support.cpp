#include "platform/engine/pg_support.h"

#include "platform/engine/dialect.h"
#include "platform/engine/engine.h"
#include "platform/engine/pg_functions.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/formats.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <optional>

namespace engine::pg {

namespace {

// The server's type numbers the engine reads and binds.
constexpr Oid kBool = 16;
constexpr Oid kBytea = 17;
constexpr Oid kInt8 = 20;
constexpr Oid kInt2 = 21;
constexpr Oid kInt4 = 23;
constexpr Oid kFloat4 = 700;
constexpr Oid kFloat8 = 701;
constexpr Oid kNumeric = 1700;

QString sqlState(const PGresult* result) {
    const char* state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    return state ? QString::fromLatin1(state) : QString();
}

QString field(const PGresult* result, int code) {
    const char* text = PQresultErrorField(result, code);
    return text ? QString::fromUtf8(text) : QString();
}

// The name a server message quotes, as in: relation "users" does not exist.
QString quotedIn(const QString& message) {
    static const QRegularExpression quoted(QStringLiteral("\"([^\"]+)\""));
    return quoted.match(message).captured(1);
}

rt::Error failure(PGconn* conn, const PGresult* result, const QString& sql,
                  FailureContext context) {
    const QString state = result ? sqlState(result) : QString();
    const QString message = result ? field(result, PG_DIAG_MESSAGE_PRIMARY)
                                   : QString::fromUtf8(PQerrorMessage(conn)).trimmed();
    if (const int number = errorNumber(state)) {
        return number < 1000 ? rt::Error::standard(number) : rt::Error(number, message, "Engine");
    }
    if (state == "23505") {
        return error(DuplicateValue);
    }
    if (state == "23502") {
        return error(NullNotAllowed, field(result, PG_DIAG_COLUMN_NAME));
    }
    if (state == "23514" || state == "22001") {
        return error(DataTooLong);
    }
    if (state == "55P03" || state == "40P01" || state == "40001") {
        return error(Locked);
    }
    if (state == "25006") {
        return error(ReadOnly);
    }
    if (state == "42P01") {
        return error(InputTableNotFound, quotedIn(message));
    }
    if (state == "42P07") {
        return error(TableExists, quotedIn(message));
    }
    if (state == "42703") {
        if (context == FailureContext::Criteria) {
            return error(UnknownName, quotedIn(message));
        }
        return error(TooFewParameters, QStringLiteral("1"));
    }
    // A name before a string is a typed literal to the server, two values side by side to the
    // dialect: the server's "no such type" is the dialect's syntax error.
    if (state == "42601" || state == "42704") {
        return error(SyntaxError, QStringLiteral("Syntax error (missing operator)"), sql);
    }
    if (context == FailureContext::Criteria) {
        return error(CriteriaMismatch);
    }
    return rt::Error(3000, message, QStringLiteral("Engine"));
}

// What a variant is given to the server as: its type and its text (bytes as they are).
struct Parameter {
    Oid type = 0;
    QByteArray value;
    bool null = false;
    bool binary = false;
};

Oid citextType(Connection& connection) {
    if (connection.citext == 0) {
        Result result(PQexec(connection.handle(), "SELECT 'citext'::regtype::oid"));
        connection.citext = PQresultStatus(result.get()) == PGRES_TUPLES_OK
                                ? Oid(result.text(0, 0).toUInt())
                                : Oid(25);
    }
    return connection.citext;
}

Parameter parameterOf(Connection& connection, const rt::Variant& value) {
    Parameter p;
    switch (value.type()) {
        case rt::VarType::Empty:
        case rt::VarType::Null:
            p.null = true;
            break;
        case rt::VarType::Integer:
        case rt::VarType::Long:
        case rt::VarType::Boolean:
            p.type = kInt8;
            p.value = QByteArray::number(value.integerValue());
            break;
        case rt::VarType::Currency: {
            const qint64 scaled = value.integerValue();
            const qint64 whole = scaled / 10000;
            const qint64 part = std::llabs(scaled % 10000);
            p.type = kNumeric;
            p.value = (scaled < 0 && whole == 0 ? QByteArray("-") : QByteArray()) +
                      QByteArray::number(whole) + '.' +
                      QByteArray::number(part).rightJustified(4, '0');
            break;
        }
        case rt::VarType::Single:
        case rt::VarType::Double:
        case rt::VarType::Date:
            p.type = kFloat8;
            p.value = QByteArray::number(value.realValue(), 'g', 17);
            break;
        case rt::VarType::Bytes:
            p.type = kBytea;
            p.value = value.bytes();
            p.binary = true;
            break;
        default:
            // Text compares without regard to case, as the columns it meets do.
            p.type = citextType(connection);
            p.value = value.text().toUtf8();
    }
    return p;
}

Result execute(Connection& connection, const QString& sql, const std::vector<rt::Variant>& values) {
    std::vector<Parameter> parameters;
    parameters.reserve(values.size());
    for (const rt::Variant& value : values) {
        parameters.push_back(parameterOf(connection, value));
    }
    std::vector<Oid> types;
    std::vector<const char*> texts;
    std::vector<int> lengths;
    std::vector<int> formats;
    for (const Parameter& p : parameters) {
        types.push_back(p.type);
        texts.push_back(p.null ? nullptr : p.value.constData());
        lengths.push_back(int(p.value.size()));
        formats.push_back(p.binary ? 1 : 0);
    }
    const QByteArray text = sql.toUtf8();
    return Result(PQexecParams(connection.handle(), text.constData(), int(parameters.size()),
                               types.data(), texts.data(), lengths.data(), formats.data(), 0));
}

bool succeeded(const Result& result) {
    const ExecStatusType status = PQresultStatus(result.get());
    return status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK;
}

void runPlain(PGconn* conn, const char* sql) {
    Result(PQexec(conn, sql));
}

}  // namespace

Connection::~Connection() {
    close();
}

PGconn* Connection::handle() const {
    if (!conn) {
        throw error(ObjectInvalid);
    }
    return conn;
}

void Connection::close() {
    if (conn) {
        PQfinish(conn);
        conn = nullptr;
    }
}

bool Connection::readsStandStill() const {
    return conn && snapshot && PQtransactionStatus(conn) == PQTRANS_INTRANS;
}

Oid Connection::tableOid(const QString& table) {
    const QString key = table.toLower();
    if (!tables_.contains(key)) {
        tables_.insert(key, Oid(run(*this, QStringLiteral("SELECT $1::text::regclass::oid"),
                                    {rt::Variant(quoteName(table))})
                                    .text(0, 0)
                                    .toUInt()));
    }
    return tables_.value(key);
}

std::vector<Connection::Declared> Connection::columnsOf(Oid table) {
    if (!columns_.contains(table)) {
        const Result result =
            run(*this,
                QStringLiteral("SELECT attnum, attname, coalesce(col_description(attrelid, "
                               "attnum), ''), attidentity FROM pg_attribute WHERE attrelid = $1 "
                               "AND attnum > 0 AND NOT attisdropped ORDER BY attnum"),
                {rt::Variant(qint64(table))});
        std::vector<Declared>& columns = columns_[table];
        for (int r = 0; r < result.rows(); ++r) {
            if (result.text(r, 1) != kRowKey) {
                columns.push_back({result.text(r, 0).toInt(), result.text(r, 1), result.text(r, 2),
                                   result.text(r, 3) == "d"});
            }
        }
    }
    return columns_.value(table);
}

std::optional<Connection::Declared> Connection::declared(Oid table, int column) {
    if (table == 0 || column <= 0) {
        return std::nullopt;
    }
    for (const Declared& declared : columnsOf(table)) {
        if (declared.number == column) {
            return declared;
        }
    }
    return std::nullopt;
}

QString Result::text(int row, int column) const {
    return QString::fromUtf8(PQgetvalue(result_, row, column), PQgetlength(result_, row, column));
}

Result run(Connection& connection, const QString& sql, const std::vector<rt::Variant>& values,
           const QString& original, FailureContext context) {
    PGconn* conn = connection.handle();
    // A failed statement spoils the server's whole transaction; a savepoint around each keeps
    // the failure to the statement.
    const bool guarded = PQtransactionStatus(conn) == PQTRANS_INTRANS;
    if (guarded) {
        runPlain(conn, "SAVEPOINT engine_statement");
    }
    Result result = execute(connection, sql, values);
    if (!succeeded(result)) {
        const rt::Error failed =
            failure(conn, result.get(), original.isEmpty() ? sql : original, context);
        if (guarded) {
            runPlain(conn, "ROLLBACK TO SAVEPOINT engine_statement");
            runPlain(conn, "RELEASE SAVEPOINT engine_statement");
        }
        throw failed;
    }
    if (guarded) {
        runPlain(conn, "RELEASE SAVEPOINT engine_statement");
    }
    return result;
}

void control(Connection& connection, const QString& sql) {
    PGconn* conn = connection.handle();
    Result result(PQexec(conn, sql.toUtf8().constData()));
    if (!succeeded(result)) {
        throw failure(conn, result.get(), sql, FailureContext::Statement);
    }
}

rt::Variant readValue(const Result& result, int row, int column, int type) {
    if (result.isNull(row, column)) {
        return rt::Variant::null();
    }
    const char* raw = PQgetvalue(result.get(), row, column);
    if (type == 0) {
        switch (PQftype(result.get(), column)) {
            case kBool:
                type = dbBoolean;
                break;
            case kInt2:
                type = dbInteger;
                break;
            case kInt4:
                type = dbLong;
                break;
            case kInt8:
                type = dbBigInt;
                break;
            case kFloat4:
            case kFloat8:
            case kNumeric:
                type = dbDouble;
                break;
            case kBytea:
                type = dbLongBinary;
                break;
            default:
                type = dbText;
        }
    }
    const QString text = result.text(row, column);
    auto integer = [&] { return text == "t" ? -1 : text == "f" ? 0 : text.toLongLong(); };
    switch (type) {
        case dbBoolean:
            return rt::Variant(text == "t" || (text != "f" && text.toDouble() != 0));
        case dbByte:
        case dbInteger:
            return rt::Variant(static_cast<qint16>(integer()));
        case dbLong:
            return rt::Variant(static_cast<int>(integer()));
        case dbBigInt:
            return rt::Variant(qint64(integer()));
        case dbCurrency: {
            // Exact to the fourth decimal, as the server keeps it.
            const QStringList parts = text.split('.');
            const bool negative = text.startsWith('-');
            const qint64 whole = parts[0].toLongLong();
            const qint64 part =
                parts.size() > 1 ? parts[1].left(4).leftJustified(4, '0').toLongLong() : 0;
            return rt::Variant::currency(whole * 10000 + (negative ? -part : part));
        }
        case dbSingle:
            return rt::Variant(text.toFloat());
        case dbDouble:
        case dbDecimal:
            return rt::Variant(text.toDouble());
        case dbDate:
            return rt::Variant::date(text.toDouble());
        case dbBinary:
        case dbLongBinary: {
            size_t length = 0;
            unsigned char* bytes =
                PQunescapeBytea(reinterpret_cast<const unsigned char*>(raw), &length);
            const QByteArray value(reinterpret_cast<const char*>(bytes), qsizetype(length));
            PQfreemem(bytes);
            return rt::Variant(value);
        }
        default:
            return rt::Variant(text);
    }
}

namespace {

// The value of a literal token, or nothing for any other token.
std::optional<rt::Variant> literalValue(const dialect::Token& token) {
    if (token.kind == dialect::Token::String) {
        return rt::Variant(token.text);
    }
    if (token.kind == dialect::Token::Number) {
        return rt::Variant(token.text.toDouble());
    }
    return std::nullopt;
}

// The arguments of the call whose "(" is at `open`, when each is one literal.
std::optional<std::vector<rt::Variant>> literalArguments(const dialect::Tokens& tokens, size_t open,
                                                         size_t& close) {
    std::vector<rt::Variant> arguments;
    bool expectValue = true;
    for (size_t i = open + 1; i < tokens.size(); ++i) {
        const dialect::Token& token = tokens[i];
        if (token.kind == dialect::Token::Space) {
            continue;
        }
        if (token.isSymbol(")")) {
            close = i;
            return arguments;
        }
        if (expectValue) {
            const std::optional<rt::Variant> value = literalValue(token);
            if (!value) {
                return std::nullopt;
            }
            arguments.push_back(*value);
            expectValue = false;
        } else if (token.isSymbol(",")) {
            expectValue = true;
        } else {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<dialect::Token> computed(const QString& function, const std::vector<rt::Variant>& a) {
    auto serial = [](double value) {
        return dialect::Token{dialect::Token::Number, QString::number(value, 'g', 17)};
    };
    if (function == dialect::functionName("CDate") && a.size() == 1) {
        return serial(rt::CDate(a[0]));
    }
    if (function == dialect::functionName("Now") && a.empty()) {
        return serial(rt::Now());
    }
    if (function == dialect::functionName("Date") && a.empty()) {
        return serial(rt::Today());
    }
    if (function == dialect::functionName("Format") && !a.empty() && a.size() <= 2) {
        return dialect::Token{dialect::Token::String,
                              a.size() == 1 ? rt::Format(a[0]) : rt::Format(a[0], rt::CStr(a[1]))};
    }
    return std::nullopt;
}

}  // namespace

namespace {

using dialect::Token;
using dialect::Tokens;

size_t significantBefore(const Tokens& tokens, size_t i) {
    while (i > 0) {
        --i;
        if (tokens[i].kind != Token::Space) {
            return i;
        }
    }
    return size_t(-1);
}

bool endsFromList(const Token& token) {
    static const char* const words[] = {"where", "group", "order", "having",
                                        "union", "limit", "on"};
    for (const char* word : words) {
        if (token.isWord(word)) {
            return true;
        }
    }
    return false;
}

bool joins(const Token& token) {
    static const char* const words[] = {"join", "inner", "left", "right", "outer", "cross", "full"};
    for (const char* word : words) {
        if (token.isWord(word)) {
            return true;
        }
    }
    return false;
}

struct TableReference {
    QString table;
    QString alias;
};

// The tables of the FROM that follows the SELECT at `select`, at the same depth.
std::vector<TableReference> tablesAfter(const Tokens& tokens, size_t select) {
    std::vector<TableReference> tables;
    int depth = 0;
    size_t i = select + 1;
    for (; i < tokens.size(); ++i) {
        depth += tokens[i].isSymbol("(") ? 1 : tokens[i].isSymbol(")") ? -1 : 0;
        if (depth < 0) {
            return tables;
        }
        if (depth == 0 && tokens[i].isWord("from")) {
            break;
        }
    }
    bool expectTable = true;
    for (++i; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        if (token.kind == Token::Space) {
            continue;
        }
        if (token.isSymbol("(")) {
            // A subquery or a bracketed join: what it reads is not a table of this list.
            int inner = 1;
            while (++i < tokens.size() && inner > 0) {
                inner += tokens[i].isSymbol("(") ? 1 : tokens[i].isSymbol(")") ? -1 : 0;
            }
            --i;
            expectTable = false;
            continue;
        }
        if (token.isSymbol(")") || endsFromList(token)) {
            if (token.isWord("on")) {
                // The join's condition runs to the next join or the end of the list.
                while (i + 1 < tokens.size() && !joins(tokens[i + 1]) &&
                       !tokens[i + 1].isSymbol(",") && !endsFromList(tokens[i + 1]) &&
                       !tokens[i + 1].isSymbol(")")) {
                    ++i;
                }
                continue;
            }
            break;
        }
        if (token.isSymbol(",") || joins(token)) {
            expectTable = true;
            continue;
        }
        if (token.kind != Token::Word && token.kind != Token::Name) {
            continue;
        }
        if (expectTable) {
            tables.push_back({token.text, token.text});
            expectTable = false;
        } else if (!token.isWord("as") && !tables.empty()) {
            tables.back().alias = token.text;
        }
    }
    return tables;
}

// The columns a * or an x.* stands for, each as qualifier.column.
Tokens columnsFor(Connection& connection, const std::vector<TableReference>& tables,
                  const QString& qualifier) {
    Tokens list;
    for (const TableReference& reference : tables) {
        if (!qualifier.isEmpty() && reference.alias.compare(qualifier, Qt::CaseInsensitive) != 0 &&
            reference.table.compare(qualifier, Qt::CaseInsensitive) != 0) {
            continue;
        }
        for (const Connection::Declared& column : connection.columnsOf(reference.table)) {
            if (!list.empty()) {
                list.push_back({Token::Symbol, ","});
            }
            list.push_back({Token::Name, reference.alias});
            list.push_back({Token::Symbol, "."});
            list.push_back({Token::Name, column.name});
        }
    }
    return list;
}

Tokens expandStars(Connection& connection, Tokens tokens) {
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (!tokens[i].isWord("select")) {
            continue;
        }
        const std::vector<TableReference> tables = tablesAfter(tokens, i);
        if (tables.empty()) {
            continue;
        }
        int depth = 0;
        for (size_t j = i + 1; j < tokens.size(); ++j) {
            depth += tokens[j].isSymbol("(") ? 1 : tokens[j].isSymbol(")") ? -1 : 0;
            if (depth < 0 || (depth == 0 && tokens[j].isWord("from"))) {
                break;
            }
            if (depth != 0 || !tokens[j].isSymbol("*")) {
                continue;
            }
            const size_t before = significantBefore(tokens, j);
            const bool qualified = before != size_t(-1) && tokens[before].isSymbol(".");
            const bool alone = before != size_t(-1) &&
                               (before == i || tokens[before].isSymbol(",") ||
                                tokens[before].isWord("distinct") || tokens[before].isWord("all"));
            if (!qualified && !alone) {
                continue;  // a product
            }
            const size_t owner = qualified ? significantBefore(tokens, before) : size_t(-1);
            const QString qualifier = qualified ? tokens[owner].text : QString();
            const Tokens columns = columnsFor(connection, tables, qualifier);
            if (columns.empty()) {
                continue;
            }
            const size_t first = qualified ? owner : j;
            tokens.erase(tokens.begin() + first, tokens.begin() + j + 1);
            tokens.insert(tokens.begin() + first, columns.begin(), columns.end());
            j = first + columns.size() - 1;
        }
    }
    return tokens;
}

// The embedded engine sorts Null below every value; a server sorts it above, so each key of
// the statement's own ORDER BY says where its Nulls go.
Tokens nullsOrderedAsTheEngine(Tokens tokens) {
    const std::vector<size_t> top = dialect::topLevel(tokens);
    const auto by = std::adjacent_find(top.begin(), top.end(), [&](size_t a, size_t b) {
        return tokens[a].isWord("order") && tokens[b].isWord("by");
    });
    if (by == top.end()) {
        return tokens;
    }
    // Each key ends at a comma of the clause, or where the clause ends: at LIMIT or the end.
    std::vector<size_t> keyEnds;
    auto t = by + 2;
    for (; t != top.end() && !tokens[*t].isWord("limit"); ++t) {
        if (tokens[*t].isSymbol(",")) {
            keyEnds.push_back(*t);
        }
    }
    keyEnds.push_back(t == top.end() ? tokens.size() : *t);
    for (auto end = keyEnds.rbegin(); end != keyEnds.rend(); ++end) {
        const bool descending = tokens[significantBefore(tokens, *end)].isWord("desc");
        const Tokens nulls = {
            {Token::Word, QStringLiteral("NULLS")},
            {Token::Word, descending ? QStringLiteral("LAST") : QStringLiteral("FIRST")}};
        tokens.insert(tokens.begin() + *end, nulls.begin(), nulls.end());
    }
    return tokens;
}

}  // namespace

dialect::Tokens serverTokens(Connection& connection, const dialect::Tokens& source) {
    dialect::Tokens tokens = expandStars(connection, source);
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].kind != dialect::Token::Word) {
            continue;
        }
        size_t open = i + 1;
        while (open < tokens.size() && tokens[open].kind == dialect::Token::Space) {
            ++open;
        }
        if (open >= tokens.size() || !tokens[open].isSymbol("(")) {
            continue;
        }
        size_t close = 0;
        const auto arguments = literalArguments(tokens, open, close);
        if (!arguments) {
            continue;
        }
        if (const auto value = computed(tokens[i].text, *arguments)) {
            tokens.erase(tokens.begin() + i, tokens.begin() + close + 1);
            tokens.insert(tokens.begin() + i, *value);
        }
    }
    return nullsOrderedAsTheEngine(dialect::likeAsCalls(tokens));
}

QString quoteName(const QString& name) {
    return "\"" + name.toLower().replace(QLatin1String("\""), QLatin1String("\"\"")) + "\"";
}

namespace {

using dialect::Token;
using dialect::Tokens;

bool isConstraintWord(const Token& token) {
    static const char* const words[] = {"primary",    "not",          "null",   "default",
                                        "check",      "collate",      "unique", "references",
                                        "constraint", "autoincrement"};
    for (const char* word : words) {
        if (token.isWord(word)) {
            return true;
        }
    }
    return false;
}

// The server's type for the suite's declared one.
QString serverType(const QString& declared) {
    const QString base = declared.section('(', 0, 0).trimmed().toUpper();
    const QString size = declared.contains('(') ? "(" + declared.section('(', 1) : QString();
    if (base.isEmpty() || base == "VARCHAR" || base == "TEXT" || base == "CHAR" ||
        base == "LONGTEXT" || base == "MEMO" || base == "NVARCHAR" || base == "GUID") {
        return QStringLiteral("citext");
    }
    if (base == "INTEGER" || base == "INT" || base == "LONG") {
        return QStringLiteral("integer");
    }
    if (base == "SMALLINT" || base == "SHORT" || base == "BYTE" || base == "TINYINT" ||
        base == "BIT" || base == "BOOLEAN" || base == "YESNO") {
        return QStringLiteral("smallint");
    }
    if (base == "BIGINT") {
        return QStringLiteral("bigint");
    }
    if (base == "SINGLE" || base == "REAL") {
        return QStringLiteral("real");
    }
    if (base == "DOUBLE" || base == "FLOAT" || base == "DATETIME" || base == "DATE") {
        return QStringLiteral("double precision");
    }
    if (base == "CURRENCY" || base == "MONEY") {
        return QStringLiteral("numeric(19,4)");
    }
    if (base == "DECIMAL" || base == "NUMERIC") {
        return "numeric" + size;
    }
    if (base.contains("BLOB") || base.contains("BINARY")) {
        return QStringLiteral("bytea");
    }
    return QStringLiteral("citext");
}

// One column definition in the server's terms; its name and declared type go to `declarations`.
QString columnDefinition(const Tokens& tokens,
                         std::vector<std::pair<QString, QString>>& declarations) {
    const std::vector<size_t> top = dialect::topLevel(tokens);
    if (top.empty()) {
        return {};
    }
    const Token& first = tokens[top[0]];
    if (first.kind != Token::Name && first.kind != Token::Word) {
        return dialect::renderForServer(tokens);
    }
    if (first.isWord("primary") || first.isWord("unique") || first.isWord("constraint") ||
        first.isWord("check") || first.isWord("foreign")) {
        return dialect::renderForServer(tokens);
    }
    // The type: the words after the name up to the first constraint, with a size in brackets.
    size_t t = 1;
    QString declared;
    while (t < top.size() && !isConstraintWord(tokens[top[t]])) {
        const size_t end = t + 1 < top.size() ? top[t + 1] : tokens.size();
        declared += dialect::render(tokens, top[t], end).trimmed();
        ++t;
    }
    bool counter = false;
    QStringList constraints;
    for (size_t c = t; c < top.size(); ++c) {
        if (tokens[top[c]].isWord("collate")) {
            ++c;  // the embedded engine's collation: citext compares without regard to case
            continue;
        }
        if (tokens[top[c]].isWord("autoincrement")) {
            counter = true;
            continue;
        }
        const size_t end = c + 1 < top.size() ? top[c + 1] : tokens.size();
        constraints << dialect::renderForServer(tokens, top[c], end).trimmed();
    }
    declarations.emplace_back(first.text, declared);
    const QString type =
        counter ? QStringLiteral("integer GENERATED BY DEFAULT AS IDENTITY") : serverType(declared);
    return quoteName(first.text) + " " + type +
           (constraints.isEmpty() ? QString() : " " + constraints.join(' '));
}

// The parts of a list between top-level commas.
std::vector<Tokens> splitAtCommas(const Tokens& tokens, size_t first, size_t last) {
    std::vector<Tokens> parts(1);
    int depth = 0;
    for (size_t i = first; i < last; ++i) {
        const Token& token = tokens[i];
        depth += token.isSymbol("(") ? 1 : token.isSymbol(")") ? -1 : 0;
        if (depth == 0 && token.isSymbol(",")) {
            parts.emplace_back();
            continue;
        }
        parts.back().push_back(token);
    }
    return parts;
}

}  // namespace

QString definition(const QString& sql, std::vector<std::pair<QString, QString>>& declarations,
                   QString& table) {
    const Tokens tokens = dialect::tokenize(sql);
    const std::vector<size_t> top = dialect::topLevel(tokens);
    const bool create =
        top.size() > 2 && tokens[top[0]].isWord("create") && tokens[top[1]].isWord("table");
    const bool alter = top.size() > 4 && tokens[top[0]].isWord("alter") &&
                       tokens[top[1]].isWord("table") && tokens[top[3]].isWord("add");
    if (!create && !alter) {
        return dialect::renderForServer(tokens);
    }
    table = tokens[top[2]].text;
    if (alter) {
        size_t def = 4;
        if (tokens[top[def]].isWord("column")) {
            ++def;
        }
        return "ALTER TABLE " + quoteName(table) + " ADD COLUMN " +
               columnDefinition(Tokens(tokens.begin() + top[def], tokens.end()), declarations);
    }
    size_t open = top[2] + 1;
    while (open < tokens.size() && !tokens[open].isSymbol("(")) {
        ++open;
    }
    size_t close = tokens.size();
    int depth = 0;
    for (size_t i = open; i < tokens.size(); ++i) {
        depth += tokens[i].isSymbol("(") ? 1 : tokens[i].isSymbol(")") ? -1 : 0;
        if (depth == 0) {
            close = i;
            break;
        }
    }
    QStringList columns;
    for (const Tokens& part : splitAtCommas(tokens, open + 1, close)) {
        columns << columnDefinition(part, declarations);
    }
    columns << quoteName(kRowKey) + " bigint GENERATED ALWAYS AS IDENTITY UNIQUE";
    return "CREATE TABLE " + quoteName(table) + " (" + columns.join(", ") + ")";
}

}  // namespace engine::pg
