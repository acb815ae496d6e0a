// The typed field: what leaving it makes of the typed text, what `text` reads back, its stored
// properties, its keys, and what its select button does for each type.

#include "controls/vtext.h"
#include "controls/frm_date.h"
#include "controls/frm_udf_selection.h"
#include "controls/property_bag.h"
#include "controls/time_step.h"
#include "fixtures.h"
#include "platform/dates.h"
#include "platform/formats.h"
#include "util/twips.h"

#include <QAction>
#include <QApplication>
#include <QCalendarWidget>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolButton>
#include <QtTest/QTest>

using platform::Msg::Exclamation;
using platform::Msg::OKOnly;
using rt::Variant;

namespace {

// The shorthand reads "today" from the clock, which these tests pin to a day of a 30-day month.
const QDateTime kToday(QDate(2026, 6, 15), QTime(10, 30));

QString checked(vText& field, const QString& typed) {
    field.txtField->setText(typed);
    field.Check();
    return field.txtField->text();
}

class VTextTest : public testing_support::SeamTest {
protected:
    void SetUp() override {
        SeamTest::SetUp();
        rt::pinClock(kToday);
    }
    void TearDown() override {
        rt::pinClock(std::nullopt);
        SeamTest::TearDown();
    }
};

TEST_F(VTextTest, LeavingTheFieldPutsTheTextInItsTypesForm) {
    const struct {
        qint16 type;
        qint16 decimals;
        bool wildcards;
        QString typed;
        QString shown;
    } cases[] = {
        {1, 0, false, "1234.5", "1,235"},
        {1, 2, false, "0", "0.00"},  // a zero stays visible
        {1, 0, false, "abc", ""},
        {1, 0, false, "-12345.6", "-12,346"},  // no limits: any number passes
        {2, 0, false, "5", "$5.00"},           // currency keeps two decimals at 0
        {2, 3, false, "-5", "($5.000)"},
        {3, 0, false, "1.2.2003", "1/2/2003"},
        {54, 0, false, "1.2.2003", "1/2/2003"},
        {3, 0, false, "January 5, 2000", "1/5/2000"},
        {3, 0, false, "-7", "6/8/2026"},
        {3, 0, false, "+0", "6/15/2026"},
        {3, 0, false, "+40000", "+40000"},  // beyond an Integer: the check gives up silently
        {3, 0, false, "5", "6/5/2026"},
        {3, 0, false, "30", "6/30/2026"},
        {3, 0, false, "31", ""},  // June has 30 days
        {3, 0, false, "1231", "12/31/2026"},
        {3, 0, false, "0102", "1/2/2026"},
        {3, 0, false, "1332", ""},
        {3, 0, false, "123", ""},
        {3, 0, false, "1/40/2003", ""},
        {3, 0, false, "5-", ""},
        {3, 0, true, "1/*/2003", "1/*/2003"},
        {3, 0, true, "1/?5/2003", "1/?5/2003"},
        {3, 0, true, "x*", ""},
        {4, 0, false, "13:05", "01:05 PM"},
        {4, 0, false, "later", ""},
        {4, 0, true, "1*:00", "1*:00"},
        {7, 0, false, "NO", "No"},
        {7, 0, false, "yes", "yes"},
        {7, 0, false, "maybe", "maybe"},
        {0, 0, false, " as typed ", " as typed "},
        {5, 0, false, " as typed ", " as typed "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(QString("%1 %2").arg(c.type).arg(c.typed).toStdString());
        vText field;
        field.settexttype(c.type);
        field.setNumberDecimals(c.decimals);
        field.setAllowWildCards(c.wildcards);
        EXPECT_EQ(checked(field, c.typed), c.shown);
    }
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(VTextTest, ANumberOutsideTheLimitsFallsBackToTheLastGoodOne) {
    const struct {
        QString typed;
        QString shown;
        bool refused;
    } steps[] = {
        {"11", "0", true},                            // nothing good yet
        {"2.5", "2.50", false}, {"12", "2.5", true},  // plain text of the last good number
        {"-1", "2.5", true},    {"10", "10.00", false}, {"0", "0.00", false},
    };
    vText field;
    field.setLowLimit(0);
    field.setHighLimit(10);
    field.setNumberDecimals(2);
    for (const auto& step : steps) {
        SCOPED_TRACE(step.typed.toStdString());
        ui.messages.clear();
        EXPECT_EQ(checked(field, step.typed), step.shown);
        ASSERT_EQ(ui.messages.size(), step.refused ? 1u : 0u);
        if (step.refused) {
            EXPECT_EQ(ui.messages[0].text, "Number must be between 0 and 10.");
            EXPECT_EQ(ui.messages[0].title, "Notice");
            EXPECT_EQ(ui.messages[0].icon, Exclamation);
            EXPECT_EQ(ui.messages[0].buttons, OKOnly);
        }
    }
}

TEST_F(VTextTest, TextReadsAValueOfTheFieldsType) {
    const Variant zero = qint16(0);
    const struct {
        qint16 type;
        bool wildcards;
        QString shown;
        Variant read;
    } cases[] = {
        {1, false, "", zero},
        {1, false, "abc", zero},
        {2, false, "", zero},
        {2, false, "$1,234.50", "1234.5"},
        {2, true, "12", "12"},
        {2, true, "1*", zero},
        {3, false, "", Variant::null()},
        {3, false, "1/5/2000", Variant::date(36530)},
        {3, false, "junk", Variant::null()},
        {54, true, "1/*/2000", "1/*/2000"},
        {4, false, "1:00 PM", Variant::date(rt::TimeSerial(13, 0, 0))},
        {0, false, " plain ", "plain"},
        {6, false, " a, b ", "a, b"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(QString("%1 %2").arg(c.type).arg(c.shown).toStdString());
        vText field;
        field.settexttype(c.type);
        field.setAllowWildCards(c.wildcards);
        field.txtField->setText(c.shown);
        EXPECT_EQ(field.text(), c.read);
    }
}

TEST_F(VTextTest, WritingTextOrTheTypeChecksAtOnceAndEachChangeIsReported) {
    vText field;
    field.settexttype(qint16(0));
    QSignalSpy changed(&field, &vText::Changed);
    field.setText(" 1234.5 ");
    EXPECT_EQ(changed.count(), 1);
    field.settexttype("2");
    EXPECT_EQ(field.texttype(), 2);
    EXPECT_EQ(field.txtField->text(), "$1,234.50");
    EXPECT_EQ(changed.count(), 2);
    field.settexttype(qint16(3));
    field.setText(Variant::date(36530.75));
    EXPECT_EQ(field.txtField->text(), "1/5/2000");
    field.setText(Variant::null());
    EXPECT_EQ(field.txtField->text(), "");
}

TEST_F(VTextTest, LockedDisablesOnlyTheButtonAndEnabledSetsBoth) {
    vText field;
    field.settexttype(qint16(3));
    field.setLocked(true);
    EXPECT_TRUE(field.Enabled());
    EXPECT_TRUE(field.txtField->isReadOnly());
    EXPECT_FALSE(field.imgSelect->isEnabled());
    field.setEnabled(true);
    EXPECT_TRUE(field.imgSelect->isEnabled());
    EXPECT_TRUE(field.Locked());
    field.setEnabled(false);
    EXPECT_FALSE(field.Enabled());
    EXPECT_FALSE(field.imgSelect->isEnabled());

    // A stored form's Enabled goes to the text box alone.
    PropertyBag bag;
    bag.WriteProperty("Enabled", false, true);
    vText stored;
    stored.ReadProperties(bag);
    EXPECT_FALSE(stored.Enabled());
    EXPECT_TRUE(stored.imgSelect->isEnabled());
}

TEST_F(VTextTest, TheButtonTakesItsWidthAndAGapOfTenTwipsFromTheTextBox) {
    vText field;
    field.resize(200, 24);
    for (qint16 type : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 54, 55}) {
        SCOPED_TRACE(type);
        field.settexttype(type);
        const bool button = (type >= 3 && type <= 8) || type == 54;
        EXPECT_EQ(field.imgSelect->isHidden(), !button);
        const int buttonWidth = pixelsToTwips(field.imgSelect->width());
        const int fieldWidth = button ? 3000 - buttonWidth - 10 : 3000;
        EXPECT_EQ(field.txtField->width(), twipsToPixels(fieldWidth));
        EXPECT_EQ(field.txtField->height(), 24);
        if (button) {
            EXPECT_EQ(field.imgSelect->x(), twipsToPixels(fieldWidth + 10));
            EXPECT_EQ(field.imgSelect->height(), 24);
        }
    }
}

TEST_F(VTextTest, StoredPropertiesKeepOnlyWhatDiffersFromTheDefaults) {
    vText fresh;
    EXPECT_EQ(fresh.texttype(), 1);
    PropertyBag defaults;
    fresh.WriteProperties(defaults);
    EXPECT_TRUE(defaults.names().isEmpty());

    vText field;
    field.settexttype(qint16(7));
    field.setMaxLength(20);
    field.txtField->setText("maybe");
    field.txtField->setEnabled(false);
    field.setLocked(true);
    field.setHighLimit(0.1);
    field.setLowLimit(-2);
    field.setNumberDecimals(3);
    field.setAlignment(1);
    PropertyBag bag;
    field.WriteProperties(bag);
    EXPECT_EQ(bag.names(),
              QStringList({"nTextType", "MaxLength", "Text", "Enabled", "Locked", "dHighLimit",
                           "dLowLimit", "nNumberDecimals", "Alignment"}));

    vText loaded;
    loaded.ReadProperties(PropertyBag::fromVariantMap(bag.toVariantMap()));
    PropertyBag again;
    loaded.WriteProperties(again);
    EXPECT_EQ(again.toVariantMap(), bag.toVariantMap());
    EXPECT_EQ(loaded.HighLimit(), double(0.1f));  // narrowed on the way in
    EXPECT_FALSE(loaded.imgSelect->isHidden());

    bag.WriteProperty("nTextType", qint16(1), qint16(1));
    EXPECT_FALSE(bag.contains("nTextType"));
}

TEST(PropertyBag, EveryKindOfValueComesBackAsItWasStored) {
    const Variant values[] = {qint16(-3),
                              qint32(70000),
                              1.5f,
                              2.25,
                              Variant::currency(12345),
                              Variant::date(36530.5),
                              "text",
                              true,
                              QByteArray("\x01\x02"),
                              Variant::null()};
    PropertyBag bag;
    for (int i = 0; i < int(std::size(values)); ++i) {
        bag.WriteProperty(QString::number(i), values[i]);
    }
    const PropertyBag restored = PropertyBag::fromVariantMap(bag.toVariantMap());
    for (int i = 0; i < int(std::size(values)); ++i) {
        EXPECT_EQ(restored.ReadProperty(QString::number(i)), values[i]) << i;
    }
    EXPECT_EQ(restored.ReadProperty("missing", "default"), Variant("default"));
    bag.WriteProperty("1", 0.0, qint16(0));  // a default in another kind of number
    EXPECT_FALSE(bag.contains("1"));
}

TEST_F(VTextTest, EnteringSelectsAllAndLeavingForAnotherControlChecks) {
    const struct {
        Qt::FocusReason reason;
        QString after;
    } cases[] = {
        {Qt::TabFocusReason, "$5.00"},
        {Qt::MouseFocusReason, "$5.00"},
        {Qt::ActiveWindowFocusReason, "5"},  // a dialog or another program took over
        {Qt::PopupFocusReason, "5"},
    };
    for (const auto& c : cases) {
        vText field;
        field.settexttype(qint16(2));
        field.txtField->setText("5");
        QFocusEvent in(QEvent::FocusIn, Qt::OtherFocusReason);
        QApplication::sendEvent(field.txtField, &in);
        EXPECT_EQ(field.txtField->selectedText(), "5");
        QFocusEvent out(QEvent::FocusOut, c.reason);
        QApplication::sendEvent(field.txtField, &out);
        EXPECT_EQ(field.txtField->text(), c.after);
    }
}

TEST_F(VTextTest, ArrowsStepDatesAndTimesAndOtherKeysGoToKeyDown) {
    const struct {
        qint16 type;
        QString shown;
        Qt::Key key;
        QString after;  // the text after an arrow
        qint16 raised;  // the KeyDown code, 0 for none
    } cases[] = {
        {3, "1/5/2000", Qt::Key_Down, "1/6/2000", 0},
        {54, "1/5/2000", Qt::Key_Up, "1/4/2000", 0},
        {3, "junk", Qt::Key_Down, "junk", 0},
        {4, "1:00 PM", Qt::Key_Down, "01:30 PM", 0},
        {4, "1:00 PM", Qt::Key_Up, "12:30 PM", 0},
        {4, "junk", Qt::Key_Up, "junk", 0},
        {1, "5", Qt::Key_Down, "5", 40},
        {7, "Yes", Qt::Key_Up, "Yes", 38},
        {3, "1/5/2000", Qt::Key_A, "", 65},
        {3, "1/5/2000", Qt::Key_F2, "", 113},
        {3, "1/5/2000", Qt::Key_Return, "", 13},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(QString("%1 %2 %3").arg(c.type).arg(c.shown).arg(c.key).toStdString());
        vText field;
        field.settexttype(c.type);
        field.txtField->setText(c.shown);
        QList<qint16> raised;
        QObject::connect(&field, &vText::KeyDown, [&](qint16& KeyCode) { raised << KeyCode; });
        QTest::keyClick(field.txtField, c.key);
        EXPECT_EQ(raised, c.raised ? QList<qint16>{c.raised} : QList<qint16>{});
        if (!c.after.isEmpty()) {
            EXPECT_EQ(field.txtField->text(), c.after);
        }
    }
}

TEST_F(VTextTest, WithoutATimeStepTheArrowsLeaveATimeAlone) {
    const qint16 step = gTimeStep;
    gTimeStep = 0;
    vText field;
    field.settexttype(qint16(4));
    field.txtField->setText("13:00");
    QTest::keyClick(field.txtField, Qt::Key_Down);
    gTimeStep = step;
    EXPECT_EQ(field.txtField->text(), "13:00");
}

TEST_F(VTextTest, AHandlerThatClearsTheKeyCodeTakesTheKeyAway) {
    vText field;
    field.settexttype(qint16(0));
    QTest::keyClick(field.txtField, Qt::Key_X);
    EXPECT_EQ(field.txtField->text(), "x");
    QObject::connect(&field, &vText::KeyDown, [](qint16& KeyCode) { KeyCode = 0; });
    QTest::keyClick(field.txtField, Qt::Key_Y);
    EXPECT_EQ(field.txtField->text(), "x");
}

TEST_F(VTextTest, ControlDownOpensTheButtonAndRaisesNothing) {
    vText field;
    field.settexttype(qint16(5));
    int raised = 0;
    QObject::connect(&field, &vText::KeyDown, [&](qint16&) { ++raised; });
    QTest::keyClick(field.txtField, Qt::Key_Down, Qt::ControlModifier);
    QTest::keyClick(field.txtField, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(ui.modalWindows, std::vector<QString>{"frmUDFSelection"});
    EXPECT_EQ(raised, 0);
}

// What the user does in the dialog the button opens.
template <typename Dialog>
void whenShown(platform::ScriptedUi& ui, std::function<void(Dialog&)> action) {
    ui.modalScripts.push_back([action](QWidget* window) { action(*static_cast<Dialog*>(window)); });
}

class SelectButtonTest : public testing_support::OptionsSessionTest {};

TEST_F(SelectButtonTest, TheDateDialogGivesADateAndACancelRewritesAValidText) {
    const struct {
        qint16 type;
        QString shown;
        std::function<void(frmDate&)> action;
        QString after;
    } cases[] = {
        {3, "January 5, 2000", [](frmDate& d) { d.cmdCancel->click(); }, "1/5/2000"},
        {3, "1/5/2000",
         [](frmDate& d) {
             d.MonthView1->setSelectedDate(QDate(2003, 2, 1));
             d.cmdOK->click();
         },
         "2/1/2003"},
        {4, "13:00", [](frmDate& d) { d.cmdCancel->click(); }, "01:00 PM"},
        {4, "13:00",
         [](frmDate& d) {
             d.lstTimes->setCurrentItem(d.lstTimes->findItems("02:30 PM", Qt::MatchExactly)[0]);
             d.cmdOK->click();
         },
         "02:30 PM"},
        {4, "13:00",
         [](frmDate& d) {
             d.lstTimes->clearSelection();  // gives the integer 0, no time
             d.cmdOK->click();
         },
         "13:00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(QString("%1 %2").arg(c.type).arg(c.shown).toStdString());
        ui.modalWindows.clear();
        vText field;
        field.settexttype(c.type);
        field.txtField->setText(c.shown);
        whenShown<frmDate>(ui, c.action);
        field.imgSelect->click();
        EXPECT_EQ(ui.modalWindows, std::vector<QString>{"frmDate"});
        EXPECT_EQ(field.txtField->text(), c.after);
    }
}

TEST_F(SelectButtonTest, ChoicesGoThroughTheSelectionDialog) {
    const struct {
        qint16 type;
        QString shown;
        std::function<void(frmUDFSelection&)> action;
        QString after;
    } cases[] = {
        {5, "B",
         [](frmUDFSelection& d) {
             EXPECT_TRUE(d.chkSelection[1]->isChecked());
             d.chkSelection[2]->click();
             d.cmdOkay->click();
         },
         "C"},
        {6, "C, A",
         [](frmUDFSelection& d) {
             d.chkSelection[1]->click();
             d.cmdOkay->click();
         },
         "A, B, C"},
        {6, "C, A", [](frmUDFSelection& d) { d.close(); }, "C, A"},
    };
    for (const auto& c : cases) {
        vText field;
        field.settexttype(c.type);
        for (const char* choice : {"A", "B", "C"}) {
            field.AddSelection(choice);
        }
        field.txtField->setText(c.shown);
        whenShown<frmUDFSelection>(ui, c.action);
        field.imgSelect_Click();
        EXPECT_EQ(field.txtField->text(), c.after);
    }
}

TEST_F(SelectButtonTest, WithoutChoicesTheDialogIsEmptyAndWithTooManyItNeverShows) {
    vText field;
    field.settexttype(qint16(5));
    whenShown<frmUDFSelection>(ui, [](frmUDFSelection& d) {
        for (const QCheckBox* box : d.chkSelection) {
            EXPECT_TRUE(box->isHidden());
        }
    });
    field.imgSelect_Click();
    EXPECT_FALSE(field.mnMenu.value(0)->isEnabled());

    ui.modalWindows.clear();
    for (int i = 0; i < 25; ++i) {
        field.AddSelection(QString::number(i));
    }
    field.txtField->setText("3");
    field.imgSelect_Click();
    EXPECT_TRUE(ui.modalWindows.empty());
    EXPECT_EQ(field.txtField->text(), "3");
}

TEST_F(SelectButtonTest, YesOrNoPopsUpATickedEntryAtTheButton) {
    const struct {
        QString shown;
        bool yesTicked, noTicked;
        int pick;
    } cases[] = {
        {"yes", true, false, 1},
        {"NO", false, true, 0},
        {"maybe", false, false, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown.toStdString());
        vText field;
        field.settexttype(qint16(7));
        field.txtField->setText(c.shown);
        QPoint shownAt;
        field.showPopup = [&](QMenu* popup, const QPoint& at) {
            shownAt = at;
            ASSERT_EQ(popup->actions().size(), 2);
            EXPECT_EQ(popup->actions()[0]->text(), "Yes");
            EXPECT_EQ(popup->actions()[1]->text(), "No");
            EXPECT_EQ(popup->actions()[0]->isChecked(), c.yesTicked);
            EXPECT_EQ(popup->actions()[1]->isChecked(), c.noTicked);
            popup->actions()[c.pick]->trigger();
        };
        field.imgSelect_Click();
        EXPECT_EQ(shownAt, field.imgSelect->mapToGlobal(QPoint(0, 0)));
        EXPECT_EQ(field.txtField->text(), c.pick == 0 ? "Yes" : "No");
        EXPECT_EQ(field.mnMenu.keys(), QList<int>{0});
        // The count stays that of the popup, so a choice added now comes third.
        field.AddSelection("Maybe");
        EXPECT_EQ(field.Selections(), QStringList({"", "", "Maybe"}));
    }
}

TEST_F(SelectButtonTest, AFilledMenuOnSeveralChoicesTogglesTheClickedEntry) {
    const struct {
        int clicked;
        QString after;
    } cases[] = {{1, "A, B, C"}, {2, "A"}, {0, "C"}};
    for (const auto& c : cases) {
        vText field;
        field.settexttype(qint16(6));
        for (const char* choice : {"A", "B", "C"}) {
            field.AddSelection(choice);
            QAction* entry = field.loadMenu(field.nSelections() - 1);
            entry->setText(choice);
            entry->setChecked(QString(choice) != "B");
        }
        field.mnMenu.value(c.clicked)->trigger();
        EXPECT_EQ(field.txtField->text(), c.after);
        EXPECT_EQ(field.mnMenu.keys(), QList<int>{0});
    }
}

TEST_F(SelectButtonTest, AFileFieldBrowsesWhenEmptyAndOpensItsFileOtherwise) {
    vText field;
    field.settexttype(qint16(8));
    ui.fileChoices.push_back(QString("/docs/letter.txt"));
    field.imgSelect_Click();
    EXPECT_EQ(field.txtField->text(), "/docs/letter.txt");
    ASSERT_EQ(ui.fileDialogs.size(), 1u);
    EXPECT_EQ(ui.fileDialogs[0].filter, "All Files|*.*");
    EXPECT_TRUE(ui.fileDialogs[0].mustExist);

    field.imgSelect_Click();
    EXPECT_EQ(ui.launched, std::vector<QString>{"/docs/letter.txt"});
    EXPECT_EQ(ui.fileDialogs.size(), 1u);
    EXPECT_EQ(field.txtField->text(), "/docs/letter.txt");
}

TEST_F(VTextTest, AFileThatCannotBeOpenedWithoutOptionsIsPassedOver) {
    vText field;
    field.settexttype(qint16(8));
    field.txtField->setText("/docs/letter.txt");
    field.imgSelect_Click();
    EXPECT_TRUE(ui.launched.empty());
    EXPECT_EQ(field.txtField->text(), "/docs/letter.txt");
}

}  // namespace
