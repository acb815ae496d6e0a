#include "copy.h"

#include "installation.h"
#include "platform/convert.h"
#include "platform/engine/engine.h"
#include "platform/engine/errors.h"
#include "schema.h"

#include <QStringList>

#include <stdexcept>

namespace installer {

namespace {

constexpr int kRowsPerBatch = 2000;

// The target: made new, or an existing database without tables.
std::unique_ptr<engine::Database> emptyTarget(const QString& target, bool& made) {
    try {
        auto db = engine::createDatabase(target);
        made = true;
        return db;
    } catch (const rt::Error& failure) {
        if (failure.number() != engine::DatabaseExists) {
            throw InstallError("cannot create a database at " + target + ": " +
                               failure.description());
        }
    }
    auto db = engine::openDatabase(target);
    if (!db->tableNames().isEmpty()) {
        throw InstallError(target +
                           " already holds tables; the copy goes only into an empty database.");
    }
    return db;
}

// The table as the installer makes it, indexes and all, when it is one of the suite's own with
// the same columns; else as its columns are declared.
QStringList definitionOf(const QString& table,
                         const std::vector<engine::ColumnDeclaration>& columns) {
    try {
        const TableDef& known = tableDef(table);
        bool same = known.columns.size() == columns.size();
        for (size_t c = 0; same && c < columns.size(); ++c) {
            same = known.columns[c].name.compare(columns[c].name, Qt::CaseInsensitive) == 0;
        }
        if (same) {
            return createStatements(known);
        }
    } catch (const std::invalid_argument&) {
    }
    return {engine::tableDefinition(table, columns)};
}

qint32 rowCount(engine::Database& db, const QString& table) {
    return rt::CLng(db.openRecordset("SELECT count(*) FROM [" + table + "]")->field(0).value());
}

void copyTable(engine::Database& from, engine::Database& to, const QString& table,
               const std::function<void(const QString&)>& progress) {
    const std::vector<engine::ColumnDeclaration> columns = from.columnsOf(table);
    for (const QString& statement : definitionOf(table, columns)) {
        to.execute(statement);
    }
    QStringList names;
    for (const engine::ColumnDeclaration& column : columns) {
        names << column.name;
    }
    engine::ReadScope together(from);
    auto rows = from.openRecordset("SELECT * FROM [" + table + "]");
    std::vector<std::vector<rt::Variant>> batch;
    qint64 copied = 0;
    for (; !rows->eof(); rows->moveNext()) {
        std::vector<rt::Variant>& row = batch.emplace_back();
        for (int c = 0; c < rows->fieldCount(); ++c) {
            row.push_back(rows->fieldValue(c));
        }
        if (batch.size() == kRowsPerBatch) {
            to.insertRows(table, names, batch);
            copied += qint64(batch.size());
            batch.clear();
            progress(QStringLiteral("%1: %2 rows").arg(table).arg(copied));
        }
    }
    to.insertRows(table, names, batch);
    to.setCounterPosition(table, from.counterPosition(table));
}

}  // namespace

void copyDatabase(const QString& source, const QString& target,
                  const std::function<void(const QString&)>& progress) {
    std::unique_ptr<engine::Database> from;
    try {
        from = engine::openDatabase(source);
    } catch (const rt::Error& failure) {
        throw InstallError("cannot open " + source + ": " + failure.description());
    }
    bool made = false;
    std::unique_ptr<engine::Database> to = emptyTarget(target, made);
    try {
        const QStringList tables = from->tableNames();
        for (const QString& table : tables) {
            progress("copying " + table);
            copyTable(*from, *to, table, progress);
        }
        for (const QString& name : from->propertyNames()) {
            to->setProperty(name, from->property(name));
        }
        for (const QString& table : tables) {
            const qint32 there = rowCount(*to, table);
            const qint32 here = rowCount(*from, table);
            if (there != here) {
                throw InstallError(QStringLiteral("%1 has %2 rows in the copy against %3")
                                       .arg(table)
                                       .arg(there)
                                       .arg(here));
            }
            progress(QStringLiteral("%1: %2 rows, the same on both sides").arg(table).arg(here));
        }
    } catch (...) {
        to->close();
        if (made) {
            engine::removeDatabase(target);
        } else {
            // An empty database that was there stays, emptied again of what the copy made.
            auto again = engine::openDatabase(target);
            for (const QString& table : again->tableNames()) {
                again->deleteTable(table);
            }
        }
        try {
            throw;
        } catch (const rt::Error& failure) {
            throw InstallError("cannot copy " + source + " to " + target + ": " +
                               failure.description());
        }
    }
}

}  // namespace installer
