#pragma once

#include "platform/variant.h"

#include <QString>

// The engine's field types as every backend declares and fills them.
namespace engine {

// The engine type of a declared column type; 0 where the declaration says nothing.
int fieldTypeOf(const QString& declaredType);
qint32 fieldSizeOf(int type, const QString& declaredType);
// A declaration of a column of that engine type and size, as the suite writes one.
QString declaredTypeOf(int type, qint32 size);

// A value made fit for a column of that type and size: 3421 when it can't be, 3163 when a
// text is too long.
rt::Variant coerce(const rt::Variant& value, int type, qint32 size);

}  // namespace engine
