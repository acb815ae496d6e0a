#include "platform/engine/sqlite_recordset.h"

#include "platform/engine/errors.h"

#include <QStringList>

#include <algorithm>

namespace engine {

SqliteRecordset::SqliteRecordset(std::shared_ptr<Connection> connection,
                                 const dialect::Statement& statement, QString source)
    : Dynaset(connection, std::move(source), statement.updatableTable),
      connection_(std::move(connection)),
      itemTypes_(statement.itemTypes) {
    if (statement.kind == dialect::Statement::TableName) {
        sql_ = "SELECT rowid, * FROM " + quoteName(table());
        fetchSql_ = "SELECT * FROM " + quoteName(table()) + " WHERE rowid = ?1";
    } else if (!table().isEmpty()) {
        // The rowid goes first, so that each row can be found again to read it or write it back.
        const std::vector<size_t> top = dialect::topLevel(statement.tokens);
        sql_ = "SELECT " + quoteName(table()) + ".rowid, " +
               dialect::render(statement.tokens, top[0] + 1);
        // A row read again shows even when it no longer meets the WHERE, as a dynaset's rows do.
        size_t from = 0;
        while (!statement.tokens[top[from]].isWord("from")) {
            ++from;
        }
        fetchSql_ = "SELECT " + dialect::render(statement.tokens, top[0] + 1, top[from + 1] + 1) +
                    " WHERE " + quoteName(table()) + ".rowid = ?1";
    } else {
        sql_ = dialect::render(statement.tokens);
    }
    load();
}

sqlite3* SqliteRecordset::db() const {
    if (!connection_->db) {
        throw error(ObjectInvalid);
    }
    return connection_->handle();
}

void SqliteRecordset::describe(sqlite3_stmt* statement, int first) {
    const int count = sqlite3_column_count(statement);
    for (int c = first; c < count; ++c) {
        Column column;
        column.info.name = QString::fromUtf8(sqlite3_column_name(statement, c));
        const char* declared = sqlite3_column_decltype(statement, c);
        const QString declaredType = declared ? QString::fromUtf8(declared) : QString();
        column.info.type = declared ? fieldTypeOf(declaredType)
                                    : selectItemType(itemTypes_, c - first, count - first);
        column.info.size = fieldSizeOf(column.info.type, declaredType);
        const char* origin = sqlite3_column_origin_name(statement, c);
        const char* originTable = sqlite3_column_table_name(statement, c);
        if (origin && originTable && keyed() &&
            QString::fromUtf8(originTable).compare(table(), Qt::CaseInsensitive) == 0) {
            column.baseColumn = QString::fromUtf8(origin);
            int autoIncrement = 0;
            sqlite3_table_column_metadata(db(), nullptr, originTable, origin, nullptr, nullptr,
                                          nullptr, nullptr, &autoIncrement);
            column.counter = autoIncrement != 0;
        }
        columns().push_back(column);
    }
}

void SqliteRecordset::settleType(Column& column, const rt::Variant& value) {
    // A computed column takes its type from the first value it shows.
    if (column.info.type != 0 || value.isNull()) {
        return;
    }
    const rt::VarType kind = value.type();
    column.info.type = kind == rt::VarType::Long     ? dbLong
                       : kind == rt::VarType::Double ? dbDouble
                       : kind == rt::VarType::Bytes  ? dbLongBinary
                                                     : dbText;
    column.info.size = fieldSizeOf(column.info.type, QString());
}

void SqliteRecordset::readRows(
    const std::function<void(qint64 key, const ValueReader& values)>& row) {
    Prepared statement(*connection_, sql_, source());
    const int first = keyed() ? 1 : 0;
    // Stepped before its columns are read: a statement kept from before a change of the table's
    // definition is prepared again by its first step.
    bool more = statement.step();
    if (columns().empty()) {
        describe(statement.get(), first);
    }
    const int count = int(columns().size());
    std::vector<int> unsettled;
    for (int c = 0; c < count; ++c) {
        if (columns()[c].info.type == 0) {
            unsettled.push_back(c);
        }
    }
    const ValueReader readValues = [&](std::vector<rt::Variant>& values) {
        for (int c = 0; c < count; ++c) {
            values.push_back(readColumn(statement.get(), c + first, columns()[c].info.type));
        }
    };
    for (; more; more = statement.step()) {
        std::erase_if(unsettled, [&](int c) {
            if (sqlite3_column_type(statement.get(), c + first) == SQLITE_NULL) {
                return false;
            }
            settleType(columns()[c], readColumn(statement.get(), c + first, 0));
            return true;
        });
        row(keyed() ? sqlite3_column_int64(statement.get(), 0) : 0, readValues);
    }
}

bool SqliteRecordset::fetchRow(qint64 rowid, std::vector<rt::Variant>& values) const {
    sqlite3* handle = db();
    if (!fetchStatement_) {
        fetchStatement_ = std::make_unique<Prepared>(*connection_, fetchSql_, source());
    }
    sqlite3_stmt* statement = fetchStatement_->get();
    sqlite3_bind_int64(statement, 1, rowid);
    // Reset however it ends: a statement left stepped would hold the file's read lock.
    struct Reset {
        sqlite3_stmt* statement;
        ~Reset() { sqlite3_reset(statement); }
    } reset{statement};
    const int code = sqlite3_step(statement);
    if (code == SQLITE_DONE) {
        return false;
    }
    if (code != SQLITE_ROW) {
        throw sqliteFailure(handle, code, source());
    }
    const int count = int(columns().size());
    values.resize(count);
    for (int c = 0; c < count; ++c) {
        values[c] = readColumn(statement, c, columns()[c].info.type);
    }
    return true;
}

namespace {

class SqliteCriteria : public Dynaset::CriteriaTest {
public:
    SqliteCriteria(Connection& connection, const QString& sql, const QString& criteria)
        : test_(connection, sql, criteria, FailureContext::Criteria) {}
    bool matches(const std::vector<rt::Variant>& parameters) override {
        test_.reset();
        for (size_t p = 0; p < parameters.size(); ++p) {
            test_.bind(int(p) + 1, parameters[p]);
        }
        const bool matched = test_.step() && sqlite3_column_type(test_.get(), 0) != SQLITE_NULL &&
                             sqlite3_column_double(test_.get(), 0) != 0;
        test_.reset();
        return matched;
    }

private:
    Prepared test_;
};

}  // namespace

std::unique_ptr<Dynaset::CriteriaTest> SqliteRecordset::prepareCriteria(
    const dialect::Tokens& tokens, const std::vector<bool>& textParameters,
    const QString& criteria) {
    dialect::Tokens collated = tokens;
    for (dialect::Token& token : collated) {
        const int parameter = token.kind == dialect::Token::Symbol && token.text.startsWith('?')
                                  ? token.text.mid(1).toInt()
                                  : 0;
        if (parameter > 0 && textParameters[size_t(parameter) - 1]) {
            token.text = "(" + token.text + " COLLATE NOCASE)";
        }
    }
    return std::make_unique<SqliteCriteria>(*connection_,
                                            "SELECT (" + dialect::render(collated) + ")", criteria);
}

std::vector<std::pair<QString, rt::Variant>> SqliteRecordset::columnDefaults() {
    std::vector<std::pair<QString, rt::Variant>> defaults;
    Prepared info(db(), "PRAGMA table_info(" + quoteName(table()) + ")", source());
    while (info.step()) {
        if (sqlite3_column_type(info.get(), 4) == SQLITE_NULL) {
            continue;
        }
        const QString name =
            QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 1)));
        const QString expression =
            QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 4)));
        const QString declared =
            QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 2)));
        Prepared value(db(), "SELECT " + expression, source());
        value.step();
        defaults.emplace_back(name, readColumn(value.get(), 0, fieldTypeOf(declared)));
    }
    return defaults;
}

