#include "platform/engine/pg_recordset.h"

#include "platform/engine/errors.h"
#include "platform/engine/field_types.h"

#include <QStringList>

#include <algorithm>

namespace engine::pg {

namespace {

// The engine type of a computed column, by the server's type of its values.
int typeOfValues(Oid type) {
    switch (type) {
        case 16:
            return dbBoolean;
        case 21:
            return dbInteger;
        case 23:
            return dbLong;
        case 20:
            return dbBigInt;
        case 700:
        case 701:
        case 1700:
            return dbDouble;
        case 17:
            return dbLongBinary;
        default:
            return dbText;
    }
}

// The statement's text for the server: LIKE as the dialect reads it, names folded.
QString serverText(const dialect::Tokens& tokens, size_t first = 0, size_t last = size_t(-1)) {
    return dialect::renderForServer(tokens, first, last);
}

// What the server made of a criteria or statement: true, or a number other than 0.
bool isTrue(const Result& result) {
    if (result.rows() == 0 || result.isNull(0, 0)) {
        return false;
    }
    const QString text = result.text(0, 0);
    return text == "t" || (text != "f" && text.toDouble() != 0);
}

class PgCriteria : public Dynaset::CriteriaTest {
public:
    PgCriteria(Connection& connection, QString sql, QString criteria)
        : connection_(connection), sql_(std::move(sql)), criteria_(std::move(criteria)) {}
    bool matches(const std::vector<rt::Variant>& parameters) override {
        return isTrue(run(connection_, sql_, parameters, criteria_, FailureContext::Criteria));
    }

private:
    Connection& connection_;
    QString sql_;
    QString criteria_;
};

}  // namespace

PgRecordset::PgRecordset(std::shared_ptr<Connection> connection,
                         const dialect::Statement& statement, QString source)
    : Dynaset(connection, std::move(source), statement.updatableTable),
      connection_(std::move(connection)),
      itemTypes_(statement.itemTypes) {
    const dialect::Tokens tokens = serverTokens(*connection_, statement.tokens);
    if (keyed()) {
        tableOid_ = connection_->tableOid(table());
    }
    const QString key = quoteName(table()) + "." + quoteName(kRowKey);
    // The embedded engine gives a table's rows in the order they were added unless asked for
    // another; a server gives them as they lie on disk, which an update reshuffles.
    const QString addedOrder = " ORDER BY " + key;
    if (statement.kind == dialect::Statement::TableName) {
        sql_ = "SELECT " + key + ", * FROM " + quoteName(table()) + addedOrder;
        fetchSql_ = "SELECT * FROM " + quoteName(table()) + " WHERE " + key + " = $1";
    } else if (keyed()) {
        // The key goes first, so that each row can be found again to read it or write it back.
        const std::vector<size_t> top = dialect::topLevel(tokens);
        sql_ = "SELECT " + key + ", " + serverText(tokens, top[0] + 1);
        if (std::none_of(top.begin(), top.end(),
                         [&](size_t t) { return tokens[t].isWord("order"); })) {
            sql_ += addedOrder;
        }
        // A row read again shows even when it no longer meets the WHERE, as a dynaset's rows do.
        size_t from = 0;
        while (!tokens[top[from]].isWord("from")) {
            ++from;
        }
        fetchSql_ = "SELECT " + serverText(tokens, top[0] + 1, top[from + 1] + 1) + " WHERE " +
                    key + " = $1";
    } else {
        sql_ = serverText(tokens);
    }
    load();
}

void PgRecordset::describe(const Result& result, int first) {
    const int count = result.columns();
    for (int c = first; c < count; ++c) {
        const QString name = QString::fromUtf8(PQfname(result.get(), c));
        if (name == kRowKey) {
            continue;  // the key a * brought along
        }
        shown_.push_back(c - first);
        Column column;
        column.info.name = name;
        const std::optional<Connection::Declared> declared =
            connection_->declared(PQftable(result.get(), c), PQftablecol(result.get(), c));
        const int declaredType = declared ? fieldTypeOf(declared->type) : 0;
        const int listed = selectItemType(itemTypes_, c - first, count - first);
        column.info.type = declaredType ? declaredType
                           : listed     ? listed
                                        : typeOfValues(PQftype(result.get(), c));
        column.info.size = fieldSizeOf(column.info.type, declared ? declared->type : QString());
        if (declared && keyed() && PQftable(result.get(), c) == tableOid_) {
            column.baseColumn = declared->name;
            column.counter = declared->counter;
        }
        columns().push_back(column);
    }
}

void PgRecordset::readRows(const std::function<void(qint64 key, const ValueReader& values)>& row) {
    const Result result = run(*connection_, sql_, {}, source());
    const int first = keyed() ? 1 : 0;
    if (columns().empty()) {
        describe(result, first);
    }
    int r = 0;
    const ValueReader readValues = [&](std::vector<rt::Variant>& values) {
        for (size_t c = 0; c < shown_.size(); ++c) {
            values.push_back(readValue(result, r, shown_[c] + first, columns()[c].info.type));
        }
    };
    for (; r < result.rows(); ++r) {
        row(keyed() ? result.text(r, 0).toLongLong() : 0, readValues);
    }
}

bool PgRecordset::fetchRow(qint64 key, std::vector<rt::Variant>& values) const {
    const Result result = run(*connection_, fetchSql_, {rt::Variant(key)}, source());
    if (result.rows() == 0) {
        return false;
    }
    values.resize(shown_.size());
    for (size_t c = 0; c < shown_.size(); ++c) {
        values[c] = readValue(result, 0, shown_[c], columns()[c].info.type);
    }
    return true;
}

std::unique_ptr<Dynaset::CriteriaTest> PgRecordset::prepareCriteria(const dialect::Tokens& tokens,
                                                                    const std::vector<bool>&,
                                                                    const QString& criteria) {
    // Text values are bound as citext, which compares without regard to case.
    dialect::Tokens numbered = serverTokens(*connection_, tokens);
    for (dialect::Token& token : numbered) {
        if (token.kind == dialect::Token::Symbol && token.text.startsWith('?')) {
            token.text = "$" + token.text.mid(1);
        }
    }
    return std::make_unique<PgCriteria>(*connection_, "SELECT (" + serverText(numbered) + ")",
                                        criteria);
}

qint64 PgRecordset::insertRow(const QStringList& names, const std::vector<rt::Variant>& values) {
    QStringList columns;
    QStringList places;
    for (qsizetype i = 0; i < names.size(); ++i) {
        columns << quoteName(names[i]);
        places << QStringLiteral("$%1").arg(i + 1);
    }
    const QString into = "INSERT INTO " + quoteName(table());
    const QString sql = (columns.isEmpty() ? into + " DEFAULT VALUES"
                                           : into + " (" + columns.join(", ") + ") VALUES (" +
                                                 places.join(", ") + ")") +
                        " RETURNING " + quoteName(kRowKey);
    return run(*connection_, sql, values, source()).text(0, 0).toLongLong();
}

bool PgRecordset::updateRow(qint64 key, const QStringList& names,
                            const std::vector<rt::Variant>& values) {
    QStringList assignments;
    for (qsizetype i = 0; i < names.size(); ++i) {
        assignments << quoteName(names[i]) + QStringLiteral(" = $%1").arg(i + 1);
    }
    std::vector<rt::Variant> all = values;
    all.push_back(rt::Variant(key));
    const Result result =
        run(*connection_,
            "UPDATE " + quoteName(table()) + " SET " + assignments.join(", ") + " WHERE " +
                quoteName(kRowKey) + QStringLiteral(" = $%1").arg(all.size()),
            all, source());
    return QByteArray(PQcmdTuples(result.get())) != "0";
}

void PgRecordset::deleteRow(qint64 key) {
    run(*connection_,
        "DELETE FROM " + quoteName(table()) + " WHERE " + quoteName(kRowKey) + " = $1",
        {rt::Variant(key)}, source());
}

qint64 PgRecordset::reserveCounter(const QString& column) {
    // Past both the counter's own next number and the highest number the table holds, which a
    // row written with its id may have put beyond it.
    const QString sequence = "pg_get_serial_sequence($1::text, $2::text)";
    const Result result =
        run(*connection_,
            "SELECT setval(" + sequence + ", GREATEST(nextval(" + sequence +
                "), (SELECT COALESCE(MAX(" + quoteName(column) + "), 0) + 1 FROM " +
                quoteName(table()) + ")))",
            {rt::Variant(quoteName(table())), rt::Variant(column.toLower())}, source());
    return result.text(0, 0).toLongLong();
}

std::vector<std::pair<QString, rt::Variant>> PgRecordset::columnDefaults() {
    std::vector<std::pair<QString, rt::Variant>> defaults;
    const Result found = run(*connection_,
                             QStringLiteral("SELECT a.attname, pg_get_expr(d.adbin, d.adrelid), "
                                            "coalesce(col_description(a.attrelid, a.attnum), '') "
                                            "FROM pg_attrdef d JOIN pg_attribute a ON "
                                            "a.attrelid = d.adrelid AND a.attnum = d.adnum "
                                            "WHERE d.adrelid = $1"),
                             {rt::Variant(qint64(tableOid_))}, source());
    for (int r = 0; r < found.rows(); ++r) {
        const Result value = run(*connection_, "SELECT " + found.text(r, 1), {}, source());
        defaults.emplace_back(found.text(r, 0),
                              readValue(value, 0, 0, fieldTypeOf(found.text(r, 2))));
    }
    return defaults;
}

}  // namespace engine::pg
