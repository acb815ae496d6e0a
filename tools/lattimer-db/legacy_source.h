#pragma once

#include "platform/variant.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace installer {

// A column of a table in an office's legacy database file, as that file types it.
struct LegacyColumn {
    enum class Type {
        Boolean,
        Byte,
        Integer,
        Long,
        Currency,
        Single,
        Double,
        DateTime,
        Text,
        Memo,
        Binary,
        OleObject,
        ReplicationId,
        Numeric,
    };
    QString name;
    Type type = Type::Text;
    int size = 0;  // the characters a text holds
    int precision = 0;
    int scale = 0;  // digits of a numeric, and those after its point
    bool autoNumber = false;
};

// The tables of a legacy database and their rows. A row's values come in the order of the
// columns: Null for a null, else Boolean, Integer (a byte as well), Long, Currency, Single,
// Double, Date, String (a text, a memo, a replication id as {8-4-4-4-12}), Bytes (a binary or
// an OLE object), and a numeric as a String of its exact decimal digits. A file that can't be
// read is an InstallError.
class LegacySource {
public:
    virtual ~LegacySource() = default;
    virtual QStringList tables() = 0;
    virtual std::vector<LegacyColumn> columns(const QString& table) = 0;
    virtual void readRows(const QString& table,
                          const std::function<void(std::vector<rt::Variant>&&)>& row) = 0;
};

}  // namespace installer
