#pragma once

#include <QList>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;

// The designer's page for a lookup field: what kind of record it looks up, and whether its list
// offers an entry for all and one for none. It reaches the field only through the properties of
// the first selected control, by name.
class LUTextPropPage : public QWidget {
    Q_OBJECT
public:
    explicit LUTextPropPage(QWidget* parent = nullptr);

    // The designer's selection; only the first control is read and written.
    QList<QObject*> SelectedControls;

    // Reads the four properties of the first selected control into the page.
    void SelectionChanged();
    // Writes the page to the first selected control. A control without one of the properties
    // fails with 438.
    void ApplyChanges();

    // Whether the user changed something since the designer last cleared the mark.
    bool Changed() const { return m_Changed; }
    void setChanged(bool value) { m_Changed = value; }

    QLabel* lblTextType;
    QComboBox* cmbTextType;
    QCheckBox* chkIncludeAll;
    QCheckBox* chkNone;
    QCheckBox* chkSchedule;

signals:
    // The user changed something, so the designer may offer to apply it.
    void pageChanged();

private:
    void markChanged();

    bool m_Changed = false;
};
