#include "util/frm_config.h"

#include "util/artwork.h"

#include <QLabel>

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
    ilAppGraphic = imageList("ilAppGraphic");
    ilLogos = imageList("ilLogos");
    ilLogos->add(artwork::makerLogo(), QStringLiteral("orvane"));
    picSizer = pictureBox("picSizer");
    ilRefLibrary = imageList("ilRefLibrary");
    ilPriorities = imageList("ilPriorities");
    ilColors = imageList("ilColors");
    ilFiles = imageList("ilFiles");
    imglstReminders = imageList("imglstReminders");
    for (int i = 0; i < artwork::kActivityImages; ++i) {
        imglstReminders->add(artwork::activityImage(i));
    }
    imglstLists = imageList("imglstLists");
    ilMainToolbar = imageList("ilMainToolbar");
    ilToday = imageList("ilToday");
    ilTools = imageList("ilTools");
    ilTopToolbar = imageList("ilTopToolbar");
    picChart = pictureBox("picChart");
    picBkg = pictureBox("picBkg");
}

ImageList* frmConfig::imageList(const char* name) {
    return new ImageList(QString::fromLatin1(name), this);
}

QLabel* frmConfig::pictureBox(const char* name) {
    auto* box = new QLabel(this);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}
