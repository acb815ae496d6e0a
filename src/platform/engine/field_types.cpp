#include "platform/engine/field_types.h"

#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/engine/engine.h"
#include "platform/engine/errors.h"

#include <QRegularExpression>

namespace engine {

int fieldTypeOf(const QString& declared) {
    const QString d = declared.toUpper();
    if (d.isEmpty()) {
        return 0;
    }
    struct Rule {
        const char* word;
        int type;
    };
    // Longer words first, so that SMALLINT is not taken for INT.
    static const Rule rules[] = {
        {"LONGTEXT", dbMemo},     {"MEMO", dbMemo},        {"LONGBINARY", dbLongBinary},
        {"BLOB", dbLongBinary},   {"IMAGE", dbLongBinary}, {"VARBINARY", dbBinary},
        {"BINARY", dbBinary},     {"BIT", dbBoolean},      {"BOOL", dbBoolean},
        {"YESNO", dbBoolean},     {"TINYINT", dbByte},     {"BYTE", dbByte},
        {"SMALLINT", dbInteger},  {"SHORT", dbInteger},    {"BIGINT", dbBigInt},
        {"COUNTER", dbLong},      {"INT", dbLong},         {"LONG", dbLong},
        {"CURRENCY", dbCurrency}, {"MONEY", dbCurrency},   {"SINGLE", dbSingle},
        {"REAL4", dbSingle},      {"DOUBLE", dbDouble},    {"FLOAT", dbDouble},
        {"REAL", dbDouble},       {"DECIMAL", dbDecimal},  {"NUMERIC", dbDecimal},
        {"DATE", dbDate},         {"TIME", dbDate},        {"GUID", dbGUID},
        {"CHAR", dbText},         {"TEXT", dbText},        {"STRING", dbText},
    };
    for (const Rule& rule : rules) {
        if (d.contains(QLatin1String(rule.word))) {
            return rule.type;
        }
    }
    return 0;
}

qint32 fieldSizeOf(int type, const QString& declared) {
    switch (type) {
        case dbBoolean:
        case dbByte:
            return 1;
        case dbInteger:
            return 2;
        case dbLong:
        case dbSingle:
            return 4;
        case dbCurrency:
        case dbDouble:
        case dbDate:
        case dbBigInt:
            return 8;
        case dbGUID:
            return 16;
        case dbText:
        case dbBinary: {
            static const QRegularExpression size(QStringLiteral("\\(\\s*(\\d+)\\s*\\)"));
            const auto match = size.match(declared);
            return match.hasMatch() ? match.captured(1).toInt() : 255;
        }
        default:
            return 0;
    }
}

QString declaredTypeOf(int type, qint32 size) {
    switch (type) {
        case dbBoolean:
            return QStringLiteral("BIT");
        case dbByte:
        case dbInteger:
            return QStringLiteral("SMALLINT");
        case dbLong:
            return QStringLiteral("INTEGER");
        case dbBigInt:
            return QStringLiteral("BIGINT");
        case dbCurrency:
            return QStringLiteral("CURRENCY");
        case dbSingle:
            return QStringLiteral("SINGLE");
        case dbDouble:
        case dbDecimal:
            return QStringLiteral("DOUBLE");
        case dbDate:
            return QStringLiteral("DATETIME");
        case dbBinary:
        case dbLongBinary:
            return QStringLiteral("LONGBLOB");
        case dbMemo:
            return QStringLiteral("LONGTEXT");
        default:
            return QStringLiteral("VARCHAR(%1)").arg(size > 0 ? size : 255);
    }
}

rt::Variant coerce(const rt::Variant& value, int type, qint32 size) {
    if (value.isNull() || value.isEmpty()) {
        return rt::Variant::null();
    }
    try {
        switch (type) {
            case dbBoolean:
                return rt::Variant(rt::CBool(value));
            case dbByte: {
                const qint16 number = rt::CInt(value);
                if (number < 0 || number > 255) {
                    throw rt::Error::standard(rt::Overflow);
                }
                return rt::Variant(number);
            }
            case dbInteger:
                return rt::Variant(rt::CInt(value));
            case dbLong:
                return rt::Variant(int(rt::CLng(value)));
            case dbCurrency:
                return rt::Variant::currency(rt::CCur(value));
            case dbSingle:
                return rt::Variant(rt::CSng(value));
            case dbDouble:
            case dbDecimal:
            case dbBigInt:
                return rt::Variant(rt::CDbl(value));
            case dbDate:
                return rt::Variant::date(rt::CDate(value));
            case dbBinary:
            case dbLongBinary:
                return value.type() == rt::VarType::Bytes ? value
                                                          : rt::Variant(rt::CStr(value).toUtf8());
            default: {
                const QString text = rt::CStr(value);
                if (type == dbText && size > 0 && text.size() > size) {
                    throw error(DataTooLong);
                }
                return rt::Variant(text);
            }
        }
    } catch (const rt::Error& failure) {
        if (failure.number() == rt::TypeMismatch) {
            throw error(ConversionError);
        }
        throw;
    }
}

}  // namespace engine
