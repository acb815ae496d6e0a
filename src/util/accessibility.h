#pragma once

class QLabel;
class QWidget;

// Names the control after the label beside it, for a screen reader. A buddy label names a text
// box, but not a list or an option button without a caption. (A combo box on X11 is named by its
// value whatever name it is given; its buddy label reaches a screen reader as its labelled-by
// relation.)
void NameAfterLabel(QWidget* control, const QLabel* label);

// Makes every tab strip report its hidden tabs as invisible and refuse to open them through the
// accessibility interface, as they are out of reach of the mouse and keyboard too. Qt's own
// strip reports a hidden tab as visible and opens it on request. Safe to call more than once;
// it must come before the first tab strip is asked for its accessible interface.
void KeepHiddenTabsOutOfReach();
