#include "util/artwork.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>

namespace artwork {

namespace {

const QColor kBrand(120, 35, 15);

QPixmap canvas(int width, int height) {
    QPixmap pixmap(width, height);
    pixmap.fill(Qt::transparent);
    return pixmap;
}

QPixmap badge(const QColor& colour, const QString& letters, int size = 16) {
    QPixmap pixmap = canvas(size, size);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(colour);
    p.setPen(colour.darker(140));
    p.drawRoundedRect(QRectF(0.5, 0.5, size - 1, size - 1), 3, 3);
    QFont font = p.font();
    font.setPixelSize(size * 9 / 16);
    font.setBold(true);
    p.setFont(font);
    p.setPen(Qt::white);
    p.drawText(pixmap.rect(), Qt::AlignCenter, letters);
    return pixmap;
}

// A sheet of paper, the base of the command buttons' faces.
void drawPage(QPainter& p) {
    p.setPen(QColor(90, 90, 90));
    p.setBrush(Qt::white);
    p.drawRect(QRectF(2.5, 1.5, 10, 13));
    p.setPen(QColor(160, 160, 160));
    for (int y = 5; y <= 11; y += 2) {
        p.drawLine(QPointF(4.5, y + 0.5), QPointF(10.5, y + 0.5));
    }
}

}  // namespace

QPixmap activityImage(int index) {
    static const struct {
        QColor colour;
        const char* letters;
    } activities[kActivityImages] = {
        {QColor(70, 110, 170), "Tr"}, {QColor(60, 140, 80), "Ph"},   {QColor(150, 110, 40), "M"},
        {QColor(50, 120, 150), "@"},  {QColor(110, 110, 110), "Fx"}, {QColor(170, 60, 60), "Ap"},
        {QColor(120, 70, 150), "Me"}, {QColor(40, 130, 130), "Ta"},  {QColor(130, 130, 60), "?"},
    };
    const auto& a = activities[index % kActivityImages];
    return badge(a.colour, QString::fromLatin1(a.letters));
}

QPixmap makerLogo() {
    QPixmap pixmap = canvas(96, 96);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(kBrand);
    p.setPen(Qt::NoPen);
    p.drawEllipse(QRectF(4, 4, 88, 88));
    p.setPen(QPen(Qt::white, 6));
    p.setBrush(Qt::NoBrush);
    p.drawEllipse(QRectF(26, 26, 44, 44));
    return pixmap;
}

QPixmap consoleImage(int size) {
    QPixmap pixmap = canvas(size, size);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 32.0, size / 32.0);
    p.setBrush(kBrand);
    p.setPen(kBrand.darker(150));
    p.drawRoundedRect(QRectF(1.5, 1.5, 29, 29), 5, 5);
    p.setBrush(Qt::white);
    p.setPen(Qt::NoPen);
    p.drawEllipse(QRectF(11, 6, 10, 10));
    p.drawRoundedRect(QRectF(7, 18, 18, 9), 4, 4);
    return pixmap;
}

QIcon consoleIcon() {
    return QIcon(consoleImage(32));
}

QIcon newEntryIcon() {
    QPixmap pixmap = canvas(16, 16);
    QPainter p(&pixmap);
    drawPage(p);
    p.setPen(QPen(QColor(230, 170, 0), 1.5));
    p.drawLine(QPointF(12, 0.5), QPointF(12, 5.5));
    p.drawLine(QPointF(9.5, 3), QPointF(14.5, 3));
    return QIcon(pixmap);
}

QIcon editEntryIcon() {
    QPixmap pixmap = canvas(16, 16);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    drawPage(p);
    p.setPen(QPen(QColor(40, 80, 160), 2.5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(6, 13), QPointF(14, 5));
    return QIcon(pixmap);
}

QIcon deleteEntryIcon() {
    QPixmap pixmap = canvas(16, 16);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(190, 30, 30), 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(3, 3), QPointF(13, 13));
    p.drawLine(QPointF(13, 3), QPointF(3, 13));
    return QIcon(pixmap);
}

}  // namespace artwork
