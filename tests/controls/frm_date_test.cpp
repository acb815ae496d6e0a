// The date and time dialog, opened as the typed field opens it and driven with the mouse and the
// keyboard while it shows.

#include "controls/frm_date.h"
#include "controls/time_step.h"
#include "controls/vtext.h"
#include "data/session.h"
#include "fixtures.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "settings/options.h"
#include "util/twips.h"
#include "util/value_helpers.h"

#include <QApplication>
#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QtTest/QTest>

#include <functional>
#include <memory>

using rt::Variant;

namespace {

using Action = std::function<void(frmDate&)>;

const QDate kFieldDay(2000, 1, 5);
const QDate kClickedDay(2000, 1, 12);

Variant dayOf(QDate date) {
    return Variant::date(rt::DateSerial(date.year(), date.month(), date.day()));
}

Variant fromToday(qint16 unit, double count, bool weekend = true, bool weekday = true) {
    return DateOffset(Variant::date(rt::Today()), unit, count, weekend, weekday);
}

QTableView* grid(frmDate& d) {
    return d.MonthView1->findChild<QTableView*>();
}

// The grid runs row by row, seven days a row, from the cell of the selected date.
void clickDate(frmDate& d, QDate date, bool twice = false) {
    const QModelIndex at = grid(d)->currentIndex();
    const qint64 cell = at.row() * 7 + at.column() + d.MonthView1->selectedDate().daysTo(date);
    const QPoint point =
        grid(d)->visualRect(grid(d)->model()->index(int(cell / 7), int(cell % 7))).center();
    QTest::mouseClick(grid(d)->viewport(), Qt::LeftButton, {}, point);
    if (twice) {
        QTest::mouseDClick(grid(d)->viewport(), Qt::LeftButton, {}, point);
    }
}

void click(QWidget* w, QPoint at = {}) {
    QTest::mouseClick(w, Qt::LeftButton, {}, at.isNull() ? w->rect().center() : at);
}

void typeNumber(frmDate& d, const QString& digits) {
    QTest::keyClicks(d.txtNum->txtField, digits);
}

void tick(QCheckBox* box, bool ticked) {
    if (box->isChecked() != ticked) {
        click(box);
    }
}

QStringList rowsOf(const QListWidget* list) {
    QStringList rows;
    for (int i = 0; i < list->count(); ++i) {
        rows << list->item(i)->text();
    }
    return rows;
}

class DateDialogTest : public testing_support::OptionsSessionTest {
protected:
    void TearDown() override {
        gTimeStep = 30;
        OptionsSessionTest::TearDown();
    }

    std::unique_ptr<frmDate> open(bool isDate, const Variant& value) {
        auto dialog = std::make_unique<frmDate>();
        dialog->bIsDate = isDate;
        (isDate ? dialog->vDate : dialog->vTime) = value;
        isDate ? dialog->ReSetDate() : dialog->ResetTime();
        return dialog;
    }
    std::unique_ptr<frmDate> dateDialog(const Variant& text = "1/5/2000") {
        return open(true, text);
    }
    std::unique_ptr<frmDate> timeDialog(const Variant& time = Variant()) {
        return open(false, time);
    }

    // Shows the dialog modally while the user acts; true when the actions hid it.
    bool run(frmDate& dialog, const Action& user) {
        bool hidden = false;
        ui.modalScripts.push_back([&](QWidget*) {
            QApplication::processEvents();
            user(dialog);
            hidden = !dialog.isVisible();
        });
        platform::ui().showModal(&dialog, nullptr);
        return hidden;
    }

    void setTimes(const QString& first, const QString& last) {
        SaveOption(11, "Options", first, false);
        SaveOption(12, "Options", last, false);
    }
};

TEST_F(DateDialogTest, OpensOnTheFieldsDateOrTodayAndCancelKeepsTheText) {
    for (const Variant text : {"1/5/2000", "", "1/*/2000", "not a date"}) {
        auto dialog = dateDialog(text);
        EXPECT_EQ(dialog->MonthView1->selectedDate(),
                  text == Variant("1/5/2000") ? kFieldDay : QDate::currentDate());
        EXPECT_TRUE(run(*dialog, [](frmDate& d) { click(d.cmdCancel); }));
        EXPECT_EQ(dialog->vDate, text);
        dialog->vDate = "1/12/2000";
        dialog->ReSetDate();
        EXPECT_EQ(dialog->MonthView1->selectedDate(), kClickedDay);
    }
    EXPECT_FALSE(ui.busy);
}

TEST_F(DateDialogTest, DoubleClickOnADateTakesIt) {
    auto dialog = dateDialog();
    EXPECT_TRUE(run(*dialog, [](frmDate& d) { clickDate(d, kClickedDay, true); }));
    EXPECT_EQ(dialog->vDate, dayOf(kClickedDay));
}

TEST_F(DateDialogTest, GoToAndEnterCountFromTodayByUnitAndBoxes) {
    for (const char* count : {"10", ""}) {  // an empty number is 0
        for (qint16 unit = 0; unit <= 3; ++unit) {
            for (const int boxes : {0, 1, 2, 3}) {
                const bool weekend = boxes & 1, weekday = boxes & 2;
                SCOPED_TRACE(testing::Message() << count << " " << unit << " " << boxes);
                const Variant expected = fromToday(unit, rt::Val(count), weekend, weekday);
                auto dialog = dateDialog();
                EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
                    d.cmbWhich->setCurrentIndex(unit);
                    tick(d.chkWeekend, weekend);
                    tick(d.chkWeekday, weekday);
                    typeNumber(d, count);
                    click(d.cmdApply);
                    EXPECT_EQ(dayOf(d.MonthView1->selectedDate()), expected);
                    EXPECT_TRUE(d.isVisible());
                    d.MonthView1->setSelectedDate(kFieldDay);
                    click(d.cmdEnter);
                }));
                EXPECT_EQ(dialog->vDate, expected);
            }
        }
    }
}

