#include "platform/engine/engine.h"

#include "platform/engine/errors.h"
#include "platform/engine/field_types.h"
#include "platform/engine/pg_database.h"
#include "platform/engine/sqlite_database.h"

#include <QFile>

namespace engine {

namespace {
int lockWaitMilliseconds = 3000;
}

QString Field::name() const {
    return recordset_->fieldInfo(index_).name;
}
int Field::type() const {
    return recordset_->fieldInfo(index_).type;
}
qint32 Field::size() const {
    return recordset_->fieldInfo(index_).size;
}
rt::Variant Field::value() const {
    return recordset_->fieldValue(index_);
}
void Field::setValue(const rt::Variant& value) {
    recordset_->setFieldValue(index_, value);
}

rt::Variant Field::getChunk(qint64 offset, qint64 length) const {
    if (offset < 0 || length < 0) {
        throw error(InvalidArgument);
    }
    const rt::Variant whole = value();
    if (whole.isNull()) {
        return whole;
    }
    if (whole.type() == rt::VarType::Bytes) {
        return rt::Variant(whole.bytes().mid(offset, length));
    }
    return rt::Variant(whole.text().mid(offset, length));
}

void Field::appendChunk(const rt::Variant& piece) {
    rt::Variant current = value();
    // With the buffer's reference dropped first, the value grows in place instead of being
    // copied whole at every piece.
    setValue(rt::Variant());
    if (type() == dbLongBinary || type() == dbBinary) {
        QByteArray data = current.bytes();
        current = rt::Variant();
        data.append(piece.type() == rt::VarType::Bytes ? piece.bytes() : piece.text().toUtf8());
        setValue(rt::Variant(data));
    } else {
        QString text = current.text();
        current = rt::Variant();
        text.append(piece.type() == rt::VarType::Bytes ? QString::fromUtf8(piece.bytes())
                                                       : piece.text());
        setValue(rt::Variant(text));
    }
}

Field Recordset::field(int index) {
    if (index < 0 || index >= fieldCount()) {
        throw error(ItemNotFound);
    }
    return Field(this, index);
}

Field Recordset::field(const QString& name) {
    const int index = fieldIndex(name);
    if (index < 0) {
        throw error(ItemNotFound);
    }
    return Field(this, index);
}

std::unique_ptr<Database> openDatabase(const QString& path) {
    return pg::PgDatabase::isServerUri(path) ? pg::PgDatabase::open(path)
                                             : SqliteDatabase::open(path);
}

std::unique_ptr<Database> createDatabase(const QString& path) {
    return pg::PgDatabase::isServerUri(path) ? pg::PgDatabase::create(path)
                                             : SqliteDatabase::create(path);
}

QString tableDefinition(const QString& table, const std::vector<ColumnDeclaration>& columns) {
    QStringList definitions;
    for (const ColumnDeclaration& column : columns) {
        const QString name = "[" + column.name + "]";
        if (column.counter) {
            definitions << name + " INTEGER PRIMARY KEY AUTOINCREMENT";
            continue;
        }
        const QString base = column.type.section('(', 0, 0).trimmed().toUpper();
        const bool text = base.isEmpty() || base == "VARCHAR" || base == "TEXT" || base == "CHAR" ||
                          base == "LONGTEXT" || base == "MEMO";
        QString definition = name + " " + (column.type.isEmpty() ? "TEXT" : column.type);
        if (text) {
            definition += " COLLATE NOCASE";
            const qint32 size = fieldSizeOf(dbText, column.type);
            if (base == "VARCHAR" && column.type.contains('(')) {
                definition += QStringLiteral(" CHECK (length(%1) <= %2)").arg(name).arg(size);
            }
        }
        definitions << definition;
    }
    return "CREATE TABLE [" + table + "] (" + definitions.join(", ") + ")";
}

void removeDatabase(const QString& path) {
    if (pg::PgDatabase::isServerUri(path)) {
        pg::PgDatabase::drop(path);
    } else {
        QFile::remove(path);
    }
}

void setLockWait(int milliseconds) {
    lockWaitMilliseconds = milliseconds;
}

int lockWait() {
    return lockWaitMilliseconds;
}

Transaction::Transaction(Database& database) : database_(database) {
    database_.beginTrans();
}

Transaction::~Transaction() {
    if (open_) {
        try {
            database_.rollback();
        } catch (const rt::Error&) {
            // Nothing more can be undone; the failure that left the scope is the one to report.
        }
    }
}

void Transaction::commit() {
    database_.commitTrans();
    open_ = false;
}

}  // namespace engine
