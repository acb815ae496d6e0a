#include "platform/regional.h"

namespace platform {

void adoptRegionalSettings(const QLocale& system) {
    const bool regional = system.language() != QLocale::C;
    QLocale::setDefault(regional ? system : QLocale(QLocale::English, QLocale::UnitedStates));
}

}  // namespace platform
