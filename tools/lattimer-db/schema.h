#pragma once

#include "platform/engine/engine.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace installer {

// A column in the database's own type words: COUNTER, TEXT(n), MEMO, BYTE, SHORT, LONG, SINGLE,
// DOUBLE, CURRENCY, DECIMAL(precision,scale), DATETIME, BIT, LONGBINARY.
struct ColumnDef {
    QString name;
    QString type;
};

struct TableDef {
    QString name;
    std::vector<ColumnDef> columns;
    // Each index lists its columns, comma-separated.
    QStringList indexes;
};

// Every table of a database of version 6.5.
const std::vector<TableDef>& schema();

// The statements that make a table and its indexes.
QStringList createStatements(const TableDef& table);

void createTable(engine::Database& db, const TableDef& table);
const TableDef& tableDef(const QString& name);

}  // namespace installer
