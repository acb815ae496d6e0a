#pragma once

#include "util/image_list.h"

#include <QWidget>

class QLabel;

// The hidden window that holds the resources the windows share. It shows nothing and is never
// visible; it is made on first use. The file dialog it held on the desktop is the UI seam's, and
// its rich text box is RichTextToPlain.
class frmConfig : public QWidget {
public:
    static frmConfig& instance();
    // Whether the window has been made; for a start of the run that needs it.
    static bool exists();

    // Other programs may hold link conversations with the window under this topic; it takes
    // them and does nothing with them, so no choice is ever made through it.
    static constexpr const char* kLinkTopic = "DDEForm1";
    void Form_LinkExecute(const QString& CmdStr, qint16& Cancel) {}
    void Form_LinkOpen(qint16& Cancel) {}
    void Form_LinkClose() {}

    ImageList* ilAppGraphic;
    ImageList* ilLogos;  // the maker's logo by the key "orvane"
    QLabel* picSizer;
    ImageList* ilRefLibrary;
    ImageList* ilPriorities;
    ImageList* ilColors;
    ImageList* ilFiles;
    ImageList* imglstReminders;  // one image per activity type
    ImageList* imglstLists;
    ImageList* ilMainToolbar;
    ImageList* ilToday;
    ImageList* ilTools;
    ImageList* ilTopToolbar;
    QLabel* picChart;
    QLabel* picBkg;

private:
    frmConfig();
    ImageList* imageList(const char* name);
    QLabel* pictureBox(const char* name);
};