qint64 SqliteRecordset::reserveCounter(const QString& column) {
    sqlite3* handle = db();
    OwnTransaction transaction(*connection_);
    Prepared highest(*connection_,
                     "SELECT max(COALESCE((SELECT seq FROM sqlite_sequence WHERE name = ?1), 0), "
                     "COALESCE((SELECT max(" +
                         quoteName(column) + ") FROM " + quoteName(table()) + "), 0))",
                     source());
    highest.bind(1, rt::Variant(table()));
    highest.step();
    const qint64 next = sqlite3_column_int64(highest.get(), 0) + 1;
    Prepared store(*connection_,
                   QStringLiteral("UPDATE sqlite_sequence SET seq = ?1 WHERE name = ?2"), source());
    store.bind(1, rt::Variant(next));
    store.bind(2, rt::Variant(table()));
    store.step();
    if (sqlite3_changes(handle) == 0) {
        Prepared add(*connection_,
                     QStringLiteral("INSERT INTO sqlite_sequence (name, seq) VALUES (?2, ?1)"),
                     source());
        add.bind(1, rt::Variant(next));
        add.bind(2, rt::Variant(table()));
        add.step();
    }
    transaction.commit();
    return next;
}

qint64 SqliteRecordset::insertRow(const QStringList& names,
                                  const std::vector<rt::Variant>& values) {
    QStringList columns;
    QStringList places;
    for (qsizetype i = 0; i < names.size(); ++i) {
        columns << quoteName(names[i]);
        places << QStringLiteral("?%1").arg(i + 1);
    }
    const QString sql = columns.isEmpty()
                            ? "INSERT INTO " + quoteName(table()) + " DEFAULT VALUES"
                            : "INSERT INTO " + quoteName(table()) + " (" + columns.join(", ") +
                                  ") VALUES (" + places.join(", ") + ")";
    Prepared insert(*connection_, sql, source());
    for (size_t v = 0; v < values.size(); ++v) {
        insert.bind(int(v) + 1, values[v]);
    }
    insert.step();
    return sqlite3_last_insert_rowid(db());
}

bool SqliteRecordset::updateRow(qint64 rowid, const QStringList& names,
                                const std::vector<rt::Variant>& values) {
    QStringList assignments;
    for (qsizetype i = 0; i < names.size(); ++i) {
        assignments << quoteName(names[i]) + QStringLiteral(" = ?%1").arg(i + 1);
    }
    Prepared update(*connection_,
                    "UPDATE " + quoteName(table()) + " SET " + assignments.join(", ") +
                        QStringLiteral(" WHERE rowid = ?%1").arg(values.size() + 1),
                    source());
    for (size_t v = 0; v < values.size(); ++v) {
        update.bind(int(v) + 1, values[v]);
    }
    update.bind(int(values.size()) + 1, rt::Variant(rowid));
    update.step();
    return sqlite3_changes(db()) != 0;
}

void SqliteRecordset::deleteRow(qint64 rowid) {
    Prepared remove(*connection_, "DELETE FROM " + quoteName(table()) + " WHERE rowid = ?1",
                    source());
    remove.bind(1, rt::Variant(rowid));
    remove.step();
}

}  // namespace engine
