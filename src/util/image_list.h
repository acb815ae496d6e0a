#pragma once

#include <QObject>
#include <QPixmap>
#include <QString>

#include <vector>

// A list of images, each with an optional key, as the windows' image lists hold them.
class ImageList : public QObject {
public:
    explicit ImageList(const QString& name, QObject* parent = nullptr);
    void add(const QPixmap& image, const QString& key = QString());
    int count() const { return int(images_.size()); }
    // By key; a null pixmap for a key the list doesn't have.
    QPixmap image(const QString& key) const;
    QPixmap image(int index) const { return images_.at(size_t(index)).second; }

private:
    std::vector<std::pair<QString, QPixmap>> images_;
};
