#pragma once

#include "platform/variant.h"

#include <QMap>
#include <QStringList>
#include <QWidget>

#include <functional>

class PropertyBag;
class QAction;
class QKeyEvent;
class QLineEdit;
class QMenu;
class QToolButton;

// The typed input field of the suite's data-entry forms: a text box that formats what is typed by
// `texttype`, and for dates, times, choices, Yes/No and files a select button at its right end.
class vText : public QWidget {
    Q_OBJECT
public:
    explicit vText(QWidget* parent = nullptr);

    qint16 texttype() const { return m_texttype; }
    // Lays the field out again and checks its text in the new type's form.
    void settexttype(const rt::Variant& value);

    // A number field gives numeric text or 0, a date or time field a date or Null (its text as
    // typed when wildcards are allowed), the others their trimmed text. A currency field with
    // wildcards allowed fails with 13 on a text that is no number even with digits for them.
    rt::Variant text() const;
    // Writes the trimmed text, lets pending events run, then checks it.
    void setText(const rt::Variant& value);

    qint16 MaxLength() const;
    void setMaxLength(qint16 value);
    qint16 Alignment() const;  // 0 left, 1 right, 2 centre
    void setAlignment(qint16 value);
    // The text box's own state; setting it sets the button's too.
    bool Enabled() const;
    void setEnabled(bool value);
    // A locked field can't be typed in and its button is disabled.
    bool Locked() const;
    void setLocked(bool value);

    double HighLimit() const { return m_HighLimit; }
    void setHighLimit(double value) { m_HighLimit = float(value); }
    double LowLimit() const { return m_LowLimit; }
    void setLowLimit(double value) { m_LowLimit = float(value); }
    qint16 NumberDecimals() const { return m_NumberDecimals; }
    void setNumberDecimals(qint16 value) { m_NumberDecimals = value; }
    bool AllowWildCards() const { return m_AllowWildCards; }
    void setAllowWildCards(bool value) { m_AllowWildCards = value; }

    const QStringList& Selections() const { return m_Selections; }
    qint16 nSelections() const { return m_nSelections; }
    void ClearSelections();
    void AddSelection(const QString& New_Sel);

    // Puts the text in its type's form; a text it can't read stays as far as the check got.
    void Check();
    // Shows the select button for the types that have one and lays out the text box beside it.
    void DoButton();
    // The select button; Control+Down in the text box runs it too.
    void imgSelect_Click();
    void CapNameVText();

    // The stored properties of a form: read on load, written when the form is saved.
    void ReadProperties(const PropertyBag& bag);
    void WriteProperties(PropertyBag& bag) const;

    // Entry `Index` of the popup, loaded if it isn't yet; a caller may fill the popup itself.
    QAction* loadMenu(int Index);
    // A click on entry `Index` of the popup.
    void mnMenu_Click(int Index);

    QSize sizeHint() const override;

    QLineEdit* txtField;
    QToolButton* imgSelect;
    QMenu* mnMyPopup;
    QMap<int, QAction*> mnMenu;  // entry 0 always exists; the others are loaded on demand

    // Shows the popup at a point of the screen and returns when it is closed, after the pick's
    // click ran. A test replaces it to pick an entry without a blocking menu loop.
    std::function<void(QMenu* popup, const QPoint& at)> showPopup;

signals:
    // Every change of the text, typed or made by code.
    void Changed();
    // A key the field doesn't use itself, by its desktop key code. A handler that sets the code
    // to 0 takes the key away from the text box. Connect directly: the code is a reference.
    void KeyDown(qint16& KeyCode);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool hasButton() const;
    rt::Variant dateValue(const QString& s) const;
    rt::Variant currencyValue(const QString& s) const;
    void checkNumber(const QString& s);
    void checkCurrency(const QString& s);
    void checkDate(QString s);
    void checkTime(const QString& s);
    bool keyPressed(const QKeyEvent* event);
    bool stepKey(qint16 KeyCode);
    void selectDateOrTime(bool bIsDate);
    void selectChoices();
    void selectYesNo();
    void selectFile();
    QAction* menuEntry(int Index) const;
    void unloadMenuEntries();

    qint16 m_texttype = 0;
    float m_HighLimit = 0;
    float m_LowLimit = 0;
    qint16 m_NumberDecimals = 0;
    float nLastGood = 0;
    QStringList m_Selections;
    qint16 m_nSelections = 0;
    bool m_AllowWildCards = false;
};
