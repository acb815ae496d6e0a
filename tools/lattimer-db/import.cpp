#include "import.h"

#include "installation.h"
#include "platform/convert.h"
#include "platform/engine/engine.h"
#include "platform/rt_error.h"
#include "schema.h"
#include "target.h"

#include <algorithm>

namespace installer {

namespace {

// The suite's table of that name, matched as the legacy engine matches names: whatever the
// case.
const TableDef* knownTable(const QString& name) {
    for (const TableDef& table : schema()) {
        if (table.name.compare(name, Qt::CaseInsensitive) == 0) {
            return &table;
        }
    }
    return nullptr;
}

QString typeWord(const LegacyColumn& column) {
    using Type = LegacyColumn::Type;
    switch (column.type) {
        case Type::Boolean:
            return QStringLiteral("BIT");
        case Type::Byte:
            return QStringLiteral("BYTE");
        case Type::Integer:
            return QStringLiteral("SHORT");
        case Type::Long:
            return column.autoNumber ? QStringLiteral("COUNTER") : QStringLiteral("LONG");
        case Type::Currency:
            return QStringLiteral("CURRENCY");
        case Type::Single:
            return QStringLiteral("SINGLE");
        case Type::Double:
            return QStringLiteral("DOUBLE");
        case Type::DateTime:
            return QStringLiteral("DATETIME");
        case Type::Text:
            return QStringLiteral("TEXT(%1)").arg(column.size > 0 ? column.size : 255);
        case Type::Memo:
            return QStringLiteral("MEMO");
        case Type::Binary:
        case Type::OleObject:
            return QStringLiteral("LONGBINARY");
        case Type::ReplicationId:
            return QStringLiteral("TEXT(38)");  // {8-4-4-4-12}
        case Type::Numeric:
            return QStringLiteral("DECIMAL(%1,%2)").arg(column.precision).arg(column.scale);
    }
    return QStringLiteral("MEMO");
}

// Where a legacy table lands: the table it is made as, and the column of that table each legacy
// column's values go to.
struct Landing {
    TableDef table;
    QStringList columns;
    int counter = -1;  // the legacy column that fills the table's counter
};

Landing landingOf(const QString& name, const std::vector<LegacyColumn>& columns) {
    Landing landing;
    const TableDef* known = knownTable(name);
    landing.table = known ? *known : TableDef{name, {}, {}};
    std::vector<ColumnDef>& ours = landing.table.columns;
    for (const LegacyColumn& column : columns) {
        auto same = std::find_if(ours.begin(), ours.end(), [&](const ColumnDef& def) {
            return def.name.compare(column.name, Qt::CaseInsensitive) == 0;
        });
        if (same == ours.end()) {
            same = ours.insert(ours.end(), {column.name, typeWord(column)});
        }
        if (same->type == QLatin1String("COUNTER")) {
            landing.counter = int(landing.columns.size());
        }
        landing.columns << same->name;
    }
    return landing;
}

// A numeric's exact digits as the engine takes them: a Currency where four decimals hold the
// number exactly, else the nearest Double.
rt::Variant numericValue(const rt::Variant& digits) {
    if (!digits.isString()) {
        return digits;
    }
    QString text = digits.text();
    if (text.contains('.')) {
        while (text.endsWith('0')) {
            text.chop(1);
        }
        if (text.endsWith('.')) {
            text.chop(1);
        }
    }
    const qsizetype point = text.indexOf('.');
    const qsizetype decimals = point < 0 ? 0 : text.size() - point - 1;
    if (decimals <= 4) {
        bool exact = false;
        const qint64 scaled =
            (QString(text).remove('.') + QString(4 - decimals, '0')).toLongLong(&exact);
        if (exact) {
            return rt::Variant::currency(scaled);
        }
    }
    return rt::Variant(text.toDouble());
}

qint64 importTable(LegacySource& source, engine::Database& to, const QString& name,
                   const std::function<void(const QString&)>& progress) {
    const std::vector<LegacyColumn> columns = source.columns(name);
    const Landing landing = landingOf(name, columns);
    createTable(to, landing.table);
    const QString table = landing.table.name;
    RowBatches batches(to, table, landing.columns, progress);
    qint64 highest = 0;
    source.readRows(name, [&](std::vector<rt::Variant>&& row) {
        for (size_t c = 0; c < columns.size(); ++c) {
            if (columns[c].type == LegacyColumn::Type::Numeric) {
                row[c] = numericValue(row[c]);
            }
        }
        if (landing.counter >= 0 && !row[landing.counter].isNull()) {
            highest = std::max<qint64>(highest, rt::CLng(row[landing.counter]));
        }
        batches.add(std::move(row));
    });
    const qint64 rows = batches.finish();
    if (landing.counter >= 0) {
        to.setCounterPosition(table, highest);
    }
    if (rowCount(to, table) != rows) {
        throw InstallError(QStringLiteral("%1 has %2 rows after the import against %3 read")
                               .arg(table)
                               .arg(rowCount(to, table))
                               .arg(rows));
    }
    return rows;
}

}  // namespace

std::vector<ImportedTable> importDatabase(LegacySource& source, const QString& target,
                                          const std::function<void(const QString&)>& progress) {
    TargetDatabase to(target);
    std::vector<ImportedTable> imported;
    for (const QString& table : source.tables()) {
        progress("importing " + table);
        try {
            imported.push_back({table, importTable(source, *to, table, progress)});
        } catch (const rt::Error& failure) {
            throw InstallError("cannot import the table " + table + " into " + target + ": " +
                               failure.description());
        }
        progress(QStringLiteral("%1: %2 rows").arg(table).arg(imported.back().rows));
    }
    to.keep();
    return imported;
}

}  // namespace installer
