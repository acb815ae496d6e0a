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
#include "util/value_helpers.h"

#include <QApplication>
#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QtTest/QTest>

#include <functional>
#include <memory>

using rt::Variant;

namespace {

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

void click(QWidget* w, QPoint at = {}) {
    QTest::mouseClick(w, Qt::LeftButton, {}, at.isNull() ? w->rect().center() : at);
}

// The grid runs row by row, seven days a row, from the cell of the selected date.
void clickDate(frmDate& d, QDate date, bool twice = false) {
    const QModelIndex at = grid(d)->currentIndex();
    const qint64 cell = at.row() * 7 + at.column() + d.MonthView1->selectedDate().daysTo(date);
    const QPoint point =
        grid(d)->visualRect(grid(d)->model()->index(int(cell / 7), int(cell % 7))).center();
    click(grid(d)->viewport(), point);
    if (twice) {
        QTest::mouseDClick(grid(d)->viewport(), Qt::LeftButton, {}, point);
    }
}

class DateDialogTest : public testing_support::OptionsSessionTest {
protected:
    void TearDown() override {
        gTimeStep = 30;
        OptionsSessionTest::TearDown();
    }

    std::unique_ptr<frmDate> open(bool isDate, const Variant& value = "1/5/2000") {
        auto dialog = std::make_unique<frmDate>();
        dialog->bIsDate = isDate;
        (isDate ? dialog->vDate : dialog->vTime) = value;
        isDate ? dialog->ReSetDate() : dialog->ResetTime();
        return dialog;
    }

    // Shows the dialog modally while the user acts; true when the actions hid it.
    bool run(frmDate& dialog, const std::function<void(frmDate&)>& user) {
        bool hidden = false;
        ui.modalScripts.push_back([&](QWidget*) {
            QApplication::processEvents();
            user(dialog);
            hidden = !dialog.isVisible();
        });
        platform::ui().showModal(&dialog, nullptr);
        return hidden;
    }

    QStringList timesListed(const char* first, const char* last) {
        SaveOption(11, "Options", first, false);
        SaveOption(12, "Options", last, false);
        const auto dialog = open(false, Variant());
        QStringList rows;
        for (int i = 0; i < dialog->lstTimes->count(); ++i) {
            rows << dialog->lstTimes->item(i)->text();
        }
        return rows;
    }
};

TEST_F(DateDialogTest, OpensOnTheFieldsDateOrTodayAndCancelKeepsTheText) {
    for (const Variant text : {"1/5/2000", "", "1/*/2000", "not a date"}) {
        auto dialog = open(true, text);
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

TEST_F(DateDialogTest, GoToAndEnterCountFromTodayByUnitAndBoxes) {
    for (const char* count : {"10", ""}) {  // an empty number is 0
        for (qint16 unit = 0; unit <= 3; ++unit) {
            // Each box alone, so that neither stands for the other.
            for (const bool weekend : {true, false}) {
                const bool weekday = !weekend;
                SCOPED_TRACE(testing::Message() << count << " " << unit << " " << weekend);
                const Variant expected = fromToday(unit, rt::Val(count), weekend, weekday);
                auto dialog = open(true);
                EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
                    d.cmbWhich->setCurrentIndex(unit);
                    d.chkWeekend->setChecked(weekend);
                    d.chkWeekday->setChecked(weekday);
                    QTest::keyClicks(d.txtNum->txtField, count);
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

// Steps: "d" clicks a day in the calendar and "D" double-clicks it, "n" types a number of weeks;
// Enter follows.
TEST_F(DateDialogTest, ADoubleClickTakesADateAndEnterFollowsTheLastOfClickAndNumberChange) {
    const std::pair<std::string, Variant> cases[] = {{"D", dayOf(kClickedDay)},
                                                     {"", dayOf(kFieldDay)},
                                                     {"nd", dayOf(kClickedDay)},
                                                     {"dn", fromToday(1, 2)}};
    for (const auto& [steps, expected] : cases) {
        auto dialog = open(true);
        EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
            d.cmbWhich->setCurrentIndex(1);
            for (const char step : steps) {
                step == 'n' ? QTest::keyClicks(d.txtNum->txtField, "2")
                            : clickDate(d, kClickedDay, step == 'D');
            }
            QTest::keyClick(grid(d), Qt::Key_Return);  // the calendar passes Enter on
        }));
        EXPECT_EQ(dialog->vDate, expected) << steps;
    }
}

// The window's losing the focus cancels, also right after a click on a date.
TEST_F(DateDialogTest, AClickAfterACalendarClickActsOnceAndLosingTheFocusCancels) {
    auto dialog = open(true);
    QWidget other;
    EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
        for (QCheckBox* box : {d.chkWeekend, d.chkWeekday}) {
            clickDate(d, kClickedDay);
            click(box);
            EXPECT_FALSE(box->isChecked());
        }
        clickDate(d, kClickedDay);
        click(d.cmdApply);
        EXPECT_EQ(dayOf(d.MonthView1->selectedDate()), fromToday(0, 0, false, false));
        d.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&d));
        clickDate(d, kClickedDay);
        other.show();
        other.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    }));
    EXPECT_EQ(dialog->vDate, Variant("1/5/2000"));
}

