#include "target.h"

#include "installation.h"
#include "platform/convert.h"
#include "platform/engine/errors.h"
#include "platform/rt_error.h"

namespace installer {

namespace {

constexpr size_t kRowsPerBatch = 2000;

}  // namespace

TargetDatabase::TargetDatabase(const QString& location) : location_(location) {
    try {
        db_ = engine::createDatabase(location);
        made_ = true;
        return;
    } catch (const rt::Error& failure) {
        if (failure.number() != engine::DatabaseExists) {
            throw InstallError("cannot create a database at " + location + ": " +
                               failure.description());
        }
    }
    db_ = engine::openDatabase(location);
    if (!db_->tableNames().isEmpty()) {
        throw InstallError(location +
                           " already holds tables; only a new or empty database is filled.");
    }
}

TargetDatabase::~TargetDatabase() {
    if (kept_) {
        return;
    }
    try {
        takeBack();
    } catch (...) {
        // The failure that brought us here is the one to report.
    }
}

void TargetDatabase::takeBack() {
    db_->close();
    if (made_) {
        engine::removeDatabase(location_);
        return;
    }
    auto again = engine::openDatabase(location_);
    for (const QString& table : again->tableNames()) {
        again->deleteTable(table);
    }
}

RowBatches::RowBatches(engine::Database& to, const QString& table, const QStringList& columns,
                       std::function<void(const QString&)> progress)
    : to_(to), table_(table), columns_(columns), progress_(std::move(progress)) {}

void RowBatches::add(std::vector<rt::Variant>&& row) {
    batch_.push_back(std::move(row));
    if (batch_.size() == kRowsPerBatch) {
        flush();
        progress_(QStringLiteral("%1: %2 rows").arg(table_).arg(added_));
    }
}

qint64 RowBatches::finish() {
    flush();
    return added_;
}

void RowBatches::flush() {
    if (batch_.empty()) {
        return;
    }
    to_.insertRows(table_, columns_, batch_);
    added_ += qint64(batch_.size());
    batch_.clear();
}

qint32 rowCount(engine::Database& db, const QString& table) {
    return rt::CLng(db.openRecordset("SELECT count(*) FROM [" + table + "]")->field(0).value());
}

}  // namespace installer
