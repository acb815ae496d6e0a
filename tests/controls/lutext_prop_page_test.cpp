// The lookup field's property page: it reads and writes the first selected control only, and
// its two boxes for "all" and "none" exclude each other.

#include "controls/lutext_prop_page.h"
#include "fixtures.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSignalSpy>

namespace {

// A lookup field as the designer hands it over: four properties by name.
std::unique_ptr<QObject> lookupField(int type, int all, int none, int schedule) {
    auto control = std::make_unique<QObject>();
    control->setProperty("lookuptype", type);
    control->setProperty("IncludeAll", all);
    control->setProperty("IncludeNone", none);
    control->setProperty("Schedule", schedule);
    return control;
}

QList<int> propertiesOf(const QObject& control) {
    QList<int> values;
    for (const char* name : {"lookuptype", "IncludeAll", "IncludeNone", "Schedule"}) {
        values << control.property(name).toInt();
    }
    return values;
}

TEST(LookupPropertyPage, ReadsAndWritesTheFirstSelectedControlOnly) {
    auto first = lookupField(5, 1, 0, 1);
    auto second = lookupField(2, 0, 1, 0);
    LUTextPropPage page;
    EXPECT_EQ(page.cmbTextType->count(), 6);
    EXPECT_EQ(page.cmbTextType->itemText(5), "6 - Employees");
    page.SelectedControls = {first.get(), second.get()};
    page.SelectionChanged();
    EXPECT_EQ(page.cmbTextType->currentText(), "6 - Employees");
    EXPECT_TRUE(page.chkIncludeAll->isChecked());
    EXPECT_FALSE(page.chkNone->isChecked());
    EXPECT_TRUE(page.chkSchedule->isChecked());
    EXPECT_FALSE(page.Changed());

    page.cmbTextType->setCurrentIndex(0);
    page.chkSchedule->click();
    page.ApplyChanges();
    EXPECT_EQ(propertiesOf(*first), QList<int>({0, 1, 0, 0}));
    EXPECT_EQ(propertiesOf(*second), QList<int>({2, 0, 1, 0}));
    EXPECT_TRUE(page.Changed());
}

TEST(LookupPropertyPage, AllAndNoneExcludeEachOtherAndEveryClickMarksTheChange) {
    LUTextPropPage page;
    QSignalSpy changed(&page, &LUTextPropPage::pageChanged);
    const struct {
        QCheckBox* clicked;
        bool all, none;
    } steps[] = {
        {page.chkIncludeAll, true, false}, {page.chkNone, false, true},
        {page.chkIncludeAll, true, false}, {page.chkIncludeAll, false, false},
        {page.chkSchedule, false, false},
    };
    for (const auto& step : steps) {
        step.clicked->click();
        EXPECT_EQ(page.chkIncludeAll->isChecked(), step.all);
        EXPECT_EQ(page.chkNone->isChecked(), step.none);
    }
    EXPECT_EQ(changed.count(), 5);
}

TEST(LookupPropertyPage, AControlWithoutThePropertiesIsRefused) {
    QObject plain;
    LUTextPropPage page;
    page.SelectedControls = {&plain};
    EXPECT_EQ(testing_support::errorOf([&] { page.SelectionChanged(); }), 438);
    EXPECT_EQ(testing_support::errorOf([&] { page.ApplyChanges(); }), 438);
    EXPECT_FALSE(plain.property("lookuptype").isValid());
}

}  // namespace
