#pragma once

#include "platform/engine/dialect.h"
#include "platform/engine/engine.h"

#include <memory>

namespace engine::pg {

struct Connection;

// A database on a PostgreSQL server, named by a postgresql:// URI. Text columns are citext,
// dates are day serials as on the embedded engine, a counter is an identity column, and every
// table has a row key that `*` doesn't show.
class PgDatabase : public Database {
public:
    // Whether the path names a database on a server rather than a file.
    static bool isServerUri(const QString& path);
    static std::unique_ptr<Database> open(const QString& uri);
    static std::unique_ptr<Database> create(const QString& uri);
    // Removes the database from its server, when nobody is connected to it.
    static void drop(const QString& uri);
    ~PgDatabase() override;

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
    QString name() const override { return uri_; }

private:
    PgDatabase(std::shared_ptr<Connection> connection, QString uri);
    void define(const QString& sql);
    void selectInto(const dialect::Statement& statement);
    void keepCounterAhead(const dialect::Tokens& insert);
    void endTransaction(bool keep);

    std::shared_ptr<Connection> connection_;
    QString uri_;
};

}  // namespace engine::pg
