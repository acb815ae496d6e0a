#include "controls/vtext.h"

#include "controls/frm_date.h"
#include "controls/frm_udf_selection.h"
#include "controls/property_bag.h"
#include "controls/time_step.h"
#include "platform/convert.h"
#include "platform/dates.h"
#include "platform/formats.h"
#include "platform/rt_error.h"
#include "platform/ui.h"
#include "util/open_document.h"
#include "util/twips.h"
#include "util/value_helpers.h"

#include <QHash>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QRegularExpression>
#include <QToolButton>

#include <memory>

namespace {

constexpr qint16 kKeyUp = 38;
constexpr qint16 kKeyDown = 40;
constexpr int kButtonGap = 10;     // twips between the text box and the button
constexpr int kButtonWidth = 240;  // twips

// The stored properties' defaults, shared by reading and writing so that a default is never
// stored.
const rt::Variant kDefaultTextType = qint16(1);
const rt::Variant kDefaultAlignment = qint16(0);
const rt::Variant kDefaultMaxLength = qint32(0);
const rt::Variant kDefaultText = QString();
const rt::Variant kDefaultEnabled = true;
const rt::Variant kDefaultLocked = false;
const rt::Variant kDefaultLimit = 0.0f;
const rt::Variant kDefaultDecimals = qint16(0);

// A text box without a limit has the toolkit's largest.
constexpr int kNoMaxLength = 32767;

bool isDateType(qint16 type) {
    return type == 3 || type == 54;
}

// The key codes that handlers of KeyDown test for, as the desktop numbers them: letters by their
// capital, digits by their character, punctuation by the key that carries it on a US keyboard.
qint16 keyCodeOf(const QKeyEvent* event) {
    const int key = event->key();
    const bool keypad = event->modifiers() & Qt::KeypadModifier;
    if (key >= Qt::Key_0 && key <= Qt::Key_9) {
        return qint16(keypad ? 96 + (key - Qt::Key_0) : key);
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        return qint16(key);
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) {
        return qint16(112 + (key - Qt::Key_F1));
    }
    static const QHash<int, qint16> keypadKeys = {{Qt::Key_Asterisk, 106},
                                                  {Qt::Key_Plus, 107},
                                                  {Qt::Key_Minus, 109},
                                                  {Qt::Key_Period, 110},
                                                  {Qt::Key_Slash, 111}};
    if (keypad && keypadKeys.contains(key)) {
        return keypadKeys.value(key);
    }
    static const QHash<int, qint16> named = {
        {Qt::Key_Backspace, 8},    {Qt::Key_Tab, 9},           {Qt::Key_Backtab, 9},
        {Qt::Key_Return, 13},      {Qt::Key_Enter, 13},        {Qt::Key_Shift, 16},
        {Qt::Key_Control, 17},     {Qt::Key_Alt, 18},          {Qt::Key_Pause, 19},
        {Qt::Key_CapsLock, 20},    {Qt::Key_Escape, 27},       {Qt::Key_Space, 32},
        {Qt::Key_PageUp, 33},      {Qt::Key_PageDown, 34},     {Qt::Key_End, 35},
        {Qt::Key_Home, 36},        {Qt::Key_Left, 37},         {Qt::Key_Up, kKeyUp},
        {Qt::Key_Right, 39},       {Qt::Key_Down, kKeyDown},   {Qt::Key_Insert, 45},
        {Qt::Key_Delete, 46},      {Qt::Key_Exclam, 49},       {Qt::Key_At, 50},
        {Qt::Key_NumberSign, 51},  {Qt::Key_Dollar, 52},       {Qt::Key_Percent, 53},
        {Qt::Key_AsciiCircum, 54}, {Qt::Key_Ampersand, 55},    {Qt::Key_Asterisk, 56},
        {Qt::Key_ParenLeft, 57},   {Qt::Key_ParenRight, 48},   {Qt::Key_Semicolon, 186},
        {Qt::Key_Colon, 186},      {Qt::Key_Equal, 187},       {Qt::Key_Plus, 187},
        {Qt::Key_Comma, 188},      {Qt::Key_Less, 188},        {Qt::Key_Minus, 189},
        {Qt::Key_Underscore, 189}, {Qt::Key_Period, 190},      {Qt::Key_Greater, 190},
        {Qt::Key_Slash, 191},      {Qt::Key_Question, 191},    {Qt::Key_QuoteLeft, 192},
        {Qt::Key_AsciiTilde, 192}, {Qt::Key_BracketLeft, 219}, {Qt::Key_BraceLeft, 219},
        {Qt::Key_Backslash, 220},  {Qt::Key_Bar, 220},         {Qt::Key_BracketRight, 221},
        {Qt::Key_BraceRight, 221}, {Qt::Key_Apostrophe, 222},  {Qt::Key_QuoteDbl, 222},
    };
    return named.value(key, 0);
}

Qt::Alignment alignmentOf(qint16 value) {
    switch (value) {
        case 1:
            return Qt::AlignRight | Qt::AlignVCenter;
        case 2:
            return Qt::AlignHCenter | Qt::AlignVCenter;
        default:
            return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

}  // namespace

vText::vText(QWidget* parent) : QWidget(parent) {
    txtField = new QLineEdit(this);
    txtField->setObjectName(QStringLiteral("txtField"));
    txtField->installEventFilter(this);
    connect(txtField, &QLineEdit::textChanged, this, &vText::Changed);

    imgSelect = new QToolButton(this);
    imgSelect->setObjectName(QStringLiteral("imgSelect"));
    // A picture, not a control of its own: clicking it leaves the focus in the text box, so
    // that leaving for the dialog doesn't check the text.
    imgSelect->setFocusPolicy(Qt::NoFocus);
    imgSelect->setArrowType(Qt::DownArrow);
    imgSelect->resize(twipsToPixels(kButtonWidth), imgSelect->height());
    connect(imgSelect, &QToolButton::clicked, this,
            [this] { platform::runHandler([this] { imgSelect_Click(); }); });

    mnMyPopup = new QMenu(QStringLiteral("MyPopup"), this);
    mnMyPopup->setObjectName(QStringLiteral("mnMyPopup"));
    loadMenu(0);
    showPopup = [](QMenu* popup, const QPoint& at) { popup->exec(at); };

    // A field made in code is a stored field with every property at its default.
    ReadProperties(PropertyBag());
}

void vText::settexttype(const rt::Variant& value) {
    m_texttype = rt::CInt(value);
    DoButton();
    Check();
}

rt::Variant vText::text() const {
    const QString s = txtField->text();
    switch (m_texttype) {
        case 3:
        case 4:
        case 54:
            return dateValue(s);
        case 2:
            return currencyValue(s);
        case 1:
            if (s.isEmpty() || !rt::IsNumeric(s.trimmed())) {
                return qint16(0);
            }
            return s.trimmed();
        default:
            return s.trimmed();
    }
}

rt::Variant vText::dateValue(const QString& s) const {
    if (s.isEmpty()) {
        return rt::Variant::null();
    }
    if (m_AllowWildCards) {
        // The wildcard test accepts nothing as a date of type 54, so any search text passes.
        return s;
    }
    return rt::IsDate(s) ? rt::Variant::date(rt::CDate(s)) : rt::Variant::null();
}

rt::Variant vText::currencyValue(const QString& s) const {
    if (s.isEmpty()) {
        return qint16(0);
    }
    QString result = s;
    if (m_AllowWildCards) {
        QString probe = s;
        if (!WildcardIsValid(probe, 2)) {
            result.clear();
        }
    } else if (rt::IsNumeric(s)) {
        result = rt::doubleText(rt::CDbl(s));  // drops the currency form
    }
    return rt::IsNumeric(result) ? rt::Variant(result) : rt::Variant(qint16(0));
}

void vText::setText(const rt::Variant& value) {
    txtField->setText(value.isNull() ? QString() : rt::CStr(value).trimmed());
    DoEvents();
    Check();
}

qint16 vText::MaxLength() const {
    return qint16(txtField->maxLength() == kNoMaxLength ? 0 : txtField->maxLength());
}

void vText::setMaxLength(qint16 value) {
    txtField->setMaxLength(value == 0 ? kNoMaxLength : value);
}

qint16 vText::Alignment() const {
    const Qt::Alignment horizontal = txtField->alignment() & Qt::AlignHorizontal_Mask;
    return horizontal == Qt::AlignRight ? 1 : horizontal == Qt::AlignHCenter ? 2 : 0;
}

void vText::setAlignment(qint16 value) {
    txtField->setAlignment(alignmentOf(value));
}

bool vText::Enabled() const {
    return txtField->isEnabledTo(this);
}

void vText::setEnabled(bool value) {
    txtField->setEnabled(value);
    imgSelect->setEnabled(value);
}

bool vText::Locked() const {
    return txtField->isReadOnly();
}

void vText::setLocked(bool value) {
    txtField->setReadOnly(value);
    imgSelect->setEnabled(!value);
}

void vText::ClearSelections() {
    m_nSelections = 0;
    m_Selections.clear();
}

void vText::AddSelection(const QString& New_Sel) {
    // The list is sized by the count, which the Yes/No popup may have set without filling it.
    ++m_nSelections;
    m_Selections.resize(m_nSelections);
    m_Selections[m_nSelections - 1] = New_Sel;
}

void vText::CapNameVText() {
    CapitalizeField(txtField);
}

bool vText::hasButton() const {
    switch (m_texttype) {
        case 3:
        case 4:
        case 5:
        case 6:
        case 7:
        case 8:
        case 54:
            return true;
        default:
            return false;
    }
}

// Laid out in twips, the unit the suite's forms are designed in.
void vText::DoButton() {
    if (!hasButton()) {
        imgSelect->hide();
        txtField->setGeometry(0, 0, width(), height());
        return;
    }
    const int fieldWidth = pixelsToTwips(width()) - pixelsToTwips(imgSelect->width()) - kButtonGap;
    txtField->setGeometry(0, 0, twipsToPixels(fieldWidth), height());
    imgSelect->setGeometry(twipsToPixels(fieldWidth + kButtonGap), 0, imgSelect->width(), height());
    imgSelect->show();
}

QSize vText::sizeHint() const {
    return txtField->sizeHint();
}

void vText::resizeEvent(QResizeEvent*) {
    DoButton();
}

void vText::ReadProperties(const PropertyBag& bag) {
    m_texttype = rt::CInt(bag.ReadProperty("nTextType", kDefaultTextType));
    setAlignment(rt::CInt(bag.ReadProperty("Alignment", kDefaultAlignment)));
    const qint32 maxLength = rt::CLng(bag.ReadProperty("MaxLength", kDefaultMaxLength));
    txtField->setMaxLength(maxLength == 0 ? kNoMaxLength : maxLength);
    txtField->setText(rt::CStr(bag.ReadProperty("Text", kDefaultText)));
    // A stored form enables the text box alone; the button follows Locked.
    txtField->setEnabled(rt::CBool(bag.ReadProperty("Enabled", kDefaultEnabled)));
    setLocked(rt::CBool(bag.ReadProperty("Locked", kDefaultLocked)));
    m_HighLimit = rt::CSng(bag.ReadProperty("dHighLimit", kDefaultLimit));
    m_LowLimit = rt::CSng(bag.ReadProperty("dLowLimit", kDefaultLimit));
    m_NumberDecimals = rt::CInt(bag.ReadProperty("nNumberDecimals", kDefaultDecimals));
    DoButton();
}

void vText::WriteProperties(PropertyBag& bag) const {
    bag.WriteProperty("nTextType", m_texttype, kDefaultTextType);
    bag.WriteProperty("MaxLength", qint32(MaxLength()), kDefaultMaxLength);
    bag.WriteProperty("Text", txtField->text(), kDefaultText);
    bag.WriteProperty("Enabled", Enabled(), kDefaultEnabled);
    bag.WriteProperty("Locked", Locked(), kDefaultLocked);
    bag.WriteProperty("dHighLimit", m_HighLimit, kDefaultLimit);
    bag.WriteProperty("dLowLimit", m_LowLimit, kDefaultLimit);
    bag.WriteProperty("nNumberDecimals", m_NumberDecimals, kDefaultDecimals);
    bag.WriteProperty("Alignment", Alignment(), kDefaultAlignment);
}

void vText::Check() {
    if (m_texttype < 1 || m_texttype > 54) {
        return;
    }
    const QString s = txtField->text();
    try {
        switch (m_texttype) {
            case 1:
                checkNumber(s);
                break;
            case 2:
                checkCurrency(s);
                break;
            case 3:
            case 54:
                checkDate(s);
                break;
            case 4:
                checkTime(s);
                break;
            case 7:
                // Only a "no" is put right; "yes" and any other word stay as typed.
                if (s.toUpper() == "NO") {
                    txtField->setText(QStringLiteral("No"));
                }
                break;
            default:
                break;
        }
    } catch (const rt::Error&) {
        // Text the check can't read stays as the check left it; the user sees no failure.
    }
}

void vText::checkNumber(const QString& s) {
    txtField->setText(FormatValue(s, 1, m_NumberDecimals, true));
    const double d = rt::CDbl(txtField->text());
    if (m_HighLimit == 0 && m_LowLimit == 0) {
        return;  // no limits
    }
    const float n = rt::CSng(d);
    if (n >= m_LowLimit && n <= m_HighLimit) {
        nLastGood = n;
        return;
    }
    ShowMsg("Number must be between " + rt::singleText(m_LowLimit) + " and " +
                rt::singleText(m_HighLimit) + ".",
            platform::Msg::Exclamation | platform::Msg::OKOnly, QStringLiteral("Notice"));
    txtField->setText(rt::singleText(nLastGood));
}

void vText::checkCurrency(const QString& s) {
    const qint16 decimals = m_NumberDecimals > 0 ? m_NumberDecimals : qint16(2);
    txtField->setText(FormatValue(s, 2, decimals, true));
}

// The shorthand of data entry: a day of this month, month and day of this year, or a signed
// number of days from today.
void vText::checkDate(QString s) {
    if (m_AllowWildCards) {
        // The wildcard test knows no dates of type 54, so the one of type 3 decides.
        if (!WildcardIsValid(s, 3)) {
            txtField->clear();
        }
        return;
    }
    s.replace('.', '-');  // "." would read as a time separator
    if (rt::IsDate(s)) {
        txtField->setText(rt::Format(s, QStringLiteral("Short Date")));
        return;
    }
    if (s.startsWith('+') || s.startsWith('-')) {
        txtField->setText(rt::dateText(rt::Today() + rt::CInt(s)));
        return;
    }
    static const QRegularExpression separators(QStringLiteral("[:,\\\\/-]"));
    if (s.contains(separators)) {
        txtField->clear();
        return;
    }
    const rt::DateParts today = rt::splitDate(rt::Today());
    const QString year = QString::number(today.year);
    const bool numeric = rt::IsNumeric(s);
    QString candidate;
    if (numeric && (s.size() == 1 || s.size() == 2)) {
        candidate = QString::number(today.month) + "-" + s + "-" + year;
    } else if (numeric && s.size() == 4) {
        candidate = s.left(2) + "-" + s.right(2) + "-" + year;
    }
    txtField->setText(rt::IsDate(candidate) ? rt::Format(candidate, QStringLiteral("Short Date"))
                                            : QString());
}

void vText::checkTime(const QString& s) {
    if (m_AllowWildCards) {
        QString probe = s;
        if (!WildcardIsValid(probe, 4)) {
            txtField->clear();
        }
        return;
    }
    txtField->setText(rt::IsDate(s) ? rt::Format(s, QStringLiteral("Medium Time")) : QString());
}

bool vText::eventFilter(QObject* watched, QEvent* event) {
    if (watched != txtField) {
        return QWidget::eventFilter(watched, event);
    }
    switch (event->type()) {
        case QEvent::FocusIn:
            SelectAllText(txtField);
            break;
        case QEvent::FocusOut: {
            // Another window or a popup taking over is no leaving of the field.
            const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
            if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
                Check();
            }
            break;
        }
        case QEvent::KeyPress: {
            bool eaten = false;
            platform::runHandler([&] { eaten = keyPressed(static_cast<const QKeyEvent*>(event)); });
            return eaten;
        }
        default:
            break;
    }
    return QWidget::eventFilter(watched, event);
}

// Whether the key is used up here, so the text box doesn't see it.
bool vText::keyPressed(const QKeyEvent* event) {
    qint16 KeyCode = keyCodeOf(event);
    if (event->modifiers() & Qt::ControlModifier) {
        if (KeyCode != kKeyDown) {
            return false;
        }
        imgSelect_Click();
        return true;
    }
    if (stepKey(KeyCode)) {
        return true;
    }
    if (KeyCode == 0) {
        return false;  // a key without a code of its own
    }
    emit KeyDown(KeyCode);
    // A handler that clears the code takes the key away from the text box.
    return KeyCode == 0;
}

// The arrows of a date or time field: Down a step forward, Up a step back. Such a field takes
// every arrow, also when its text is no date and nothing changes.
bool vText::stepKey(qint16 KeyCode) {
    const int direction = KeyCode == kKeyDown ? 1 : KeyCode == kKeyUp ? -1 : 0;
    const bool date = isDateType(m_texttype);
    if (direction == 0 || !(date || m_texttype == 4)) {
        return false;
    }
    const QString s = txtField->text();
    if (!rt::IsDate(s)) {
        return true;
    }
    if (date) {
        txtField->setText(FormatValue(rt::Variant::date(rt::CDate(s) + direction), 3, 0, false));
    } else if (gTimeStep >= 1) {
        const double moved = rt::DateAdd(QStringLiteral("n"), direction * gTimeStep, rt::CDate(s));
        txtField->setText(FormatValue(rt::Variant::date(moved), 4, 0, false));
    }
    return true;
}

void vText::imgSelect_Click() {
    switch (m_texttype) {
        case 3:
        case 54:
            selectDateOrTime(true);
            break;
        case 4:
            selectDateOrTime(false);
            break;
        case 5:
        case 6:
            selectChoices();
            break;
        case 7:
            selectYesNo();
            break;
        case 8:
            selectFile();
            break;
        default:
            break;
    }
    unloadMenuEntries();
    // Back in the field, so that leaving it checks what the button brought.
    txtField->setFocus();
}

void vText::selectDateOrTime(bool bIsDate) {
    auto dialog = std::make_unique<frmDate>(window());
    dialog->bIsDate = bIsDate;
    if (bIsDate) {
        dialog->vDate = txtField->text();
    } else {
        rt::resumeNext([&] { dialog->vTime = rt::Variant::date(rt::CDate(txtField->text())); });
    }
    rt::resumeNext([&] { bIsDate ? dialog->ReSetDate() : dialog->ResetTime(); });
    rt::resumeNext([&] { platform::ui().showModal(dialog.get(), window()); });
    DoEvents();
    // A cancel leaves the value as it went in, so a valid text comes back in the field's form.
    const rt::Variant& chosen = bIsDate ? dialog->vDate : dialog->vTime;
    rt::resumeNext([&] {
        if (rt::IsDate(chosen)) {
            txtField->setText(rt::Format(
                chosen, bIsDate ? QStringLiteral("Short Date") : QStringLiteral("Medium Time")));
        }
    });
    rt::resumeNext([&] { dialog->Unload(); });
}

void vText::selectChoices() {
    if (m_nSelections == 0) {
        mnMenu.value(0)->setEnabled(false);
    }
    auto dialog = std::make_unique<frmUDFSelection>(window());
    rt::resumeNext(
        [&] { dialog->ShowForm(m_Selections, m_nSelections, txtField->text(), m_texttype == 5); });
    if (!dialog->Cancelled) {
        txtField->setText(dialog->GetSelections());
    }
}

void vText::selectYesNo() {
    // The count now stands for the popup's entries, not for the list of choices.
    m_nSelections = 2;
    loadMenu(1);
    const QString captions[] = {QStringLiteral("Yes"), QStringLiteral("No")};
    for (int i = 0; i < 2; ++i) {
        mnMenu.value(i)->setText(captions[i]);
        mnMenu.value(i)->setEnabled(true);
        mnMenu.value(i)->setChecked(false);
    }
    const QString s = txtField->text().toUpper();
    if (s == "YES") {
        mnMenu.value(0)->setChecked(true);
    } else if (s == "NO") {
        mnMenu.value(1)->setChecked(true);
    }
    showPopup(mnMyPopup, imgSelect->mapToGlobal(QPoint(0, 0)));
}

void vText::selectFile() {
    if (txtField->text().trimmed().isEmpty()) {
        rt::resumeNext([&] {
            txtField->setText(BrowseForFile(QString(), QStringLiteral("All Files|*.*"), true));
        });
    } else {
        // To pick another file the user empties the field first.
        rt::resumeNext([&] { OpenDocument(txtField->text()); });
    }
}

QAction* vText::loadMenu(int Index) {
    if (QAction* loaded = mnMenu.value(Index)) {
        return loaded;
    }
    auto* entry = new QAction(mnMyPopup);
    entry->setObjectName(QStringLiteral("mnMenu(%1)").arg(Index));
    entry->setCheckable(true);
    const auto next = mnMenu.upperBound(Index);
    mnMyPopup->insertAction(next == mnMenu.end() ? nullptr : next.value(), entry);
    mnMenu.insert(Index, entry);
    connect(entry, &QAction::triggered, this, [this, entry, Index](bool checked) {
        // The toolkit flips the tick of an entry before it tells of the click; the click reads
        // the ticks as the user saw them.
        entry->setChecked(!checked);
        platform::runHandler([&] { mnMenu_Click(Index); });
    });
    return entry;
}

QAction* vText::menuEntry(int Index) const {
    QAction* entry = mnMenu.value(Index);
    if (!entry) {
        throw rt::Error(340, QStringLiteral("Control array element '%1' doesn't exist").arg(Index));
    }
    return entry;
}

void vText::mnMenu_Click(int Index) {
    if (m_texttype == 6) {
        // The click toggles its own entry; the others keep their ticks.
        QString picked;
        for (int i = 0; i < m_nSelections; ++i) {
            const QAction* entry = menuEntry(i);
            if (entry->isChecked() != (i == Index)) {
                picked = picked.isEmpty() ? entry->text() : picked + ", " + entry->text();
            }
        }
        txtField->setText(picked);
    } else {
        txtField->setText(menuEntry(Index)->text());
    }
    unloadMenuEntries();
}

// Entry 0 stays; entries past the count were never loaded by the button.
void vText::unloadMenuEntries() {
    for (int i = 1; i < m_nSelections; ++i) {
        if (QAction* entry = mnMenu.take(i)) {
            // The popup may still be running the entry's click.
            mnMyPopup->removeAction(entry);
            entry->deleteLater();
        }
    }
}
