// The lookup field's property page: it reads and writes the first selected control only, and
// its two boxes for "all" and "none" exclude each other.

#include "controls/lutext_prop_page.h"
#include "fixtures.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSignalSpy>

namespace {

const char* const kProperties[] = {"lookuptype", "IncludeAll", "IncludeNone", "Schedule"};

// The four properties of a lookup field, by which the designer hands it over.
QList<int> propertiesOf(const QObject& control) {
    QList<int> values;
    for (const char* name : kProperties) {
        values << control.property(name).toInt();
    }
    return values;
}

TEST(LookupPropertyPage, ReadsAndWritesTheFirstSelectedControlOnly) {
    QObject first, second, plain;
    for (int i = 0; i < 4; ++i) {  // 2 is a greyed box
        first.setProperty(kProperties[i], QList<int>{5, 1, 2, 1}[i]);
        second.setProperty(kProperties[i], QList<int>{2, 0, 1, 0}[i]);
    }
    LUTextPropPage page;
    page.SelectedControls = {&first, &second};
    page.SelectionChanged();
    EXPECT_EQ(page.cmbTextType->currentText(), "6 - Employees");
    EXPECT_TRUE(page.chkIncludeAll->isChecked() && page.chkSchedule->isChecked());
    EXPECT_FALSE(page.chkNone->checkState() != Qt::PartiallyChecked || page.Changed());
    page.cmbTextType->setCurrentIndex(0);
    page.chkSchedule->click();
    page.ApplyChanges();
    EXPECT_EQ(propertiesOf(first), QList<int>({0, 1, 2, 0}));
    EXPECT_EQ(propertiesOf(second), QList<int>({2, 0, 1, 0}));

    page.SelectedControls = {&plain};
    EXPECT_EQ(testing_support::errorOf([&] { page.SelectionChanged(); }), 438);
    EXPECT_EQ(testing_support::errorOf([&] { page.ApplyChanges(); }), 438);
}

TEST(LookupPropertyPage, AllAndNoneExcludeEachOtherAndEveryClickMarksTheChange) {
    LUTextPropPage page;
    QSignalSpy changed(&page, &LUTextPropPage::pageChanged);
    // The box clicked, then whether "all" and "none" are ticked.
    const std::tuple<QCheckBox*, bool, bool> steps[] = {{page.chkIncludeAll, true, false},
                                                        {page.chkNone, false, true},
                                                        {page.chkIncludeAll, true, false},
                                                        {page.chkSchedule, true, false}};
    for (const auto& [clicked, all, none] : steps) {
        clicked->click();
        EXPECT_EQ(std::pair(page.chkIncludeAll->isChecked(), page.chkNone->isChecked()),
                  std::pair(all, none));
    }
    EXPECT_EQ(changed.count(), 4);
    EXPECT_TRUE(page.Changed());
}

}  // namespace
