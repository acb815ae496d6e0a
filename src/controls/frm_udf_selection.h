#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

class QCheckBox;
class QPushButton;

// The modal list of check boxes behind a field with fixed choices: the choices already in the
// field come ticked, and the ticked ones go back as one comma list. The caller makes a new one
// for each use, reads it once it is hidden and deletes it.
class frmUDFSelection : public QDialog {
public:
    static constexpr int kBoxes = 24;

    explicit frmUDFSelection(QWidget* parent = nullptr);

    // Ticks the choices found in `sSelected`, a comma list, and shows the dialog modally; returns
    // once it is hidden. More than 24 choices fail with 9, as there are no boxes for them.
    void ShowForm(const QStringList& Choices, qint16 nNumber, const QString& sSelected,
                  bool bSingleOnly);
    // The captions of the ticked boxes in box order, joined by ", ".
    QString GetSelections() const;

    bool Cancelled = true;
    bool SingleSelection = false;

    QList<QCheckBox*> chkSelection;
    QPushButton* cmdOkay;
    QPushButton* cmdCancel;

    // Escape and the window's close button leave as Cancel does.
    void reject() override;

private:
    void chkSelection_Click(int nIndex);
    void cmdOkay_Click();
    void cmdCancel_Click();
    void shrinkBy(int rows);

    bool bFormBusy = false;
    qint16 nSpareBoxes = 0;
};
