// The selection dialog: its size for the number of choices, which boxes come ticked, the single
// choice mode, and the comma list it gives back.

#include "controls/frm_udf_selection.h"
#include "fixtures.h"
#include "util/twips.h"

#include <QCheckBox>
#include <QPushButton>

#include <functional>

namespace {

class SelectionDialogTest : public testing_support::SeamTest {
protected:
    // Shows the dialog on the choices and does `action` while it shows; gives the ticked boxes.
    QList<int> shown(frmUDFSelection& dialog, const QStringList& choices, const QString& selected,
                     bool single, std::function<void(frmUDFSelection&)> action = {}) {
        QList<int> ticked;
        ui.modalScripts.push_back([&](QWidget*) {
            for (int i = 0; i < frmUDFSelection::kBoxes; ++i) {
                if (dialog.chkSelection[i]->isChecked()) {
                    ticked << i;
                }
            }
            if (action) {
                action(dialog);
            }
        });
        dialog.ShowForm(choices, qint16(choices.size()), selected, single);
        return ticked;
    }
};

QStringList numbered(int count) {
    QStringList choices;
    for (int i = 0; i < count; ++i) {
        choices << QString("Choice %1").arg(i);
    }
    return choices;
}

TEST_F(SelectionDialogTest, TheWindowShrinksByTheUnusedRows) {
    const struct {
        int choices;
        int height;     // twips
        int buttonTop;  // twips
    } cases[] = {
        {0, 540, 120},
        {3, 1305, 870},
        {24, 6660, 6120},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.choices);
        frmUDFSelection dialog;
        EXPECT_TRUE(dialog.Cancelled);
        shown(dialog, numbered(c.choices), QString(), false);
        EXPECT_EQ(dialog.height(), twipsToPixels(c.height));
        EXPECT_EQ(dialog.width(), twipsToPixels(3555));
        EXPECT_EQ(dialog.cmdOkay->geometry(), QRect(twipsToPixels(1007), twipsToPixels(c.buttonTop),
                                                    twipsToPixels(700), twipsToPixels(375)));
        EXPECT_EQ(dialog.cmdCancel->pos(), QPoint(twipsToPixels(1847), twipsToPixels(c.buttonTop)));
        for (int i = 0; i < frmUDFSelection::kBoxes; ++i) {
            const QCheckBox* box = dialog.chkSelection[i];
            EXPECT_EQ(box->isHidden(), i >= c.choices);
            EXPECT_EQ(box->text(), i < c.choices ? QString("Choice %1").arg(i) : "Unspecified");
            EXPECT_EQ(box->geometry(), QRect(twipsToPixels(120), twipsToPixels(120 + 240 * i),
                                             twipsToPixels(3255), twipsToPixels(255)));
        }
        EXPECT_EQ(dialog.GetSelections(), "");
        EXPECT_EQ(ui.modalWindows.back(), "frmUDFSelection");
    }
    frmUDFSelection dialog;
    EXPECT_EQ(dialog.windowTitle(), "");
    EXPECT_EQ(dialog.chkSelection.last()->nextInFocusChain(), dialog.cmdCancel);
    EXPECT_EQ(dialog.cmdCancel->nextInFocusChain(), dialog.cmdOkay);
}

TEST_F(SelectionDialogTest, TheChoicesInTheFieldComeTicked) {
    const QStringList choices = {"Red", "Red Wine", "red", "a, b", ""};
    const struct {
        QString selected;
        bool single;
        QList<int> ticked;
    } cases[] = {
        {"Red Wine", false, {1}},  // no match inside a longer choice, and case counts
        {"red, Red", false, {0, 2}},
        {"red, Red", true, {2}},  // several matches: the last one stays
        {"a, b", false, {3}},
        {"a", false, {}},
        {"Blue", false, {}},
        {"", false, {4}},  // an empty list holds only an empty choice
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.selected.toStdString());
        frmUDFSelection dialog;
        EXPECT_EQ(shown(dialog, choices, c.selected, c.single), c.ticked);
    }
}

TEST_F(SelectionDialogTest, InSingleModeAClickUnticksTheOthers) {
    frmUDFSelection dialog;
    shown(dialog, numbered(3), "Choice 0", true, [](frmUDFSelection& d) {
        d.chkSelection[1]->click();
        EXPECT_FALSE(d.chkSelection[0]->isChecked());
        d.chkSelection[1]->click();  // unticking its own box leaves none
        d.cmdOkay->click();
    });
    EXPECT_FALSE(dialog.Cancelled);
    EXPECT_EQ(dialog.GetSelections(), "");
}

TEST_F(SelectionDialogTest, TheListFollowsTheBoxesAndOnlyOkayConfirmsIt) {
    const struct {
        std::function<void(frmUDFSelection&)> leave;
        bool cancelled;
    } cases[] = {
        {[](frmUDFSelection& d) { d.cmdOkay->click(); }, false},
        {[](frmUDFSelection& d) { d.cmdCancel->click(); }, true},
        {[](frmUDFSelection& d) { d.close(); }, true},
    };
    for (const auto& c : cases) {
        frmUDFSelection dialog;
        shown(dialog, {"A", "B", "C"}, "C, A", false, c.leave);
        EXPECT_EQ(dialog.Cancelled, c.cancelled);
        EXPECT_TRUE(dialog.isHidden());
        EXPECT_EQ(dialog.GetSelections(), "A, C");
    }
}

TEST_F(SelectionDialogTest, MoreThanTwentyFourChoicesFail) {
    frmUDFSelection dialog;
    EXPECT_EQ(testing_support::errorOf([&] { dialog.ShowForm(numbered(25), 25, "", false); }), 9);
    EXPECT_TRUE(ui.modalWindows.empty());
}

}  // namespace
