#pragma once

#include <QLocale>

namespace platform {

// Makes the machine's regional settings the program's QLocale(), once at start. A C or POSIX
// locale is no regional setting (a bare container or service), and under it dates would read as
// day/month and money would lack a symbol, so the program takes US English there, the desktop's
// own default; any real locale is followed as it is.
void adoptRegionalSettings(const QLocale& system = QLocale::system());

}  // namespace platform
