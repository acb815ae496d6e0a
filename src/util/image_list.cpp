#include "util/image_list.h"

ImageList::ImageList(const QString& name, QObject* parent) : QObject(parent) {
    setObjectName(name);
}

void ImageList::add(const QPixmap& image, const QString& key) {
    images_.emplace_back(key, image);
}

QPixmap ImageList::image(const QString& key) const {
    for (const auto& [k, image] : images_) {
        if (k == key) {
            return image;
        }
    }
    return {};
}
