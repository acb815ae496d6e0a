#include "platform/engine/engine.h"

#include "platform/engine/errors.h"
#include "platform/engine/sqlite_database.h"

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

rt::Variant Field::getChunk(qint64 offset, qint64 bytes) const {
    const rt::Variant whole = value();
    if (whole.isNull()) {
        return whole;
    }
    const QByteArray data =
        whole.type() == rt::VarType::Bytes ? whole.bytes() : whole.text().toUtf8();
    return rt::Variant(data.mid(offset, bytes));
}

void Field::appendChunk(const QByteArray& bytes) {
    const rt::Variant current = value();
    QByteArray data = current.type() == rt::VarType::Bytes ? current.bytes() : QByteArray();
    setValue(rt::Variant(data + bytes));
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
    return SqliteDatabase::open(path);
}

std::unique_ptr<Database> createDatabase(const QString& path) {
    return SqliteDatabase::create(path);
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