TEST_F(DateDialogTest, CalendarDaysEndingOnASaturdayMoveToMonday) {
    const double today = rt::Today();
    const int toSaturday = (7 - rt::Weekday(today)) % 7;
    for (const bool weekday : {true, false}) {
        auto dialog = dateDialog();
        run(*dialog, [&](frmDate& d) {
            tick(d.chkWeekday, weekday);
            typeNumber(d, QString::number(toSaturday));
            click(d.cmdEnter);
        });
        EXPECT_EQ(dialog->vDate, Variant::date(today + toSaturday + (weekday ? 2 : 0)));
    }
}

TEST_F(DateDialogTest, EnterFollowsTheLastOfCalendarClickAndNumberChange) {
    const Action clickDay = [](frmDate& d) { clickDate(d, kClickedDay); };
    const Action typeTwo = [](frmDate& d) { typeNumber(d, "2"); };
    const Action none = [](frmDate&) {};
    const struct {
        Action first, second;
        Variant expected;
    } cases[] = {
        {none, none, dayOf(kFieldDay)},       {clickDay, none, dayOf(kClickedDay)},
        {typeTwo, none, fromToday(1, 2)},     {typeTwo, clickDay, dayOf(kClickedDay)},
        {clickDay, typeTwo, fromToday(1, 2)},
    };
    for (const auto& c : cases) {
        for (const bool inNumber : {false, true}) {
            auto dialog = dateDialog();
            EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
                d.cmbWhich->setCurrentIndex(1);
                c.first(d);
                c.second(d);
                QWidget* target = inNumber ? static_cast<QWidget*>(d.txtNum->txtField) : grid(d);
                QTest::keyClick(target, Qt::Key_Return);
            }));
            EXPECT_EQ(dialog->vDate, c.expected) << (&c - cases) << inNumber;
        }
    }
}

TEST_F(DateDialogTest, AClickAfterACalendarClickActsOnce) {
    auto dialog = dateDialog();
    EXPECT_TRUE(run(*dialog, [](frmDate& d) {
        clickDate(d, kClickedDay);
        click(d.chkWeekend);
        EXPECT_FALSE(d.chkWeekend->isChecked());
        clickDate(d, kClickedDay);
        click(d.chkWeekday);
        EXPECT_FALSE(d.chkWeekday->isChecked());
        clickDate(d, kClickedDay);
        click(d.cmdApply);
        EXPECT_EQ(dayOf(d.MonthView1->selectedDate()), fromToday(0, 0, false, false));
        clickDate(d, kClickedDay);
        click(d.cmdCancel);
    }));
    EXPECT_EQ(dialog->vDate, Variant("1/5/2000"));
}

TEST_F(DateDialogTest, TodayAndNowTakeThePresentAndLosingTheFocusCancels) {
    for (const bool isDate : {true, false}) {
        auto dialog = open(isDate, Variant());
        const double before = rt::Now();
        EXPECT_TRUE(run(*dialog, [](frmDate& d) { click(d.cmdToday); }));
        const Variant& taken = isDate ? dialog->vDate : dialog->vTime;
        EXPECT_TRUE(taken.isDate() && taken.realValue() >= before &&
                    taken.realValue() <= rt::Now());
        EXPECT_TRUE((isDate ? dialog->vTime : dialog->vDate).isEmpty());
    }
    auto dialog = dateDialog();
    QWidget other;
    EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
        d.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&d));
        clickDate(d, kClickedDay);
        other.show();
        other.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    }));
    EXPECT_EQ(dialog->vDate, Variant("1/5/2000"));
}

TEST_F(DateDialogTest, EachModeShowsItsOwnPart) {
    auto date = dateDialog();
    auto time = timeDialog();
    EXPECT_EQ(date->HelpContextID, 115);
    EXPECT_EQ(time->HelpContextID, 114);
    EXPECT_EQ(date->height(), twipsToPixels(4896));
    EXPECT_LT(time->height(), date->height());
    EXPECT_EQ(time->cmdToday->text(), "&Now");
    EXPECT_EQ(time->cmdToday->x() - date->cmdToday->x(), twipsToPixels(520));
    EXPECT_EQ(time->cmdCancel->x() - date->cmdCancel->x(), twipsToPixels(520));
    EXPECT_FALSE(date->rect().intersects(date->cmdOK->geometry()));
    run(*time, [](frmDate& d) {
        EXPECT_FALSE(d.MonthView1->isVisible());
        EXPECT_TRUE(d.lstTimes->isVisible());
    });
}

