#pragma once

#include "platform/engine/engine.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace installer {

// The database a copy or an import fills: made new, or an existing database without tables;
// one that holds tables is refused and left as it is. Until kept it is taken back when this
// goes, so that a failure leaves nothing behind: removed when it was made here, emptied again
// when it was there.
class TargetDatabase {
public:
    explicit TargetDatabase(const QString& location);
    ~TargetDatabase();
    TargetDatabase(const TargetDatabase&) = delete;
    TargetDatabase& operator=(const TargetDatabase&) = delete;

    engine::Database& operator*() { return *db_; }
    engine::Database* operator->() { return db_.get(); }
    void keep() { kept_ = true; }

private:
    void takeBack();

    QString location_;
    std::unique_ptr<engine::Database> db_;
    bool made_ = false;
    bool kept_ = false;
};

// Adds a table's rows a batch at a time, each batch one unit, and tells the count so far after
// each.
class RowBatches {
public:
    RowBatches(engine::Database& to, const QString& table, const QStringList& columns,
               std::function<void(const QString&)> progress);
    void add(std::vector<rt::Variant>&& row);
    // Adds what is left; the count of rows added.
    qint64 finish();

private:
    void flush();

    engine::Database& to_;
    QString table_;
    QStringList columns_;
    std::function<void(const QString&)> progress_;
    std::vector<std::vector<rt::Variant>> batch_;
    qint64 added_ = 0;
};

qint32 rowCount(engine::Database& db, const QString& table);

}  // namespace installer
