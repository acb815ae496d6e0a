#include "controls/frm_date.h"

#include "controls/time_step.h"
#include "controls/vtext.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/formats.h"
#include "platform/ui.h"
#include "settings/options.h"
#include "util/twips.h"
#include "util/value_helpers.h"
#include "util/widgets.h"

#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>

namespace {

// The design, in twips. The short height shows the calendar or the list with Today and Cancel
// under it; date mode stretches the window to uncover the calculator below them.
constexpr int kWidth = 4200;
constexpr int kMargin = 120;
constexpr int kViewWidth = kWidth - 2 * kMargin;  // the calendar, the time list and Frame1
constexpr int kViewHeight = 2550;
constexpr int kButtonTop = 2790;
constexpr int kButtonWidth = 1400;
constexpr int kButtonHeight = 375;
constexpr int kShortHeight = kButtonTop + kButtonHeight + kMargin;
constexpr int kDateHeight = 4896;
constexpr int kNowShift = 520;  // centres Today and Cancel under the time list

constexpr qint16 kDateHelp = 115;
constexpr qint16 kTimeHelp = 114;

const QString kPlanner = QStringLiteral("Planner");
constexpr qint16 kWeekendTag = 13;
constexpr qint16 kWeekdayTag = 14;
const QString kOptions = QStringLiteral("Options");
constexpr qint16 kFirstTimeTag = 11;
constexpr qint16 kLastTimeTag = 12;

QRect twips(int left, int top, int width, int height) {
    return {twipsToPixels(left), twipsToPixels(top), twipsToPixels(width), twipsToPixels(height)};
}

void moveRight(QWidget* widget, int byTwips) {
    widget->move(widget->x() + twipsToPixels(byTwips), widget->y());
}

// A box's value as the settings keep it: 1 ticked, 0 not.
void setBox(QCheckBox* box, const rt::Variant& stored) {
    box->setChecked(rt::CInt(stored) == 1);
}

qint16 boxValue(const QCheckBox* box) {
    return box->isChecked() ? 1 : 0;
}

bool isEnterKey(const QEvent* event) {
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

}  // namespace

frmDate::frmDate(QWidget* parent) : QDialog(parent) {
    MakeFixedDialog(this, QStringLiteral("frmDate"), QStringLiteral("Date"));
    buildControls();
    connectEvents();
}

void frmDate::buildControls() {
    MonthView1 = place<QCalendarWidget>(this, "MonthView1",
                                        twips(kMargin, kMargin, kViewWidth, kViewHeight));
    MonthView1->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    MonthView1->setMinimumDate(QDate(100, 1, 1));  // the runtime's calendar
    MonthView1->setMaximumDate(QDate(9999, 12, 31));
    lstTimes = place<QListWidget>(this, "lstTimes", MonthView1->geometry());
    lstTimes->setVisible(false);

    cmdToday = place<QPushButton>(
        this, "cmdToday", twips(kMargin, kButtonTop, kButtonWidth, kButtonHeight), "&Today");
    cmdCancel = place<QPushButton>(
        this, "cmdCancel",
        twips(2 * kMargin + kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight), "&Cancel");

    Frame1 = place<QGroupBox>(
        this, "Frame1",
        twips(kMargin, kShortHeight, kViewWidth, kDateHeight - kShortHeight - kMargin * 3 / 4),
        "Calculate Date from Today...");
    txtNum = place<vText>(Frame1, "txtNum", twips(150, 390, 750, 345));
    txtNum->settexttype(qint16(1));
    txtNum->setText(QString());
    cmbWhich = place<QComboBox>(Frame1, "cmbWhich", twips(990, 390, 1350, 345));
    cmbWhich->addItems({"Day(s)", "Week(s)", "Month(s)", "Year(s)"});
    cmdApply = place<QPushButton>(Frame1, "cmdApply", twips(2790, 383, 1050, 360), "&Go To");
    chkWeekend =
        place<QCheckBox>(Frame1, "chkWeekend", twips(150, 810, 2580, 300), "Count Weekend D&ays");
    chkWeekday = place<QCheckBox>(Frame1, "chkWeekday", twips(150, 1110, 2580, 300),
                                  "Move to Next &Weekday");
    cmdEnter = place<QPushButton>(Frame1, "cmdEnter", twips(2790, 810, 1050, 360), "&Enter");

    // Only there to be the default button, so Enter accepts what the calendar or the list shows;
    // it lies beyond the window's edge and takes no focus.
    cmdOK = place<QPushButton>(this, "cmdOK",
                               twips(kWidth + kMargin, kMargin, kButtonWidth, kButtonHeight),
                               "Keep Me, I Enter");
    cmdOK->setFocusPolicy(Qt::NoFocus);
    cmdOK->setDefault(true);

    QWidget* order[] = {MonthView1, lstTimes, cmdToday,   cmdCancel,  txtNum,
                        cmbWhich,   cmdApply, chkWeekend, chkWeekday, cmdEnter};
    for (size_t i = 0; i + 1 < std::size(order); ++i) {
        setTabOrder(order[i], order[i + 1]);
    }
    setFixedSize(twipsToPixels(kWidth), twipsToPixels(kShortHeight));
}

void frmDate::connectEvents() {
    OnEvent(cmdApply, &QPushButton::clicked, this, [this] { cmdApply_Click(); });
    OnEvent(cmdEnter, &QPushButton::clicked, this, [this] { cmdEnter_Click(); });
    OnEvent(cmdToday, &QPushButton::clicked, this, [this] { cmdToday_Click(); });
    OnEvent(cmdCancel, &QPushButton::clicked, this, [this] { cmdCancel_Click(); });
    OnEvent(cmdOK, &QPushButton::clicked, this, [this] { cmdOK_Click(); });
    OnEvent(MonthView1, &QCalendarWidget::activated, this, [this] { MonthView1_DblClick(); });
    // Qt's calendar lets the mouse go on release, so the click on a button or a box after a
    // click on a date arrives whole and acts once by itself. What is left of the rule is the
    // default button: Enter accepts the clicked date, or runs the calculation once the number
    // changed.
    connect(MonthView1, &QCalendarWidget::clicked, this, [this] { cmdOK->setDefault(true); });
    connect(txtNum, &vText::Changed, this, [this] { cmdEnter->setDefault(true); });
    // The calendar's view would take Enter as an activation of its date; it must reach the
    // default button instead, which may be the calculation's.
    calendarView_ = MonthView1->findChild<QTableView*>();
    calendarView_->installEventFilter(this);
    lstTimes->viewport()->installEventFilter(this);
}

bool frmDate::eventFilter(QObject* watched, QEvent* event) {
    if (watched == lstTimes->viewport() && event->type() == QEvent::MouseButtonRelease) {
        platform::runHandler([this] { lstTimes_MouseUp(); });
    } else if (watched == calendarView_ && isEnterKey(event)) {
        event->ignore();  // on to the dialog
        return true;
    }
    return QDialog::eventFilter(watched, event);
}

void frmDate::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isVisible() && !isActiveWindow()) {
        platform::runHandler([this] { cmdCancel_Click(); });
    }
}