TEST_F(DateDialogTest, TheBoxesAreRememberedPerUser) {
    frmDate().Unload();  // never loaded, so it keeps nothing
    auto first = dateDialog();
    EXPECT_TRUE(first->chkWeekend->isChecked() && first->chkWeekday->isChecked());
    run(*first, [](frmDate& d) { click(d.chkWeekday); });
    first->Unload();
    auto second = timeDialog();
    EXPECT_TRUE(second->chkWeekend->isChecked());
    EXPECT_FALSE(second->chkWeekday->isChecked());
    gUsers(0).id = 2;
    EXPECT_TRUE(dateDialog()->chkWeekday->isChecked());
}

TEST_F(DateDialogTest, TheTimeListRunsFromFirstToLastByTheStep) {
    const struct {
        const char *first, *last;
        qint16 step;
        QStringList rows;
    } cases[] = {
        {"9:00 AM", "10:00 AM", 30, {"09:00 AM", "09:30 AM", "10:00 AM"}},
        {"9:00 AM", "10:10 AM", 45, {"09:00 AM", "09:45 AM"}},
        {"9:00 AM", "9:59:59 AM", 30, {"09:00 AM", "09:30 AM", "10:00 AM"}},  // a second's grace
        {"5:00 PM", "8:00 AM", 30, {}},
        {"9:00 AM", "10:00 AM", 0, {"09:00 AM"}},  // must not run forever
        {"9:00 AM", "10:00 AM", -15, {"09:00 AM"}},
    };
    for (const auto& c : cases) {
        setTimes(c.first, c.last);
        gTimeStep = c.step;
        EXPECT_EQ(rowsOf(timeDialog()->lstTimes), c.rows) << c.first << " " << c.step;
    }
}

TEST_F(DateDialogTest, TheDefaultListIsTheWorkingDayInSightOfTheFieldsTime) {
    auto dialog = timeDialog(Variant::date(rt::TimeSerial(17, 0, 0)));
    const QStringList rows = rowsOf(dialog->lstTimes);
    EXPECT_EQ(rows.size(), 19);
    EXPECT_EQ(rows.front(), "08:00 AM");
    EXPECT_EQ(rows.back(), "05:00 PM");
    run(*dialog, [](frmDate& d) {
        QListWidget* list = d.lstTimes;
        EXPECT_TRUE(list->viewport()->rect().contains(list->visualItemRect(list->item(18))));
    });
}

TEST_F(DateDialogTest, TheFieldsTimeSelectsItsRowByWholeMinutes) {
    setTimes("9:00 AM", "10:00 AM");
    const struct {
        Variant time;
        int row;
    } cases[] = {
        {Variant::date(rt::TimeSerial(9, 30, 0)), 1},
        {Variant::date(rt::TimeSerial(9, 30, 45)), 1},
        {Variant::date(rt::TimeSerial(10, 0, 0)), 2},
        {Variant::date(rt::TimeSerial(9, 31, 0)), -1},
        {Variant(), -1},
    };
    for (const auto& c : cases) {
        auto dialog = timeDialog(c.time);
        EXPECT_EQ(dialog->lstTimes->currentRow(), c.row) << rt::CStr(c.time).toStdString();
        EXPECT_EQ(dialog->lstTimes->selectedItems().size(), c.row < 0 ? 0 : 1);
    }
}

TEST_F(DateDialogTest, ATimeIsPickedByClickOrEnterAndNoRowGivesTheIntegerZero) {
    setTimes("9:00 AM", "10:00 AM");
    const Variant halfPast = Variant::date(rt::TimeSerial(9, 30, 0));
    const Variant offGrid = Variant::date(rt::TimeSerial(9, 31, 0));
    const Action enter = [](frmDate& d) { QTest::keyClick(d.lstTimes, Qt::Key_Return); };
    const struct {
        Variant time;
        Action user;
        Variant picked;
    } cases[] = {
        {offGrid,
         [](frmDate& d) {
             click(d.lstTimes->viewport(),
                   d.lstTimes->visualItemRect(d.lstTimes->item(1)).center());
         },
         halfPast},
        {halfPast, enter, halfPast},
        {offGrid, enter, Variant(qint16(0))},
        {offGrid,
         [](frmDate& d) {
             click(d.lstTimes->viewport(),
                   d.lstTimes->viewport()->rect().bottomLeft() + QPoint(4, -4));
         },
         Variant(qint16(0))},
    };
    for (const auto& c : cases) {
        auto dialog = timeDialog(c.time);
        EXPECT_TRUE(run(*dialog, c.user));
        EXPECT_EQ(dialog->vTime, c.picked) << (&c - cases);
        EXPECT_EQ(dialog->vTime.type(), c.picked.type()) << (&c - cases);
    }
}

}  // namespace
