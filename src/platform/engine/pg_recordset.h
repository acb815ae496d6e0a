#pragma once

#include "platform/engine/dialect.h"
#include "platform/engine/dynaset.h"
#include "platform/engine/pg_support.h"

#include <memory>
#include <vector>

namespace engine::pg {

// A dynaset on a server: a row of one table is found again by its row key.
class PgRecordset : public Dynaset {
public:
    PgRecordset(std::shared_ptr<Connection> connection, const dialect::Statement& statement,
                QString source);

protected:
    void readRows(const std::function<void(qint64 key, const ValueReader& values)>& row) override;
    bool fetchRow(qint64 key, std::vector<rt::Variant>& values) const override;
    std::unique_ptr<CriteriaTest> prepareCriteria(const dialect::Tokens& tokens,
                                                  const std::vector<bool>& textParameters,
                                                  const QString& criteria) override;
    qint64 insertRow(const QStringList& names, const std::vector<rt::Variant>& values) override;
    bool updateRow(qint64 key, const QStringList& names,
                   const std::vector<rt::Variant>& values) override;
    void deleteRow(qint64 key) override;
    qint64 reserveCounter(const QString& column) override;
    std::vector<std::pair<QString, rt::Variant>> columnDefaults() override;
    bool connectionOpen() const override { return connection_->conn != nullptr; }

private:
    void describe(const Result& result, int first);

    std::shared_ptr<Connection> connection_;
    QString sql_;       // the server's text, with the row key first where updatable
    QString fetchSql_;  // one row of the table by its key, with the cursor's columns
    std::vector<int> itemTypes_;
    Oid tableOid_ = 0;        // the table whose rows can be written
    std::vector<int> shown_;  // the result's columns the cursor shows, the row key left out
};

}  // namespace engine::pg
