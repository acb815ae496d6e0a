// Deleting workgroups, equipment and branches with their asymmetries, and ending sessions from
// the console.

#include "console_fixture.h"
#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_admin.h"
#include "directory/frm_employee.h"
#include "logon/command_line.h"
#include "platform/convert.h"
#include "util/report_list.h"

#include <QAction>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>

namespace {

using platform::Msg::No;
using platform::Msg::Yes;

class ConsoleCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override {
        ConsoleFixture::SetUp();
        // Planner items and watch rows of the entries; 7 (Support Desk) has a member, 3.
        for (int entry : {6, 7, 8, 9, 10, 11}) {
            run(QString("INSERT INTO reminder (userid, startd) VALUES (%1, 36766)").arg(entry));
        }
        run("INSERT INTO extaccess (userid, extid) VALUES (9, 3)");  // the projector's own row
        run("INSERT INTO extaccess (userid, extid) VALUES (3, 9)");  // someone extends to it
        run("INSERT INTO watch_branch (branchid, userid) VALUES (10, 1)");
        run("INSERT INTO watch_branch (branchid, userid) VALUES (11, 1)");
        logOn();
    }
    void run(const QString& sql) { db->execute(sql); }
    qint32 count(const QString& table, const QString& where) {
        return rt::CLng(db->openRecordset("SELECT count(*) FROM " + table + " WHERE " + where)
                            ->field(0)
                            .value());
    }
    ReportList* showTab(int tab) {
        console.tabAdmin->setCurrentIndex(tab);
        switch (tab) {
            case frmAdmin::Workgroups:
                return console.lstWorkGroups;
            case frmAdmin::Equipment:
                return console.lstEquipment;
            case frmAdmin::Branches:
                return console.lstBranches;
            default:
                return console.lstEmployees;
        }
    }
    void select(ReportList* list, int entry) {
        for (int row = 0; row < list->rowCount(); ++row) {
            if (list->tag(row).toInt() == entry) {
                list->selectRow(row);
            }
        }
    }
    // Deletes the list's row of that entry with the answer given.
    void remove(ReportList* list, int entry, int answer) {
        select(list, entry);
        ui.answers.push_back(answer);
        console.cmdDelete->click();
    }
};

TEST_F(ConsoleCommandsTest, EachKindAsksAndClearsWhatItsOwnRulesSay) {
    const struct {
        int tab;
        int entry;
        const char* question;
        const char* extaccessGone;  // rows the entry leaves behind in extaccess after a Yes...
        const char* extaccessKept;  // ...and those that stay
        bool remindersGo;
    } cases[] = {
        {frmAdmin::Workgroups, 7,
         "Are you sure you want to delete this workgroup and any planner items associated "
         "with it?",
         "userid = 7", "extid = 7", true},
        {frmAdmin::Equipment, 9,
         "Are you sure you want to delete this equipment and any planner items associated "
         "with it?",
         "extid = 9", "userid = 9", true},
        {frmAdmin::Branches, 10, "Are you sure you want to delete this branch?", "userid = 10",
         "extid = 10", false},
    };
    for (const auto& c : cases) {
        ui.messages.clear();
        ReportList* list = showTab(c.tab);
        const int rows = list->rowCount();
        const qint32 links = count("extaccess", c.extaccessGone);
        remove(list, c.entry, No);
        ASSERT_EQ(ui.messages.size(), 1u) << c.question;
        EXPECT_EQ(ui.messages[0].text, c.question);
        EXPECT_EQ(ui.messages[0].buttons, platform::Msg::YesNo);
        EXPECT_EQ(ui.messages[0].defaultButton, 2);  // No
        EXPECT_EQ(list->rowCount(), rows);
        EXPECT_EQ(count("users", QString("id = %1").arg(c.entry)), 1);
        EXPECT_EQ(count("extaccess", c.extaccessGone), links);
        EXPECT_EQ(count("reminder", QString("userid = %1").arg(c.entry)), 1);

        remove(list, c.entry, Yes);
        EXPECT_EQ(list->rowCount(), rows - 1);
        EXPECT_EQ(count("users", QString("id = %1").arg(c.entry)), 0);
        EXPECT_EQ(count("extaccess", c.extaccessGone), 0);
        EXPECT_EQ(count("extaccess", c.extaccessKept), c.tab == frmAdmin::Equipment ? 1 : 0);
        EXPECT_EQ(count("reminder", QString("userid = %1").arg(c.entry)), c.remindersGo ? 0 : 1);
    }
    EXPECT_EQ(count("watch_branch", "branchid = 11"), 1);
}

