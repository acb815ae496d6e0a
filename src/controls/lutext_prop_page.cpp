#include "controls/lutext_prop_page.h"

#include "platform/rt_error.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>

namespace {

QObject* firstOf(const QList<QObject*>& selection) {
    if (selection.isEmpty()) {
        throw rt::Error::standard(rt::SubscriptOutOfRange);
    }
    return selection.first();
}

// A property the control must have; late binding fails the same way on a missing one.
QVariant member(const QObject* control, const char* name) {
    const QVariant value = control->property(name);
    if (!value.isValid()) {
        throw rt::Error::standard(438);
    }
    return value;
}

// Check box values as the stored properties hold them: 0 unticked, 1 ticked, 2 greyed.
Qt::CheckState checkStateOf(int value) {
    return value == 1 ? Qt::Checked : value == 2 ? Qt::PartiallyChecked : Qt::Unchecked;
}

qint16 valueOf(const QCheckBox* box) {
    switch (box->checkState()) {
        case Qt::Checked:
            return 1;
        case Qt::PartiallyChecked:
            return 2;
        default:
            return 0;
    }
}

QCheckBox* checkBox(QWidget* page, const char* name, const char* caption) {
    auto* box = new QCheckBox(QString::fromLatin1(caption), page);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

}  // namespace

LUTextPropPage::LUTextPropPage(QWidget* parent) : QWidget(parent) {
    lblTextType = new QLabel(QStringLiteral("Lookup Type:"), this);
    lblTextType->setObjectName(QStringLiteral("lblTextType"));
    cmbTextType = new QComboBox(this);
    cmbTextType->setObjectName(QStringLiteral("cmbTextType"));
    cmbTextType->addItems({"1 - Contacts", "2 - Projects", "3 - Accounts", "4 - Billing Accounts",
                           "5 - Products", "6 - Employees"});
    chkIncludeAll = checkBox(this, "chkIncludeAll", "Include All Choice");
    chkNone = checkBox(this, "chkNone", "Include None Choice");
    chkSchedule = checkBox(this, "chkSchedule", "Used for Scheduling (Employee Types Only)");

    auto* layout = new QVBoxLayout(this);
    for (QWidget* control : std::initializer_list<QWidget*>{lblTextType, cmbTextType, chkIncludeAll,
                                                            chkNone, chkSchedule}) {
        layout->addWidget(control);
    }
    layout->addStretch();

    // Only the user's clicks count: reading a control into the page changes nothing.
    connect(chkIncludeAll, &QCheckBox::clicked, this, [this] {
        if (chkIncludeAll->isChecked()) {
            chkNone->setChecked(false);
        }
        markChanged();
    });
    connect(chkNone, &QCheckBox::clicked, this, [this] {
        if (chkNone->isChecked()) {
            chkIncludeAll->setChecked(false);
        }
        markChanged();
    });
    connect(chkSchedule, &QCheckBox::clicked, this, &LUTextPropPage::markChanged);
    connect(cmbTextType, &QComboBox::activated, this, &LUTextPropPage::markChanged);
}

void LUTextPropPage::SelectionChanged() {
    const QObject* control = firstOf(SelectedControls);
    cmbTextType->setCurrentIndex(member(control, "lookuptype").toInt());
    chkIncludeAll->setCheckState(checkStateOf(member(control, "IncludeAll").toInt()));
    chkNone->setCheckState(checkStateOf(member(control, "IncludeNone").toInt()));
    chkSchedule->setCheckState(checkStateOf(member(control, "Schedule").toInt()));
}

void LUTextPropPage::ApplyChanges() {
    QObject* control = firstOf(SelectedControls);
    const std::pair<const char*, qint16> values[] = {
        {"lookuptype", qint16(cmbTextType->currentIndex())},
        {"IncludeAll", valueOf(chkIncludeAll)},
        {"IncludeNone", valueOf(chkNone)},
        {"Schedule", valueOf(chkSchedule)},
    };
    for (const auto& [name, value] : values) {
        member(control, name);
        control->setProperty(name, QVariant::fromValue(value));
    }
}

void LUTextPropPage::markChanged() {
    m_Changed = true;
    emit pageChanged();
}
