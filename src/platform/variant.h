#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>

namespace rt {

// The kinds of value a variant can hold, numbered as the runtime's VarType.
enum class VarType {
    Empty = 0,
    Null = 1,
    Integer = 2,  // 16-bit
    Long = 3,     // 32-bit
    Single = 4,
    Double = 5,
    Currency = 6,  // 64-bit integer scaled by 10000
    Date = 7,      // day serial, 0 = 30 Dec 1899, fraction = time of day
    String = 8,
    Boolean = 11,  // True is -1
    Bytes = 8209,  // byte array
};

// A tagged value: nothing at all (Empty), Null, a number, a date, a text, a boolean or bytes.
class Variant {
public:
    Variant() = default;
    Variant(qint16 value) : type_(VarType::Integer), int_(value) {}
    Variant(int value) : type_(VarType::Long), int_(value) {}
    Variant(qint64 value);
    Variant(float value) : type_(VarType::Single), real_(value) {}
    Variant(double value) : type_(VarType::Double), real_(value) {}
    Variant(bool value) : type_(VarType::Boolean), int_(value ? -1 : 0) {}
    Variant(const QString& value) : type_(VarType::String), text_(value) {}
    Variant(const char* value) : type_(VarType::String), text_(QString::fromUtf8(value)) {}
    Variant(const QByteArray& value) : type_(VarType::Bytes), bytes_(value) {}

    static Variant null();
    static Variant date(double serial);
    static Variant currency(qint64 scaledBy10000);

    VarType type() const { return type_; }
    bool isEmpty() const { return type_ == VarType::Empty; }
    bool isNull() const { return type_ == VarType::Null; }
    bool isString() const { return type_ == VarType::String; }
    bool isDate() const { return type_ == VarType::Date; }
    // Integer, Long, Single, Double or Currency.
    bool isNumber() const;

    // Raw access, no conversion: the caller has checked the type.
    qint64 integerValue() const { return int_; }
    double realValue() const { return real_; }
    const QString& text() const { return text_; }
    const QByteArray& bytes() const { return bytes_; }

    friend bool operator==(const Variant& a, const Variant& b);

private:
    VarType type_ = VarType::Empty;
    qint64 int_ = 0;   // Integer, Long, Currency, Boolean
    double real_ = 0;  // Single, Double, Date
    QString text_;
    QByteArray bytes_;
};

}  // namespace rt
