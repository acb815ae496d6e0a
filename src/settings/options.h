#pragma once

#include "data/recset.h"
#include "platform/variant.h"

#include <QString>

#include <memory>

// Per-user and shared settings inside the database: a row of `options` per section and user,
// with the value of tag t in column "value" + t.

// The shared cursor on `options`; the routines below expect a caller to have opened it.
extern std::unique_ptr<RecSet> gOptionsRS;

// Tags 1 to 25; another shows a message. Any other failure leaves silently.
void SaveOption(qint16 nTag, const QString& sSection, const rt::Variant& value, bool bShared);
// The stored text, or `defaultValue` where nothing or "" is stored. Failures reach the caller.
rt::Variant GetOption(qint16 nTag, const QString& sSection, const rt::Variant& defaultValue,
                      bool bShared);
