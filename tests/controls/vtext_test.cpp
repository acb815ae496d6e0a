// The typed field: what leaving it makes of the typed text, what `text` reads back, its stored
// properties, its keys, and what its select button does for each type.

#include "controls/vtext.h"
#include "controls/frm_date.h"
#include "controls/frm_udf_selection.h"
#include "controls/property_bag.h"
#include "controls/time_step.h"
#include "fixtures.h"
#include "platform/dates.h"
#include "settings/options.h"

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

using rt::Variant;

namespace {

std::unique_ptr<vText> fieldOf(qint16 type, const QString& shown = QString()) {
    auto field = std::make_unique<vText>();
    field->settexttype(type);
    field->txtField->setText(shown);
    return field;
}

class VTextTest : public testing_support::SeamTest {
protected:
    // The shorthand reads "today" from the clock, pinned here to a day of a 30-day month.
    void SetUp() override {
        SeamTest::SetUp();
        rt::pinClock(QDateTime(QDate(2026, 6, 15), QTime(10, 30)));
    }
    void TearDown() override {
        rt::pinClock(std::nullopt);
        gTimeStep = 30;
        SeamTest::TearDown();
    }
};

// Both limits 0 let any number pass, and currency keeps two decimals at 0. June has 30 days, and a
// number of days beyond an Integer makes the check give up silently. A "*" allows wildcards.
TEST_F(VTextTest, LeavingTheFieldPutsTheTextInItsTypesFormAndTextReadsItsValue) {
    const Variant zero = qint16(0), null = Variant::null();
    const struct {
        qint16 type;
        QString typed;
        QString shown;
        Variant read;  // what `text` gives before the check, unless empty
    } cases[] = {
        {1, "-12345.6", "-12,346"},
        {1, "abc", "", zero},
        {2, "5", "$5.00"},
        {2, "$1,234.50", "$1,234.50", "1234.5"},
        {54, "1.2.2003", "1/2/2003"},
        {3, "1/5/2000", "1/5/2000", Variant::date(36530)},
        {3, "-7", "6/8/2026"},
        {3, "+0", "6/15/2026"},
        {3, "+40000", "+40000"},
        {3, "5", "6/5/2026"},
        {3, "junk", "", null},
        {3, "1231", "12/31/2026"},
        {3, "1332", ""},
        {3, "123", ""},
        {3, "1/*/2003", "1/*/2003", "1/*/2003"},
        {3, "x*", ""},
        {4, "13:05", "01:05 PM", Variant::date(rt::TimeSerial(13, 5, 0))},
        {3, "31", ""},
        {4, "1*:00", "1*:00"},
        {7, "no", "No"},
        {7, "yes", "yes"},
        {0, " plain ", " plain ", "plain"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.type << " " << c.typed.toStdString());
        auto field = fieldOf(c.type);
        field->setAllowWildCards(c.typed.contains('*'));
        field->txtField->setText(c.typed);
        if (!c.read.isEmpty()) {
            EXPECT_EQ(field->text(), c.read);
        }
        field->Check();
        EXPECT_EQ(field->txtField->text(), c.shown);
    }
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(VTextTest, ANumberOutsideTheLimitsFallsBackToTheLastGoodOne) {
    auto field = fieldOf(1);
    field->setLowLimit(0);
    field->setHighLimit(10);
    field->setNumberDecimals(2);
    QStringList shown;
    for (const char* typed : {"11", "2.5", "12", "-1", "10", "0"}) {
        field->txtField->setText(typed);
        field->Check();
        shown << field->txtField->text();
    }
    EXPECT_EQ(shown, QStringList({"0", "2.50", "2.5", "2.5", "10.00", "0.00"}));
    EXPECT_EQ(ui.texts(), std::vector<QString>(3, "Number must be between 0 and 10."));
    EXPECT_EQ(ui.messages[0].title, "Notice");
    EXPECT_EQ(ui.messages[0].icon, platform::Msg::Exclamation);
}

TEST_F(VTextTest, WritingTextOrTheTypeChecksAtOnceAndEachChangeIsReported) {
    auto field = fieldOf(0);
    QSignalSpy changed(field.get(), &vText::Changed);
    field->setText(" -1234.5 ");
    field->setNumberDecimals(3);
    field->settexttype("2");
    EXPECT_EQ(field->txtField->text(), "($1,234.500)");
    EXPECT_EQ(changed.count(), 2);
    field->settexttype(qint16(3));
    field->setText(Variant::date(36530.75));
    EXPECT_EQ(field->txtField->text(), "1/5/2000");
    field->setText(Variant::null());
    EXPECT_EQ(field->txtField->text(), "");
}

// Only the types with a dialog or a menu have a button beside the text box; Locked disables the
// button alone, Enabled sets both.
TEST_F(VTextTest, PickableTypesHaveAButtonThatLockedDisables) {
    vText field;
    field.resize(200, 24);
    for (qint16 type : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 54, 55}) {
        field.settexttype(type);
        const bool pickable = QList<qint16>{3, 4, 5, 6, 7, 8, 54}.contains(type);
        EXPECT_EQ(std::pair(field.imgSelect->isHidden(), field.txtField->width() < 200),
                  std::pair(!pickable, pickable))
            << type;
    }
    field.settexttype(qint16(3));
    field.setLocked(true);
    EXPECT_TRUE(field.Enabled() && field.txtField->isReadOnly() && !field.imgSelect->isEnabled());
    field.setEnabled(false);
    EXPECT_FALSE(field.Enabled() || field.imgSelect->isEnabled());
    field.setEnabled(true);
    EXPECT_TRUE(field.imgSelect->isEnabled() && field.Locked());
}

TEST_F(VTextTest, StoredPropertiesKeepOnlyWhatDiffersFromTheDefaults) {
    PropertyBag defaults, bag, again, disabled;
    vText().WriteProperties(defaults);
    EXPECT_TRUE(defaults.names().isEmpty());
    auto field = fieldOf(7, "maybe");
    field->setMaxLength(20);
    field->txtField->setEnabled(false);
    field->setLocked(true);
    field->setHighLimit(0.1);
    field->setLowLimit(-2);
    field->setNumberDecimals(3);
    field->setAlignment(1);
    field->WriteProperties(bag);
    EXPECT_EQ(bag.names().size(), 9);
    vText loaded;
    loaded.ReadProperties(PropertyBag::fromVariantMap(bag.toVariantMap()));
    loaded.WriteProperties(again);
    EXPECT_EQ(again.toVariantMap(), bag.toVariantMap());
    EXPECT_EQ(std::pair(loaded.LowLimit(), loaded.HighLimit()), std::pair(-2.0, double(0.1f)));

    // A stored form's Enabled goes to the text box alone.
    disabled.WriteProperty("Enabled", false, true);
    loaded.ReadProperties(disabled);
    EXPECT_TRUE(!loaded.Enabled() && loaded.imgSelect->isEnabled());
}

TEST(PropertyBag, EveryKindOfValueComesBackAsItWasStored) {
    const Variant values[] = {qint16(-3),           qint32(70000),      1.5f,   2.25,
                              Variant::currency(5), Variant::date(1.5), "text", true,
                              QByteArray("\x01"),   Variant::null()};
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

// A dialog or another program taking over is no leaving of the field.
TEST_F(VTextTest, EnteringSelectsAllAndLeavingForAnotherControlChecks) {
    for (const auto reason :
         {Qt::TabFocusReason, Qt::ActiveWindowFocusReason, Qt::PopupFocusReason}) {
        auto field = fieldOf(2, "5");
        QFocusEvent in(QEvent::FocusIn, Qt::OtherFocusReason), out(QEvent::FocusOut, reason);
        QApplication::sendEvent(field->txtField, &in);
        EXPECT_EQ(field->txtField->selectedText(), "5");
        QApplication::sendEvent(field->txtField, &out);
        EXPECT_EQ(field->txtField->text(), reason == Qt::TabFocusReason ? "$5.00" : "5") << reason;
    }
}

TEST_F(VTextTest, ArrowsStepDatesAndTimesAndOtherKeysGoToKeyDown) {
    const struct {
        qint16 type;
        QString shown;
        Qt::Key key;
        QString after;
        qint16 raised;  // the KeyDown code, 0 for none
        qint16 step = 30;
    } cases[] = {
        {3, "1/5/2000", Qt::Key_Down, "1/6/2000", 0},  {54, "1/5/2000", Qt::Key_Up, "1/4/2000", 0},
        {3, "junk", Qt::Key_Down, "junk", 0},          {4, "1:00 PM", Qt::Key_Down, "01:30 PM", 0},
        {4, "1:00 PM", Qt::Key_Down, "1:00 PM", 0, 0}, {1, "5", Qt::Key_Down, "5", 40},
        {3, "1/5/2000", Qt::Key_A, "1/5/2000a", 65},   {3, "1/5/2000", Qt::Key_F2, "1/5/2000", 113},
    };
    for (const auto& c : cases) {
        gTimeStep = c.step;
        auto field = fieldOf(c.type, c.shown);
        QList<qint16> raised;
        QObject::connect(field.get(), &vText::KeyDown, [&](qint16& KeyCode) { raised << KeyCode; });
        QTest::keyClick(field->txtField, c.key);
        EXPECT_EQ(raised, c.raised ? QList<qint16>{c.raised} : QList<qint16>{}) << c.key;
        EXPECT_EQ(field->txtField->text(), c.after) << c.key;
    }
}

TEST_F(VTextTest, AClearedKeyCodeTakesTheKeyAwayAndControlDownOpensTheButton) {
    auto field = fieldOf(5);
    int raised = 0;
    QObject::connect(field.get(), &vText::KeyDown,
                     [&](qint16& KeyCode) { KeyCode = ++raised > 1 ? 0 : KeyCode; });
    QTest::keyClick(field->txtField, Qt::Key_X);
    QTest::keyClick(field->txtField, Qt::Key_Y);
    EXPECT_EQ(field->txtField->text(), "x");
    QTest::keyClick(field->txtField, Qt::Key_Down, Qt::ControlModifier);
    QTest::keyClick(field->txtField, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(ui.modalWindows, std::vector<QString>{"frmUDFSelection"});
    EXPECT_EQ(raised, 2);
}

class SelectButtonTest : public testing_support::OptionsSessionTest {};

// No pick cancels, which leaves a valid text in the field's form; "-" picks no time, which gives
// the integer 0.
TEST_F(SelectButtonTest, TheDateDialogGivesADateOrATime) {
    const std::tuple<qint16, QString, QString, QString> cases[] = {
        {3, "January 5, 2000", "", "1/5/2000"},
        {3, "1/5/2000", "2/1/2003", "2/1/2003"},
        {4, "13:00", "", "01:00 PM"},
        {4, "13:00", "02:30 PM", "02:30 PM"},
        {4, "13:00", "-", "13:00"},
    };
    for (const auto& [type, shown, pick, after] : cases) {
        auto field = fieldOf(type, shown);
        ui.modalScripts.push_back([&](QWidget* window) {
            auto& d = *static_cast<frmDate*>(window);
            if (pick.isEmpty()) {
                return d.cmdCancel->click();
            }
            d.MonthView1->setSelectedDate(QDate::fromString(pick, "M/d/yyyy"));
            d.lstTimes->clearSelection();
            d.lstTimes->setCurrentItem(d.lstTimes->findItems(pick, Qt::MatchExactly).value(0));
            d.cmdOK->click();
        });
        field->imgSelect->click();
        EXPECT_EQ(field->txtField->text(), after) << pick.toStdString();
    }
}

// With more choices than boxes no dialog shows.
TEST_F(SelectButtonTest, ChoicesGoThroughTheSelectionDialog) {
    // The choices, and the box clicked or -1 to close the window.
    const std::tuple<qint16, QString, int, QString> cases[] = {{5, "ABC", 1, "B"},
                                                               {6, "ABC", 1, "A, B, C"},
                                                               {6, "ABC", -1, "C, A"},
                                                               {5, QString(25, 'B'), 1, "C, A"}};
    for (const auto& [type, choices, clicked, after] : cases) {
        auto field = fieldOf(type, "C, A");
        for (const QChar choice : choices) {
            field->AddSelection(choice);
        }
        ui.modalScripts.push_back([&](QWidget* window) {
            auto& d = *static_cast<frmUDFSelection*>(window);
            if (clicked < 0) {
                return (void)d.close();
            }
            d.chkSelection[clicked]->click();
            d.cmdOkay->click();
        });
        field->imgSelect_Click();
        EXPECT_EQ(field->txtField->text(), after);
    }
    EXPECT_EQ(ui.modalWindows.size(), 3u);
}

TEST_F(SelectButtonTest, YesOrNoPopsUpATickedEntryAtTheButton) {
    const std::tuple<QString, QString, int> cases[] = {
        {"yes", "Yes+ No", 1}, {"NO", "Yes No+", 0}, {"maybe", "Yes No", 1}};
    for (const auto& [shown, ticks, pick] : cases) {
        auto field = fieldOf(7, shown);
        field->showPopup = [&](QMenu* popup, const QPoint& at) {
            EXPECT_EQ(at, field->imgSelect->mapToGlobal(QPoint(0, 0)));
            QStringList entries;
            for (const QAction* entry : popup->actions()) {
                entries << entry->text() + (entry->isChecked() ? "+" : "");
            }
            EXPECT_EQ(entries.join(' '), ticks);
            popup->actions()[pick]->trigger();
        };
        field->imgSelect_Click();
        EXPECT_EQ(field->txtField->text(), pick == 0 ? "Yes" : "No");
        EXPECT_EQ(field->mnMenu.keys(), QList<int>{0});
    }
}

TEST_F(SelectButtonTest, AFilledMenuOnSeveralChoicesTogglesTheClickedEntry) {
    const std::pair<int, QString> cases[] = {{1, "A, B, C"}, {2, "A"}, {0, "C"}};
    for (const auto& [clicked, after] : cases) {
        auto field = fieldOf(6);
        for (const char* choice : {"A", "B", "C"}) {
            field->AddSelection(choice);
            QAction* entry = field->loadMenu(field->nSelections() - 1);
            entry->setText(choice);
            entry->setChecked(QString(choice) != "B");
        }
        field->mnMenu.value(clicked)->trigger();
        EXPECT_EQ(field->txtField->text(), after);
        EXPECT_EQ(field->mnMenu.keys(), QList<int>{0});
    }
}

TEST_F(SelectButtonTest, AFileFieldBrowsesWhenEmptyAndOpensItsFileOtherwise) {
    auto field = fieldOf(8);
    ui.fileChoices.push_back(QString("/docs/letter.txt"));
    field->imgSelect_Click();
    EXPECT_EQ(field->txtField->text(), "/docs/letter.txt");
    field->imgSelect_Click();
    gOptionsRS.reset();  // a file that can't be opened now is passed over
    field->imgSelect_Click();
    EXPECT_EQ(ui.launched, std::vector<QString>{"/docs/letter.txt"});
    EXPECT_EQ(ui.fileDialogs.size(), 1u);
}

}  // namespace
