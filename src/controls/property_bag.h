#pragma once

#include "platform/variant.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <utility>
#include <vector>

// The stored properties of a control on a saved form: named values in the order they were
// written. A value equal to its default is not stored, so a form keeps only what differs.
class PropertyBag {
public:
    // The stored value, or `defaultValue` when none is stored.
    rt::Variant ReadProperty(const QString& name, const rt::Variant& defaultValue = {}) const;
    // Stores the value, or drops the stored one when the value equals `defaultValue`.
    void WriteProperty(const QString& name, const rt::Variant& value,
                       const rt::Variant& defaultValue = {});

    bool contains(const QString& name) const;
    QStringList names() const;  // in the order written

    // For keeping a form in settings or a document; each value keeps its kind.
    QVariantMap toVariantMap() const;
    static PropertyBag fromVariantMap(const QVariantMap& map);

private:
    std::vector<std::pair<QString, rt::Variant>> values_;
};