void frmDate::loadOnce() {
    if (!loaded_) {
        loaded_ = true;
        Form_Load();
    }
}

void frmDate::Form_Load() {
    ShowBusy();
    setBox(chkWeekend, GetOption(kWeekendTag, kPlanner, qint16(1), false));
    setBox(chkWeekday, GetOption(kWeekdayTag, kPlanner, qint16(1), false));
    if (bIsDate) {
        HelpContextID = kDateHelp;
        setFixedSize(twipsToPixels(kWidth), twipsToPixels(kDateHeight));
    } else {
        setWindowTitle(QStringLiteral("Time"));
        lstTimes->setVisible(true);
        MonthView1->setVisible(false);
        Frame1->setVisible(false);  // below the short height; kept out of the tab order too
        HelpContextID = kTimeHelp;
        cmdToday->setText(QStringLiteral("&Now"));
        moveRight(cmdToday, kNowShift);
        moveRight(cmdCancel, kNowShift);
    }
    cmbWhich->setCurrentIndex(0);
    setCalendar(vDate);
    ShowIdle();
}

void frmDate::ReSetDate() {
    loadOnce();
    setCalendar(vDate);
}

void frmDate::ResetTime() {
    loadOnce();
    ShowBusy();
    int selected = -1;
    lstTimes->clear();
    vFirstTime = rt::CDate(GetOption(kFirstTimeTag, kOptions, "8:00 AM", false));
    // A second more, so that a last time on the grid is in the list.
    vLastTime = rt::DateAdd("s", 1, rt::CDate(GetOption(kLastTimeTag, kOptions, "5:00 PM", false)));
    const bool matching = rt::IsDate(vTime);
    for (double t = vFirstTime; t <= vLastTime; t = rt::DateAdd("n", gTimeStep, t)) {
        lstTimes->addItem(rt::Format(rt::Variant::date(t), "Medium Time"));
        if (matching && rt::DateDiff("n", rt::CDate(vTime), t) == 0) {
            selected = lstTimes->count() - 1;
        }
        // A step below a minute would never get past the last time, so the list keeps its first.
        if (gTimeStep < 1) {
            break;
        }
    }
    lstTimes->setCurrentRow(selected, QItemSelectionModel::ClearAndSelect);
    ShowIdle();
}

