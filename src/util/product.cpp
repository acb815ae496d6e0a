#include "util/product.h"

QString gVersionText;
QString gProductName;

QString programVersionText() {
    return QStringLiteral("Version %1.%2.%3")
        .arg(ORVANE_VERSION_MAJOR)
        .arg(ORVANE_VERSION_MINOR)
        .arg(ORVANE_VERSION_PATCH);
}
