#pragma once

#include "util/image_list.h"

#include <QWidget>

// The hidden window that holds the resources the windows share. It shows nothing and is never
// visible; it is made on first use. The file dialog it held on the desktop is the UI seam's, and
// its rich text box is RichTextToPlain.
class frmConfig : public QWidget {
public:
    static frmConfig& instance();
    // Whether the window has been made; for a start of the run that needs it.
    static bool exists();

    ImageList* ilLogos;
    ImageList* imglstReminders;

private:
    frmConfig();
};
