#pragma once

#include "platform/engine/connection_state.h"
#include "platform/engine/errors.h"
#include "platform/engine/field_types.h"
#include "platform/rt_error.h"
#include "platform/variant.h"

#include <QString>

#include <sqlite3.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

// What the embedded backend's database and cursors share: the open handle, prepared
// statements, and the mapping of values and failures between SQLite and the engine.
namespace engine {

struct Connection : ConnectionState {
    sqlite3* db = nullptr;
    ~Connection() override;
    sqlite3* handle() const;  // raises 3420 once closed
    // Finalizes the statements kept for reuse and closes the handle; statements still held by
    // cursors are finalized when they are given back.
    void close();

    // Statements kept prepared for the next use of the same text. One in use is out of the cache,
    // so that two users of the same text never share a statement; nullptr when none is idle.
    sqlite3_stmt* takeStatement(const QByteArray& sql);
    // Reset and unbound, it waits for the next use (the least recently used go past a limit).
    void giveBackStatement(QByteArray sql, sqlite3_stmt* statement);

protected:
    bool readsStandStill() const override;

private:
    struct Idle {
        QByteArray sql;
        sqlite3_stmt* statement;
    };
    std::vector<Idle> idle_;  // the most recently given back last
};

rt::Error sqliteFailure(sqlite3* db, int code, const QString& sql,
                        FailureContext context = FailureContext::Statement);

class Prepared {
public:
    // `sql` is the embedded engine's text; `original` words the failure. Raises 3142 when the
    // text holds more than one statement.
    Prepared(sqlite3* db, const QString& sql, const QString& original = QString(),
             FailureContext context = FailureContext::Statement);
    // The same, taken from the connection's statements kept for reuse and given back when done.
    Prepared(Connection& connection, const QString& sql, const QString& original = QString(),
             FailureContext context = FailureContext::Statement);
    ~Prepared();
    Prepared(const Prepared&) = delete;
    Prepared& operator=(const Prepared&) = delete;

    void bind(int index, const rt::Variant& value);  // from 1
    bool step();                                     // True with a row to read
    void reset();
    int columnCount() const;
    sqlite3_stmt* get() const { return statement_; }

private:
    void prepare(unsigned flags);

    sqlite3* db_;
    sqlite3_stmt* statement_ = nullptr;
    QString original_;
    FailureContext context_;
    Connection* cache_ = nullptr;
    QByteArray key_;
};

// Runs one statement that returns nothing.
void run(sqlite3* db, const QString& sql, const QString& original = QString());
void run(Connection& connection, const QString& sql, const QString& original = QString());

// Undoes the transaction SQLite has open, if any; for failure paths, which report their own
// failure rather than this one's.
void abandonTransaction(sqlite3* db);

// A transaction the engine begins for statements of its own that must all be done or none,
// when no transaction is open already (inside one, they belong to it). What isn't committed is
// undone when it ends, also when the commit itself fails, so that SQLite is never left in a
// transaction that nobody will end.
class OwnTransaction {
public:
    explicit OwnTransaction(Connection& connection);
    ~OwnTransaction();
    OwnTransaction(const OwnTransaction&) = delete;
    OwnTransaction& operator=(const OwnTransaction&) = delete;
    void commit();

private:
    sqlite3* db_;
    bool open_;
};

// A stored value as a variant of the column's engine type (0: by what is stored).
rt::Variant readColumn(sqlite3_stmt* statement, int column, int type);

QString quoteName(const QString& name);

}  // namespace engine
