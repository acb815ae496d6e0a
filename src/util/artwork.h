#pragma once

#include <QIcon>
#include <QPixmap>

// The program's pictures, drawn rather than shipped as files.
namespace artwork {

constexpr int kActivityImages = 9;

// The picture of an activity type: 0 travel, 1 phone, 2 mail, 3 e-mail, 4 fax, 5 appointment,
// 6 meeting, 7 task, 8 other.
QPixmap activityImage(int index);
QPixmap makerLogo();
// The console's picture, drawn afresh at any size for the desktop's icon files.
QPixmap consoleImage(int size);
QIcon consoleIcon();
// The faces of the console's command buttons.
QIcon newEntryIcon();
QIcon editEntryIcon();
QIcon deleteEntryIcon();

}  // namespace artwork
