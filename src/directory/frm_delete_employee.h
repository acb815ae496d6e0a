#pragma once

#include <QDialog>

#include <optional>

class QComboBox;
class QLabel;
class QPushButton;
class QRadioButton;
class ReportList;

// Removes an employee: with everything the employee owns, or with the business data given to
// another employee and only the personal data removed. The knowledge of what hangs on an
// employee is here, as a fixed order of statements, each child table before its parent.
class frmDeleteEmployee : public QDialog {
public:
    // `employees` is the console's list, whose rows offer the receivers in the order it shows.
    explicit frmDeleteEmployee(ReportList* employees, QWidget* parent = nullptr);

    // Loads the window for the employee in `id` and shows it modally until it is hidden.
    void ShowModal();
    void cmdOK_Click();
    void cmdCancel_Click();

    qint32 id = 0;
    bool bCanceled = true;

    QRadioButton* optGive;
    QLabel* Label1[2];
    QComboBox* cmbEmployee;
    QRadioButton* optAll;
    QPushButton* cmdOK;
    QPushButton* cmdCancel;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Form_Load();
    // The users.id of the employee whose name was chosen; nothing when the text names none of
    // the items, or more than one.
    std::optional<qint32> chosenReceiver() const;

    ReportList* employees_;
};
