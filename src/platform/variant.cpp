#include "platform/variant.h"

#include <limits>

namespace rt {

Variant::Variant(qint64 value) {
    if (value >= std::numeric_limits<qint32>::min() &&
        value <= std::numeric_limits<qint32>::max()) {
        type_ = VarType::Long;
        int_ = value;
    } else {
        type_ = VarType::Double;
        real_ = static_cast<double>(value);
    }
}

Variant Variant::null() {
    Variant v;
    v.type_ = VarType::Null;
    return v;
}

Variant Variant::date(double serial) {
    Variant v;
    v.type_ = VarType::Date;
    v.real_ = serial;
    return v;
}

Variant Variant::currency(qint64 scaledBy10000) {
    Variant v;
    v.type_ = VarType::Currency;
    v.int_ = scaledBy10000;
    return v;
}

bool Variant::isNumber() const {
    switch (type_) {
        case VarType::Integer:
        case VarType::Long:
        case VarType::Single:
        case VarType::Double:
        case VarType::Currency:
            return true;
        default:
            return false;
    }
}

bool operator==(const Variant& a, const Variant& b) {
    return a.type_ == b.type_ && a.int_ == b.int_ && a.real_ == b.real_ && a.text_ == b.text_ &&
           a.bytes_ == b.bytes_;
}

}  // namespace rt
