#include "controls/property_bag.h"

#include "platform/convert.h"
#include "platform/dates.h"

#include <QDateTime>

#include <algorithm>

namespace {

bool isNumberLike(const rt::Variant& value) {
    return value.isNumber() || value.type() == rt::VarType::Boolean;
}

// Equal as the runtime's comparison sees it: 0 as an Integer is the default 0 as a Single.
bool sameValue(const rt::Variant& a, const rt::Variant& b) {
    if (isNumberLike(a) && isNumberLike(b)) {
        return rt::CDbl(a) == rt::CDbl(b);
    }
    return a == b;
}

QVariant toQVariant(const rt::Variant& value) {
    switch (value.type()) {
        case rt::VarType::Empty:
            return {};
        case rt::VarType::Null:
            return QVariant::fromValue(nullptr);
        case rt::VarType::Integer:
            return QVariant::fromValue(qint16(value.integerValue()));
        case rt::VarType::Long:
            return QVariant::fromValue(qint32(value.integerValue()));
        case rt::VarType::Single:
            return QVariant::fromValue(float(value.realValue()));
        case rt::VarType::Double:
            return QVariant::fromValue(value.realValue());
        case rt::VarType::Currency:
            // The only 64-bit integer a bag holds, so it reads back as an amount.
            return QVariant::fromValue(qint64(value.integerValue()));
        case rt::VarType::Date: {
            const rt::DateParts d = rt::splitDate(value.realValue());
            return QDateTime(QDate(d.year, d.month, d.day), QTime(d.hour, d.minute, d.second));
        }
        case rt::VarType::String:
            return value.text();
        case rt::VarType::Boolean:
            return value.integerValue() != 0;
        case rt::VarType::Bytes:
            return value.bytes();
    }
    return {};
}

rt::Variant fromQVariant(const QVariant& value) {
    switch (value.typeId()) {
        case QMetaType::UnknownType:
            return {};
        case QMetaType::Nullptr:
            return rt::Variant::null();
        case QMetaType::Short:
            return value.value<qint16>();
        case QMetaType::Int:
            return value.toInt();
        case QMetaType::Float:
            return value.toFloat();
        case QMetaType::Double:
            return value.toDouble();
        case QMetaType::LongLong:
            return rt::Variant::currency(value.toLongLong());
        case QMetaType::QDateTime: {
            const QDateTime when = value.toDateTime();
            return rt::Variant::date(
                rt::joinDate({when.date().year(), when.date().month(), when.date().day(),
                              when.time().hour(), when.time().minute(), when.time().second()}));
        }
        case QMetaType::Bool:
            return value.toBool();
        case QMetaType::QByteArray:
            return value.toByteArray();
        default:
            return value.toString();
    }
}

}  // namespace

rt::Variant PropertyBag::ReadProperty(const QString& name, const rt::Variant& defaultValue) const {
    const auto found = std::find_if(values_.begin(), values_.end(),
                                    [&](const auto& entry) { return entry.first == name; });
    return found == values_.end() ? defaultValue : found->second;
}

void PropertyBag::WriteProperty(const QString& name, const rt::Variant& value,
                                const rt::Variant& defaultValue) {
    std::erase_if(values_, [&](const auto& entry) { return entry.first == name; });
    if (!sameValue(value, defaultValue)) {
        values_.emplace_back(name, value);
    }
}

bool PropertyBag::contains(const QString& name) const {
    return names().contains(name);
}

QStringList PropertyBag::names() const {
    QStringList result;
    for (const auto& entry : values_) {
        result << entry.first;
    }
    return result;
}

QVariantMap PropertyBag::toVariantMap() const {
    QVariantMap map;
    for (const auto& [name, value] : values_) {
        map.insert(name, toQVariant(value));
    }
    return map;
}

PropertyBag PropertyBag::fromVariantMap(const QVariantMap& map) {
    PropertyBag bag;
    for (auto it = map.begin(); it != map.end(); ++it) {
        bag.values_.emplace_back(it.key(), fromQVariant(it.value()));
    }
    return bag;
}
