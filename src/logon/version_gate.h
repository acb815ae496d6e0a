#pragma once

#include "data/recset.h"

#include <memory>

// Hands back an open cursor on sysinfo, on its first row, and tells whether the database may be
// used. The caller reads the cursor further and closes it.
bool VerifyOnLogon(std::unique_ptr<RecSet>& rsOut);
