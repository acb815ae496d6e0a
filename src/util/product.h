#pragma once

#include <QString>

// "Version " and the running program's version, as captions show it.
extern QString gVersionText;
// The product name for captions; nothing in the console assigns it.
extern QString gProductName;

QString programVersionText();
