#pragma once

#include "platform/engine/dialect.h"
#include "platform/engine/dynaset.h"
#include "platform/engine/sqlite_support.h"

#include <memory>
#include <vector>

namespace engine {

// A dynaset over the embedded engine: a row of one table is found again by its rowid.
class SqliteRecordset : public Dynaset {
public:
    SqliteRecordset(std::shared_ptr<Connection> connection, const dialect::Statement& statement,
                    QString source);

protected:
    void readRows(const std::function<void(qint64 key, const ValueReader& values)>& row) override;
    bool fetchRow(qint64 rowid, std::vector<rt::Variant>& values) const override;
    std::unique_ptr<CriteriaTest> prepareCriteria(const dialect::Tokens& tokens,
                                                  const std::vector<bool>& textParameters,
                                                  const QString& criteria) override;
    qint64 insertRow(const QStringList& names, const std::vector<rt::Variant>& values) override;
    bool updateRow(qint64 rowid, const QStringList& names,
                   const std::vector<rt::Variant>& values) override;
    void deleteRow(qint64 rowid) override;
    qint64 reserveCounter(const QString& column) override;
    std::vector<std::pair<QString, rt::Variant>> columnDefaults() override;
    bool connectionOpen() const override { return connection_->db != nullptr; }
    void release() override { fetchStatement_.reset(); }

private:
    sqlite3* db() const;
    void describe(sqlite3_stmt* statement, int first);
    void settleType(Column& column, const rt::Variant& value);

    std::shared_ptr<Connection> connection_;  // first, so that it outlives the statement below
    QString sql_;       // the embedded engine's text, with the rowid first where updatable
    QString fetchSql_;  // one row of the table by its rowid, with the cursor's columns
    std::vector<int> itemTypes_;
    mutable std::unique_ptr<Prepared> fetchStatement_;
};

}  // namespace engine