TEST_F(DateDialogTest, EachModeShowsItsPartAndTodayOrNowTakesThePresent) {
    for (const bool isDate : {true, false}) {
        auto dialog = open(isDate, Variant());
        const double before = rt::Now();
        EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
            EXPECT_EQ(d.MonthView1->isVisible() && d.Frame1->isVisible(), isDate);
            EXPECT_EQ(d.lstTimes->isVisible(), !isDate);
            click(d.cmdToday);
        }));
        const Variant& taken = isDate ? dialog->vDate : dialog->vTime;
        EXPECT_TRUE(taken.isDate() && taken.realValue() >= before &&
                    taken.realValue() <= rt::Now());
    }
}

TEST_F(DateDialogTest, TheBoxesAreRememberedPerUser) {
    frmDate().Unload();  // never loaded, so it keeps nothing
    auto first = open(true);
    EXPECT_TRUE(first->chkWeekend->isChecked() && first->chkWeekday->isChecked());
    run(*first, [](frmDate& d) { click(d.chkWeekend); });
    first->Unload();
    auto second = open(false, Variant());
    EXPECT_TRUE(!second->chkWeekend->isChecked() && second->chkWeekday->isChecked());
    gUsers(0).id = 2;
    EXPECT_TRUE(open(true)->chkWeekend->isChecked());
}

TEST_F(DateDialogTest, TheTimeListRunsFromFirstToLastByTheStep) {
    const std::tuple<const char*, const char*, qint16, QStringList> cases[] = {
        {"9:00 AM", "10:10 AM", 45, {"09:00 AM", "09:45 AM"}},
        {"9:00 AM", "9:59:59 AM", 30, {"09:00 AM", "09:30 AM", "10:00 AM"}},  // a second's grace
        {"5:00 PM", "8:00 AM", 30, {}},
        {"9:00 AM", "10:00 AM", 0, {"09:00 AM"}},  // must not run forever
        {"9:00 AM", "10:00 AM", -15, {"09:00 AM"}},
    };
    for (const auto& [first, last, step, rows] : cases) {
        gTimeStep = step;
        EXPECT_EQ(timesListed(first, last), rows) << first << " " << step;
    }
}

// A click below the rows or Enter on no selected row gives the integer 0.
TEST_F(DateDialogTest, TheFieldsTimeSelectsItsRowByWholeMinutesAndAClickOrEnterPicks) {
    timesListed("9:00 AM", "10:00 AM");
    const Variant halfPast = Variant::date(rt::TimeSerial(9, 30, 0));
    const Variant offGrid = Variant::date(rt::TimeSerial(9, 31, 0));
    // The row clicked, or -1 for Enter.
    const std::tuple<Variant, int, Variant> cases[] = {
        {halfPast, -1, halfPast},          {Variant::date(rt::TimeSerial(9, 30, 45)), -1, halfPast},
        {offGrid, -1, Variant(qint16(0))}, {offGrid, 1, halfPast},
        {offGrid, 9, Variant(qint16(0))},
    };
    for (const auto& [time, clicked, picked] : cases) {
        auto dialog = open(false, time);
        EXPECT_TRUE(run(*dialog, [&](frmDate& d) {
            QListWidget* list = d.lstTimes;
            if (clicked < 0) {
                return QTest::keyClick(list, Qt::Key_Return);
            }
            click(list->viewport(), clicked < list->count()
                                        ? list->visualItemRect(list->item(clicked)).center()
                                        : list->viewport()->rect().bottomLeft() + QPoint(4, -4));
        }));
        EXPECT_EQ(dialog->vTime, picked) << rt::CStr(time).toStdString() << " " << clicked;
        EXPECT_EQ(dialog->vTime.type(), picked.type()) << clicked;
    }
}

}  // namespace
