#pragma once

#include "platform/variant.h"

#include <QDialog>

class QCalendarWidget;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QListWidget;
class QPushButton;
class vText;

// The modal dialog behind a date or a time field: a month calendar with a small calculator of
// days, weeks, months or years from today, or a list of the day's times. The field sets the mode
// and its value, calls ReSetDate or ResetTime, shows the window and reads the value back once it
// is hidden. There is no cancel flag: a cancel leaves the values as they went in.
class frmDate : public QDialog {
public:
    explicit frmDate(QWidget* parent = nullptr);

    bool bIsDate = false;  // the mode; set before ReSetDate or ResetTime
    rt::Variant vDate;     // in: the field's text; out: the chosen date
    rt::Variant vTime;     // in: the field's time; out: the chosen time, or the integer 0
    int HelpContextID = 0;

    // Both load the window on the first call of either, so the mode must be set by then.
    void ReSetDate();
    void ResetTime();
    // Stores the two boxes for the user's next opening; the caller deletes the window after.
    void Unload();

    void cmdApply_Click();
    void cmdEnter_Click();
    void cmdToday_Click();
    void cmdCancel_Click();
    void cmdOK_Click();
    void MonthView1_DblClick();
    void lstTimes_MouseUp();

    QCalendarWidget* MonthView1;
    QListWidget* lstTimes;
    QGroupBox* Frame1;
    vText* txtNum;
    QComboBox* cmbWhich;
    QCheckBox* chkWeekend;
    QCheckBox* chkWeekday;
    QPushButton* cmdApply;
    QPushButton* cmdEnter;
    QPushButton* cmdToday;
    QPushButton* cmdCancel;
    QPushButton* cmdOK;

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildControls();
    void connectEvents();
    void Form_Load();
    void loadOnce();
    void setCalendar(const rt::Variant& value);
    rt::Variant calendarValue() const;
    // Moves the calendar by the calculator; false when txtNum holds no number.
    bool applyOffset();

    QWidget* calendarView_ = nullptr;  // the calendar's grid of days, where its keys arrive
    bool loaded_ = false;
    double vFirstTime = 0;
    double vLastTime = 0;
};
