#include "copy.h"

#include "installation.h"
#include "platform/convert.h"
#include "platform/engine/engine.h"
#include "platform/engine/errors.h"
#include "schema.h"
#include "target.h"

#include <QStringList>

#include <stdexcept>

namespace installer {

namespace {

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
    RowBatches batches(to, table, names, progress);
    for (; !rows->eof(); rows->moveNext()) {
        std::vector<rt::Variant> row;
        for (int c = 0; c < rows->fieldCount(); ++c) {
            row.push_back(rows->fieldValue(c));
        }
        batches.add(std::move(row));
    }
    batches.finish();
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
    TargetDatabase to(target);
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
    } catch (const rt::Error& failure) {
        throw InstallError("cannot copy " + source + " to " + target + ": " +
                           failure.description());
    }
    to.keep();
}

}  // namespace installer
