#include "data/recset.h"

#include "data/session.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/errors.h"

#include <optional>

ColumnRef::operator rt::Variant() const {
    return recset_.readColumn(index_);
}

ColumnRef& ColumnRef::operator=(const rt::Variant& value) {
    recset_.writeColumn(index_, value);
    return *this;
}

engine::Field Fields::Item(const rt::Variant& index) const {
    if (index.isString()) {
        return recordset_->field(index.text());
    }
    return recordset_->field(int(index.integerValue()));
}

engine::Recordset& RecSet::rs() const {
    if (!recordset_) {
        throw rt::Error::standard(rt::ObjectNotSet);
    }
    return *recordset_;
}

engine::Field RecSet::field(const rt::Variant& index) const {
    return fields().Item(index);
}

void RecSet::CloseRS() {
    rs().close();
}
void RecSet::CancelUpdate() {
    rs().cancelUpdate();
}
void RecSet::Delete() {
    rs().deleteCurrent();
}
bool RecSet::Eof() const {
    return rs().eof();
}
bool RecSet::Bof() const {
    return rs().bof();
}
void RecSet::MoveFirst() {
    rs().moveFirst();
}
void RecSet::MoveNext() {
    rs().moveNext();
}
void RecSet::MovePrevious() {
    rs().movePrevious();
}
void RecSet::MoveLast() {
    rs().moveLast();
}

void RecSet::Move(qint32 lRows, const rt::Variant&) {
    rs().moveFirst();
    rs().move(lRows);
}

qint32 RecSet::AbsolutePosition() const {
    return rs().absolutePosition();
}
qint32 RecSet::RecordCount() const {
    return rs().recordCount();
}

bool RecSet::FindFirst(const QString& sql) {
    QString text = sql;
    return FindRecord(text, QString(), rt::Variant(), QString(), rt::Variant());
}

bool RecSet::FindNext(const QString& sql) {
    rs().findNext(sql);
    return !rs().noMatch();
}

bool RecSet::FindRecord(QString& sql, const QString&, const rt::Variant&,
                        const QString& conditionfield2, const rt::Variant& value2) {
    if (!conditionfield2.isEmpty()) {
        sql += " AND " + conditionfield2 + " = " + rt::CStr(value2);
    }
    rs().findFirst(sql);
    return !rs().noMatch();
}

void RecSet::stamp(const char* column, const rt::Variant& value) {
    // A table without the column simply gets no stamp.
    try {
        writeColumn(QString::fromLatin1(column), value);
    } catch (const rt::Error&) {
    }
}

namespace {

// Before logon there is no session user, and rows get no stamp of who.
std::optional<qint32> currentUser() {
    return gUsers.empty() ? std::nullopt : std::optional<qint32>(gUsers(0).id);
}

}  // namespace

void RecSet::Edit() {
    rs().edit();
    stamp("lastedit", rt::Variant::date(rt::Now()));
    if (const auto user = currentUser()) {
        stamp("lastmodby", *user);
    }
}

void RecSet::AddNew() {
    rs().addNew();
    const rt::Variant now = rt::Variant::date(rt::Now());
    stamp("lastedit", now);
    stamp("addedon", now);
    if (const auto user = currentUser()) {
        stamp("addedby", *user);
        stamp("lastmodby", *user);
    }
}

void RecSet::ReQuery() {
    rs().requery();
}
void RecSet::Update() {
    rs().update();
}

void RecSet::locRecordset(std::unique_ptr<engine::Recordset> recordset) {
    recordset_ = std::move(recordset);
}

rt::Variant RecSet::readColumn(const rt::Variant& index) const {
    return nullFree(field(index));
}

int RecSet::ColumnIndex(const QString& name) const {
    const int index = rs().fieldIndex(name);
    if (index < 0) {
        throw engine::error(engine::ItemNotFound);
    }
    return index;
}

rt::Variant RecSet::ColsAt(int index) const {
    return nullFree(rs().field(index));
}

rt::Variant RecSet::nullFree(const engine::Field& f) {
    rt::Variant value = f.value();
    if (!value.isNull()) {
        return value;
    }
    switch (f.type()) {
        case 18:  // char
        case engine::dbMemo:
        case engine::dbText:
            return rt::Variant(QString());
        case engine::dbBigInt:
        case engine::dbByte:
        case engine::dbCurrency:
        case engine::dbDecimal:
        case engine::dbDouble:
        case 21:  // float
        case engine::dbInteger:
        case engine::dbLong:
        case 19:  // numeric
        case engine::dbSingle:
            return rt::Variant(qint16(0));
        case engine::dbBoolean:
            return rt::Variant(false);
        default:
            return value;
    }
}

void RecSet::writeColumn(const rt::Variant& index, const rt::Variant& value) {
    field(index).setValue(value);
}

rt::Variant RecSet::ColsNoErr(const rt::Variant& index) const {
    try {
        return field(index).value();
    } catch (const rt::Error&) {
        return rt::Variant();
    }
}

rt::Variant RecSet::ColsWithNull(const rt::Variant& index) const {
    return field(index).value();
}

Fields RecSet::fields() const {
    return Fields(&rs());
}

bool RecSet::NoMatch() const {
    return rs().noMatch();
}

qint32 RecSet::FieldSize(const QString& fld) const {
    return field(fld).size();
}