// Another program's lock fails each command that writes more than one statement at its commit: it
// is undone whole, says why, and the same command goes through once the lock is gone.
TEST_F(ConsoleCommandsTest, ACommandThatCannotCommitChangesNothingAndCanBeTriedAgain) {
    const auto state = [this] {
        return testing_support::rowsOf(*db, "SELECT * FROM users ORDER BY id") +
               testing_support::rowsOf(*db, "SELECT * FROM extaccess ORDER BY userid, extid") +
               testing_support::rowsOf(*db, "SELECT * FROM reminder ORDER BY id");
    };
    const auto listed = [](ReportList* list) {
        QStringList rows;
        for (int row = 0; row < list->rowCount(); ++row) {
            rows << list->cell(row, 0) + "=" + list->tag(row).toString();
        }
        return rows;
    };
    using Step = std::function<void()>;
    // What the administrator does in the editor: the other program takes its lock, the first OK
    // fails, `between` runs, then OK again.
    const auto inEditor = [this](const QString& name, const Step& lock, const Step& between) {
        ui.modalScripts.push_back([=](QWidget* w) {
            auto* editor = static_cast<frmEmployee*>(w);
            editor->txtName->setText(name);
            QListWidgetItem* first = editor->lstExtended->item(0);
            first->setCheckState(first->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
            lock();
            editor->cmdOK_Click();
            EXPECT_TRUE(editor->isVisible());
            between();
            editor->cmdOK_Click();
        });
    };
    const struct {
        const char* command;
        int tab;
        std::function<void(ReportList*, const Step& lock, const Step& between)> tryTwice;
        const char* table;
        const char* rowsAfter;  // one row of `table` after the second try
    } commands[] = {
        {"delete a workgroup", frmAdmin::Workgroups,
         [&](ReportList* list, const Step& lock, const Step& between) {
             lock();
             remove(list, 7, Yes);
             between();
             remove(list, 7, Yes);
         },
         "users", "id IN (6, 7)"},
        {"edit a workgroup", frmAdmin::Workgroups,
         [&](ReportList* list, const Step& lock, const Step& between) {
             select(list, 6);
             inEditor("Support Team", lock, between);
             console.cmdEdit->click();
         },
         "users", "id = 6 AND Name = 'Support Team'"},
        {"add a workgroup", frmAdmin::Workgroups,
         [&](ReportList*, const Step& lock, const Step& between) {
             inEditor("Night Desk", lock, between);
             console.cmdNew->click();
         },
         "extaccess", "userid IN (SELECT id FROM users WHERE Name = 'Night Desk')"},
    };
    for (const auto& c : commands) {
        SCOPED_TRACE(c.command);
        ReportList* list = showTab(c.tab);
        const QStringList before = state();
        const QStringList rows = listed(list);
        ui.messages.clear();
        std::optional<testing_support::OtherProgram> reader;
        const auto lock = [&] { reader.emplace(demoDatabase(), testing_support::kReading); };
        c.tryTwice(list, lock, [&] {
            ASSERT_FALSE(ui.messages.empty());
            EXPECT_EQ(ui.messages.back().text, "Couldn't update; currently locked.");
            EXPECT_EQ(state(), before);
            EXPECT_EQ(listed(list), rows);
            EXPECT_FALSE(ui.busy);
            reader->letGo();
        });
        EXPECT_NE(state(), before);
        EXPECT_EQ(count(c.table, c.rowsAfter), 1);
        const std::vector<QString> texts = ui.texts();
        EXPECT_EQ(std::count(texts.begin(), texts.end(), "Couldn't update; currently locked."), 1);
    }
}

// A statement that fails after others of the command ran leaves none of them done.
TEST_F(ConsoleCommandsTest, AStatementFailingMidwayLeavesNothingDone) {
    const auto state = [this] {
        return testing_support::rowsOf(*db, "SELECT * FROM users ORDER BY id") +
               testing_support::rowsOf(*db, "SELECT * FROM extaccess ORDER BY userid, extid");
    };
    // The planner items go after the links; a member is written after the entry.
    testing_support::runOnFile(demoDatabase(),
                               "CREATE TRIGGER refused BEFORE DELETE ON reminder BEGIN SELECT "
                               "RAISE(ABORT, 'refused'); END; CREATE TRIGGER alsoRefused BEFORE "
                               "INSERT ON extaccess BEGIN SELECT RAISE(ABORT, 'refused'); END");
    const QStringList before = state();
    ReportList* workgroups = showTab(frmAdmin::Workgroups);
    remove(workgroups, 7, Yes);
    ReportList* equipment = showTab(frmAdmin::Equipment);
    remove(equipment, 9, Yes);
    showTab(frmAdmin::Workgroups);
    select(workgroups, 6);
    ui.modalScripts.push_back([](QWidget* w) {
        auto* editor = static_cast<frmEmployee*>(w);
        editor->txtName->setText("Support Team");
        for (int i = 0; i < editor->lstExtended->count(); ++i) {
            editor->lstExtended->item(i)->setCheckState(Qt::Checked);
        }
        editor->cmdOK_Click();
        EXPECT_TRUE(editor->isVisible());
        editor->cmdCancel_Click();
    });
    console.cmdEdit->click();
    EXPECT_EQ(state(), before);
    EXPECT_EQ(workgroups->rowCount(), 2);
    EXPECT_EQ(equipment->rowCount(), 2);
    EXPECT_EQ(ui.messages.size(), 5u);  // two questions, three failures
    EXPECT_FALSE(ui.ended);
}

TEST_F(ConsoleCommandsTest, ABranchsWatchRowsGoBeforeTheQuestion) {
    remove(showTab(frmAdmin::Branches), 11, No);
    EXPECT_EQ(count("watch_branch", "branchid = 11"), 0);
    EXPECT_EQ(count("users", "id = 11"), 1);
    EXPECT_EQ(count("watch_branch", "branchid = 10"), 1);
}

TEST_F(ConsoleCommandsTest, DeletingTheLastRowDisablesEditAndDelete) {
    ReportList* list = showTab(frmAdmin::Equipment);
    remove(list, 8, Yes);
    EXPECT_TRUE(console.cmdEdit->isEnabled());
    EXPECT_EQ(list->selectedRow(), 0);  // the list offers the remaining row
    console.mnDelete->trigger();        // the menu does the same as the button; Enter answers No...
    EXPECT_EQ(list->rowCount(), 1);
    remove(list, 9, Yes);
    EXPECT_EQ(list->rowCount(), 0);
    EXPECT_FALSE(console.cmdEdit->isEnabled());
    EXPECT_FALSE(console.cmdDelete->isEnabled());
    EXPECT_FALSE(console.mnEdit->isEnabled());
    EXPECT_FALSE(console.mnDelete->isEnabled());
    EXPECT_TRUE(console.cmdNew->isEnabled());
}

TEST_F(ConsoleCommandsTest, LoggingOffAnEmployeeFromEveryTabThatReachesIt) {
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 4, 1)");  // Derek twice
    console.lstEmployees->selectRow(3);
    for (int tab :
         {frmAdmin::Workgroups, frmAdmin::Equipment, frmAdmin::Branches, frmAdmin::Employees}) {
        showTab(tab);
        ASSERT_TRUE(console.mnActions->menuAction()->isVisible()) << tab;
        ui.messages.clear();
        ui.answers.push_back(No);
        console.mnLogOff->trigger();
        EXPECT_EQ(count("rts", "uid = 4"), 2) << tab;
        EXPECT_EQ(console.lstEmployees->cell(3, 4), "Yes");
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text,
                  "This will invalidate any current working sessions of the Lattimer Series "
                  "for Derek Evans.  \r\nAre you SURE you want to continue?");
        EXPECT_EQ(ui.messages[0].defaultButton, 1);  // Yes
    }
    showTab(frmAdmin::Equipment);  // acts on the employee list out of sight
    ui.answers.push_back(Yes);
    console.mnLogOff->trigger();
    EXPECT_EQ(count("rts", "uid = 4"), 0);
    EXPECT_EQ(console.lstEmployees->cell(3, 4), "No");
    showTab(frmAdmin::AccessLevels);
    EXPECT_FALSE(console.mnActions->menuAction()->isVisible());
}

