#pragma once

#include "platform/engine/dialect.h"
#include "platform/engine/engine.h"

#include <memory>

namespace engine {

struct Connection;

// The embedded engine: a database file opened with SQLite. Text columns compare without regard
// to case by their collation; dates are day serials; a counter is an AUTOINCREMENT key.
class SqliteDatabase : public Database {
public:
    static std::unique_ptr<Database> open(const QString& path);
    static std::unique_ptr<Database> create(const QString& path);
    ~SqliteDatabase() override;

    QStringList tableNames() override;
    std::vector<ColumnDeclaration> columnsOf(const QString& table) override;
    void insertRows(const QString& table, const QStringList& columns,
                    const std::vector<std::vector<rt::Variant>>& rows) override;
    qint64 counterPosition(const QString& table) override;
    void setCounterPosition(const QString& table, qint64 position) override;
    std::unique_ptr<Recordset> openRecordset(const QString& source) override;
    void execute(const QString& sql) override;
    void close() override;
    void deleteTable(const QString& name) override;
    rt::Variant property(const QString& name) const override;
    void setProperty(const QString& name, const rt::Variant& value) override;
    QStringList propertyNames() const override;
    bool beginRead() override;
    void endRead() override;
    void beginTrans() override;
    void commitTrans() override;
    void rollback() override;
    QString name() const override { return path_; }

private:
    SqliteDatabase(std::shared_ptr<Connection> connection, QString path);
    void selectInto(const dialect::Statement& statement);
    // The levels of transaction open, squared with SQLite first: the count is read only here.
    int& openLevels();
    // Commits or rolls back the innermost transaction.
    void endTransaction(bool keep);

    std::shared_ptr<Connection> connection_;
    QString path_;
};

}  // namespace engine
