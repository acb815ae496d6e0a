#include "controls/frm_udf_selection.h"

#include "platform/rt_error.h"
#include "platform/ui.h"
#include "util/twips.h"

#include <QCheckBox>
#include <QPushButton>

namespace {

// The design, in twips.
constexpr int kClientWidth = 3555;
constexpr int kClientHeight = 6660;
constexpr int kBoxLeft = 120;
constexpr int kBoxTop = 120;
constexpr int kBoxPitch = 240;
constexpr int kBoxWidth = 3255;
constexpr int kBoxHeight = 255;
constexpr int kButtonTop = 6120;
constexpr int kButtonWidth = 700;
constexpr int kButtonHeight = 375;
// An unused row takes this much off the window and lifts the buttons by the other: neither is
// the pitch of the boxes, and callers' screens are laid out to these sizes.
constexpr int kWindowShrinkPerRow = 255;
constexpr int kButtonRisePerRow = 250;

void place(QWidget* control, int left, int top, int width, int height) {
    control->setGeometry(twipsToPixels(left), twipsToPixels(top), twipsToPixels(width),
                         twipsToPixels(height));
}

QPushButton* button(QWidget* parent, const char* name, const char* caption, int left) {
    auto* command = new QPushButton(QString::fromLatin1(caption), parent);
    command->setObjectName(QString::fromLatin1(name));
    place(command, left, kButtonTop, kButtonWidth, kButtonHeight);
    return command;
}

}  // namespace

frmUDFSelection::frmUDFSelection(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint) {
    setObjectName(QStringLiteral("frmUDFSelection"));
    setWindowTitle(QString());
    setFixedSize(twipsToPixels(kClientWidth), twipsToPixels(kClientHeight));
    for (int i = 0; i < kBoxes; ++i) {
        auto* box = new QCheckBox(QStringLiteral("Unspecified"), this);
        box->setObjectName(QStringLiteral("chkSelection(%1)").arg(i));
        place(box, kBoxLeft, kBoxTop + i * kBoxPitch, kBoxWidth, kBoxHeight);
        box->hide();
        connect(box, &QCheckBox::toggled, this, [this, i] { chkSelection_Click(i); });
        chkSelection << box;
        ++nSpareBoxes;
    }
    cmdOkay = button(this, "cmdOkay", "&OK", 1007);
    cmdOkay->setDefault(true);
    cmdCancel = button(this, "cmdCancel", "&Cancel", 1847);
    // The boxes first, then Cancel before OK.
    setTabOrder(chkSelection.last(), cmdCancel);
    setTabOrder(cmdCancel, cmdOkay);
    connect(cmdOkay, &QPushButton::clicked, this, [this] { cmdOkay_Click(); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
}

void frmUDFSelection::ShowForm(const QStringList& Choices, qint16 nNumber, const QString& sSelected,
                               bool bSingleOnly) {
    SingleSelection = bSingleOnly;
    const QString selected = ", " + sSelected + ",";
    for (int i = 0; i < nNumber; ++i) {
        if (i >= kBoxes || i >= Choices.size()) {
            throw rt::Error::standard(rt::SubscriptOutOfRange);
        }
        chkSelection[i]->setText(Choices[i]);
        chkSelection[i]->show();
        // The blank and comma around the choice keep it from matching inside a longer one.
        if (selected.contains(", " + Choices[i] + ",")) {
            chkSelection[i]->setChecked(true);
        }
        --nSpareBoxes;
    }
    shrinkBy(nSpareBoxes);
    platform::ui().showModal(this, parentWidget());
}

void frmUDFSelection::shrinkBy(int rows) {
    setFixedHeight(twipsToPixels(pixelsToTwips(height()) - rows * kWindowShrinkPerRow));
    for (QPushButton* command : {cmdOkay, cmdCancel}) {
        command->move(command->x(),
                      twipsToPixels(pixelsToTwips(command->y()) - rows * kButtonRisePerRow));
    }
}

QString frmUDFSelection::GetSelections() const {
    // An empty caption ticked first adds nothing, not a leading separator.
    QString result;
    for (const QCheckBox* box : chkSelection) {
        if (box->isChecked()) {
            result = result.isEmpty() ? box->text() : result + ", " + box->text();
        }
    }
    return result;
}

void frmUDFSelection::chkSelection_Click(int nIndex) {
    if (bFormBusy) {
        return;
    }
    bFormBusy = true;
    if (SingleSelection) {
        // Every click clears the others, also one that unticks its own box: no box ticked is
        // a valid answer.
        for (int i = 0; i < kBoxes; ++i) {
            if (i != nIndex && !chkSelection[i]->isHidden()) {
                chkSelection[i]->setChecked(false);
            }
        }
    }
    bFormBusy = false;
}

void frmUDFSelection::cmdOkay_Click() {
    Cancelled = false;
    hide();
}

void frmUDFSelection::cmdCancel_Click() {
    Cancelled = true;
    hide();
}

void frmUDFSelection::reject() {
    cmdCancel_Click();
}