void frmDate::Unload() {
    if (!loaded_) {
        return;  // nothing was read, so nothing the user chose is to keep
    }
    SaveOption(kWeekendTag, kPlanner, boxValue(chkWeekend), false);
    SaveOption(kWeekdayTag, kPlanner, boxValue(chkWeekday), false);
}

void frmDate::setCalendar(const rt::Variant& value) {
    const rt::DateParts day = rt::splitDate(rt::IsDate(value) ? rt::CDate(value) : rt::Today());
    MonthView1->setSelectedDate(QDate(day.year, day.month, day.day));
}

rt::Variant frmDate::calendarValue() const {
    const QDate day = MonthView1->selectedDate();
    return rt::Variant::date(rt::DateSerial(day.year(), day.month(), day.day()));
}

bool frmDate::applyOffset() {
    const rt::Variant count = txtNum->text();
    if (!rt::IsNumeric(count)) {
        return false;
    }
    // The field gives its number as text, and the working-day count takes numbers only.
    setCalendar(DateOffset(rt::Variant::date(rt::Today()), qint16(cmbWhich->currentIndex()),
                           rt::CDbl(count), chkWeekend->isChecked(), chkWeekday->isChecked()));
    return true;
}

void frmDate::cmdApply_Click() {
    applyOffset();
}

void frmDate::cmdEnter_Click() {
    if (applyOffset()) {
        vDate = calendarValue();
        hide();
    }
}

void frmDate::cmdToday_Click() {
    (bIsDate ? vDate : vTime) = rt::Variant::date(rt::Now());
    hide();
}

void frmDate::cmdCancel_Click() {
    hide();
}

void frmDate::cmdOK_Click() {
    if (bIsDate) {
        MonthView1_DblClick();
    } else {
        lstTimes_MouseUp();
    }
}

void frmDate::MonthView1_DblClick() {
    vDate = calendarValue();
    hide();
}

void frmDate::lstTimes_MouseUp() {
    const QList<QListWidgetItem*> picked = lstTimes->selectedItems();
    vTime = picked.isEmpty() ? rt::Variant(qint16(0))
                             : rt::Variant::date(rt::CDate(picked.first()->text()));
    hide();
}
