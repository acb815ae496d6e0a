// The selection dialog: its size for the number of choices, which boxes come ticked, the single
// choice mode, and the comma list it gives back.

#include "controls/frm_udf_selection.h"
#include "fixtures.h"
#include "util/twips.h"

#include <QCheckBox>
#include <QPushButton>

#include <functional>
#include <memory>

namespace {

class SelectionDialogTest : public testing_support::SeamTest {
protected:
    // Shows a new dialog on the choices while the user does `action`; gives the ticked boxes.
    QList<int> show(const QStringList& choices, const QString& selected, bool single = false,
                    const std::function<void(frmUDFSelection&)>& action = {}) {
        dialog = std::make_unique<frmUDFSelection>();
        if (action) {
            ui.modalScripts.push_back([&](QWidget*) { action(*dialog); });
        }
        dialog->ShowForm(choices, qint16(choices.size()), selected, single);
        QList<int> ticked;
        for (int i = 0; i < frmUDFSelection::kBoxes; ++i) {
            if (dialog->chkSelection[i]->isChecked()) {
                ticked << i;
            }
        }
        return ticked;
    }

    std::unique_ptr<frmUDFSelection> dialog;
};

TEST_F(SelectionDialogTest, TheWindowShrinksByTheUnusedRows) {
    // The window's height and the buttons' top, in twips.
    const std::tuple<int, int, int> cases[] = {{0, 540, 120}, {3, 1305, 870}, {24, 6660, 6120}};
    for (const auto& [choices, height, buttonTop] : cases) {
        EXPECT_EQ(show(QStringList(choices, "x"), QString()), QList<int>());
        EXPECT_EQ(dialog->height(), twipsToPixels(height)) << choices;
        EXPECT_EQ(dialog->cmdOkay->y(), twipsToPixels(buttonTop)) << choices;
        EXPECT_EQ(dialog->cmdCancel->y(), twipsToPixels(buttonTop)) << choices;
        for (int i = 0; i < frmUDFSelection::kBoxes; ++i) {
            EXPECT_EQ(dialog->chkSelection[i]->isHidden(), i >= choices) << i;
        }
    }
}

TEST_F(SelectionDialogTest, TheChoicesInTheFieldComeTicked) {
    const QStringList choices = {"Red", "Red Wine", "red", "a, b", ""};
    const std::tuple<QString, bool, QList<int>> cases[] = {
        {"Red Wine", false, {1}},  // no match inside a longer choice, and case counts
        {"red, Red", false, {0, 2}},
        {"red, Red", true, {2}},  // several matches: the last one stays
        {"a, b", false, {3}},
        {"Blue", false, {}},
        {"", false, {4}},  // an empty list holds only an empty choice
    };
    for (const auto& [selected, single, ticked] : cases) {
        EXPECT_EQ(show(choices, selected, single), ticked) << selected.toStdString();
    }
}

// In single mode every click unticks the others, also one that unticks its own box.
TEST_F(SelectionDialogTest, TheListFollowsTheBoxesAndOnlyOkayConfirmsIt) {
    const auto okay = [](frmUDFSelection& d) { d.cmdOkay->click(); };
    // Single mode, what the user does, then whether it was cancelled and the list.
    const std::tuple<bool, std::function<void(frmUDFSelection&)>, bool, QString> cases[] = {
        {false, okay, false, "A, C"},
        {false, [](frmUDFSelection& d) { d.cmdCancel->click(); }, true, "A, C"},
        {false, [](frmUDFSelection& d) { d.close(); }, true, "A, C"},
        {true,
         [](frmUDFSelection& d) {
             d.chkSelection[1]->click();
             d.chkSelection[1]->click();
             d.cmdOkay->click();
         },
         false, ""},
    };
    for (const auto& [single, leave, cancelled, list] : cases) {
        show({"A", "B", "C"}, "C, A", single, leave);
        EXPECT_EQ(dialog->Cancelled, cancelled);
        EXPECT_TRUE(dialog->isHidden());
        EXPECT_EQ(dialog->GetSelections(), list);
    }
    EXPECT_EQ(testing_support::errorOf([&] { show(QStringList(25, "x"), ""); }), 9);
    EXPECT_EQ(ui.modalWindows.size(), 4u);
}

}  // namespace
