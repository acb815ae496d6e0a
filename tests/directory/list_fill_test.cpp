// The directory lists with their cells, through edge cases of the rows behind them, and the
// employee list reloaded more often than a run's 16-bit count of opened cursors would allow at
// one cursor per employee.

#include "access/right_catalogue.h"
#include "console_fixture.h"
#include "data/dbase.h"
#include "data/session.h"

#include <algorithm>

namespace {

class ListFillTestFixture : public ConsoleFixture {
protected:
    // Each row as "tag:cell|cell|...", from the list.
    static QStringList shown(ReportList* list) {
        QStringList result;
        for (int r = 0; r < list->rowCount(); ++r) {
            QStringList cells;
            for (int c = 0; c < list->cellCount(r); ++c) {
                cells << list->cell(r, c);
            }
            result << list->tag(r).toString() + ':' + cells.join('|');
        }
        return result;
    }
};

class ListFillTest : public testing_support::OnEveryBackend<ListFillTestFixture> {};

ORVANE_ON_EVERY_BACKEND(ListFillTest);

// Each list's rows as "id:cell|cell|..."; the employees' with an edition only in the four.
const QStringList kExpected[] = {
    {"12:aaron lower|alow|Senior Associate|12|No|CSD", "1:Alice Admin|admin|Administrator|1|No|CSD",
     "2:Brian Cole|bcole|Agent|2|Yes|AGD", "3:Carmen Diaz||Associate|3|No|ASD",
     "4:Derek Evans|devans|Manager|4|Yes|AGP", "5:Erin Ford|eford|Clerk|5|No"},
    {"6:Sales Team|2|6", "7:Support Desk|0|7"},
    {"13:Annex|13", "8:Conference Room|8", "9:Projector|9"},
    {"10:Downtown Office|2|10", "11:Northside Office|0|11"},
};

TEST_P(ListFillTest, EveryListShowsItsCells) {
    // Carmen has no rts row, Derek one, Brian two; rows of nobody and of a workgroup count for
    // no employee.
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 2, 0)");
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 2, 1)");
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 6, 0)");
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), NULL, 0)");
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 999, 0)");
    run("UPDATE users SET fslevel = 7 WHERE id = 5");
    run("UPDATE users SET fslevel = NULL, Logon = NULL WHERE id = 3");
    run("UPDATE users SET num = NULL WHERE id = 7");
    run("INSERT INTO users (Name, Logon, Password, accLevel, fslevel, Type, num) "
        "VALUES ('aaron lower', 'alow', 'x', 4, 3, 0, 0)");
    run("INSERT INTO users (Name, Logon, Password, accLevel, fslevel, Type, num) "
        "VALUES ('Annex', 'zq', 'zq', 1, 0, 2, NULL)");
    logOn();
    ASSERT_EQ(count("rts", "uid = 2"), 2);

    for (int tab :
         {frmAdmin::Employees, frmAdmin::Workgroups, frmAdmin::Equipment, frmAdmin::Branches}) {
        ReportList* list = showTab(tab);
        const qint16 type = tab == frmAdmin::Branches ? 3 : qint16(tab);
        SCOPED_TRACE(list->objectName().toStdString());
        EXPECT_EQ(shown(list), kExpected[tab == frmAdmin::Branches ? 3 : tab]);
        EXPECT_EQ(list->selectedRow(), 0);

        // A list sorted by a click stays sorted so through the next fill.
        console.lstColumnClick(list, 1);
        std::unique_ptr<RecSet>& cursor = tab == frmAdmin::Employees    ? console.rsEmployees
                                          : tab == frmAdmin::Workgroups ? console.rsWorkgroups
                                          : tab == frmAdmin::Equipment  ? console.rsEquipment
                                                                        : console.rsBranches;
        const QStringList sorted = shown(list);
        console.LoadUserlist(type, cursor);
        EXPECT_EQ(shown(list), sorted);
        EXPECT_EQ(list->selectedRow(), 0);
        EXPECT_TRUE(cursor->FindFirst("id = " + list->tag(0).toString()));
    }
}

// At one cursor per employee, 40 employees overflow the count within 800 reloads.
TEST_P(ListFillTest, TheEmployeeListReloadsAThousandTimesInOneRun) {
    for (int i = 0; i < 35; ++i) {
        run(QStringLiteral("INSERT INTO users (Name, Logon, Password, accLevel, fslevel, Type) "
                           "VALUES ('Extra %1', 'x%1', 'x', 1, 0, 0)")
                .arg(i));
    }
    logOn();
    ui.messages.clear();
    ResetSessionCheck();
    const QStringList first = shown(console.lstEmployees);
    ASSERT_EQ(first.size(), 40);
    for (int i = 0; i < 1000; ++i) {
        console.LoadUserlist(0, console.rsEmployees);
    }
    EXPECT_EQ(shown(console.lstEmployees), first);
    EXPECT_TRUE(ui.messages.empty());
    ResetSessionCheck();
}

}  // namespace