TEST_F(ConsoleCommandsTest, ClearingAllSessionsFromAnyTab) {
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 2, 1)");
    for (int tab : {frmAdmin::AccessLevels, frmAdmin::UserFields, frmAdmin::Workgroups}) {
        console.tabAdmin->setCurrentIndex(tab);
        ui.messages.clear();
        ui.answers.push_back(No);
        console.mnClearRTS->trigger();
        EXPECT_EQ(count("rts", "1 = 1"), 2);
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(ui.messages[0].text,
                  "This will invalidate any current working sessions of the Lattimer Series.  "
                  "Anyone currently using the system will be disconnected.\r\nAre you SURE you "
                  "want to continue?");
        EXPECT_EQ(ui.messages[0].defaultButton, 1);
    }
    EXPECT_EQ(console.lstEmployees->cell(3, 4), "Yes");
    const bool editEnabled = console.cmdEdit->isEnabled();
    ui.answers.push_back(Yes);
    console.mnClearRTS->trigger();
    EXPECT_EQ(count("rts", "1 = 1"), 0);
    for (int row = 0; row < console.lstEmployees->rowCount(); ++row) {
        EXPECT_EQ(console.lstEmployees->cell(row, 4), "No");
    }
    EXPECT_EQ(console.tabAdmin->currentIndex(), frmAdmin::Workgroups);
    EXPECT_EQ(console.cmdEdit->isEnabled(), editEnabled);
}

}  // namespace
