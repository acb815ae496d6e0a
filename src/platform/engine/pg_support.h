#pragma once

#include "platform/engine/connection_state.h"
#include "platform/engine/dialect.h"
#include "platform/engine/errors.h"
#include "platform/variant.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <libpq-fe.h>

#include <memory>
#include <optional>
#include <vector>

// What the server backend's database and cursors share: the connection, statements with their
// values, and the mapping of values, definitions and failures between the server and the engine.
namespace engine::pg {

// The name of the column every table gets as the key a cursor finds its rows again by; `*`
// never shows it.
inline const QString kRowKey = QStringLiteral("engine_row");

struct Connection : ConnectionState {
    PGconn* conn = nullptr;
    ~Connection() override;
    PGconn* handle() const;  // raises 3420 once closed
    void close();

    // A table's column: its number, its name, its type as the suite declared it ("VARCHAR(50)",
    // "DATETIME" ...), kept in the column's comment, and whether it is a counter.
    struct Declared {
        int number = 0;
        QString name;
        QString type;
        bool counter = false;
    };
    // The table by its name; 3078 for no such table.
    Oid tableOid(const QString& table);
    // The table's columns in their order, the row key left out.
    std::vector<Declared> columnsOf(Oid table);
    std::vector<Declared> columnsOf(const QString& table) { return columnsOf(tableOid(table)); }
    std::optional<Declared> declared(Oid table, int column);
    // Definitions change what a table's columns are.
    void forgetDeclarations() {
        tables_.clear();
        columns_.clear();
    }

    // The type number of citext in this database, which each database gives its own.
    Oid citext = 0;
    // A read scope's snapshot is open: the server's other transactions read what was committed
    // before each statement, and others may commit between two.
    bool snapshot = false;

protected:
    bool readsStandStill() const override;

private:
    QHash<QString, Oid> tables_;
    QHash<Oid, std::vector<Declared>> columns_;
};

class Result {
public:
    explicit Result(PGresult* result) : result_(result) {}
    ~Result() { PQclear(result_); }
    Result(Result&& other) noexcept : result_(other.result_) { other.result_ = nullptr; }
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;
    PGresult* get() const { return result_; }
    int rows() const { return PQntuples(result_); }
    int columns() const { return PQnfields(result_); }
    bool isNull(int row, int column) const { return PQgetisnull(result_, row, column); }
    QString text(int row, int column) const;

private:
    PGresult* result_;
};

// Runs one statement with its values as $1, $2 ...; raises the engine's failure for what the
// server reports, worded with `original`. Inside a transaction a failed statement leaves the
// transaction as it was before it, as the embedded engine's statements do.
Result run(Connection& connection, const QString& sql, const std::vector<rt::Variant>& values = {},
           const QString& original = QString(), FailureContext context = FailureContext::Statement);

// Runs a statement that begins, ends or marks a transaction, outside any savepoint of run's.
void control(Connection& connection, const QString& sql);

// A statement's tokens as the server is to read them: the dialect's functions the server has no
// definition of (CDate, Format, Now, Date) computed here where their arguments are constants,
// and LIKE as the dialect's own function.
// A * of a select list is written out as the columns it stands for, so that the row key stays
// out of sight.
dialect::Tokens serverTokens(Connection& connection, const dialect::Tokens& tokens);

// A value as a variant of the column's engine type (0: by the server's type of the column).
rt::Variant readValue(const Result& result, int row, int column, int type);

// The suite's table definition (CREATE TABLE, ALTER TABLE ... ADD) in the server's terms: its
// types mapped, text without regard to case, a counter as an identity column, and the row key
// added to a new table. `declarations` receives each column's declared type, for the comments
// that keep it.
QString definition(const QString& sql, std::vector<std::pair<QString, QString>>& declarations,
                   QString& table);

QString quoteName(const QString& name);

}  // namespace engine::pg
