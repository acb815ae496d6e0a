#include "util/frm_config.h"

#include "util/artwork.h"

#include <memory>

namespace {
std::unique_ptr<frmConfig> made;
}

frmConfig& frmConfig::instance() {
    if (!made) {
        made.reset(new frmConfig());
    }
    return *made;
}

bool frmConfig::exists() {
    return made != nullptr;
}

frmConfig::frmConfig() {
    setObjectName(QStringLiteral("frmConfig"));
    setWindowTitle(QStringLiteral("WF Configuration Form"));
    ilLogos = new ImageList(QStringLiteral("ilLogos"), this);
    ilLogos->add(artwork::makerLogo(), QStringLiteral("orvane"));
    imglstReminders = new ImageList(QStringLiteral("imglstReminders"), this);
    for (int i = 0; i < artwork::kActivityImages; ++i) {
        imglstReminders->add(artwork::activityImage(i));
    }
}
