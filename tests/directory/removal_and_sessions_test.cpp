// Deleting workgroups, equipment and branches with their asymmetries, commands that fail undone
// whole, and ending sessions from the console.

#include "console_fixture.h"
#include "directory/frm_admin.h"
#include "directory/frm_employee.h"
#include "util/report_list.h"

#include <QAction>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>

#include <algorithm>
#include <optional>

namespace {

using platform::Msg::No;
using platform::Msg::Yes;

class ConsoleCommandsTestFixture : public ConsoleFixture {
protected:
    void SetUp() override {
        ConsoleFixture::SetUp();
        if (IsSkipped()) {
            return;
        }
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
    // Deletes the list's row of that entry with the answer given.
    void remove(ReportList* list, int entry, int answer) {
        select(list, entry);
        ui.answers.push_back(answer);
        console.cmdDelete->click();
    }
};

class ConsoleCommandsTest : public testing_support::OnEveryBackend<ConsoleCommandsTestFixture> {};

ORVANE_ON_EVERY_BACKEND(ConsoleCommandsTest);

// Failures made with another program's lock on the database file.
class FileConsoleCommandsTest : public ConsoleCommandsTestFixture {};

TEST_P(ConsoleCommandsTest, EachKindAsksAndClearsWhatItsOwnRulesSay) {
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
        const QString entry = QString::number(c.entry);
        remove(list, c.entry, No);
        EXPECT_TRUE(testing_support::saidOnly(
            ui, c.question, platform::Msg::YesNo | platform::Msg::DefaultButton2));
        EXPECT_EQ(list->rowCount(), rows);
        EXPECT_EQ(count("users", "id = " + entry), 1);
        EXPECT_EQ(count("extaccess", c.extaccessGone), links);
        EXPECT_EQ(count("reminder", "userid = " + entry), 1);
        // A branch's watch rows go before the question is even asked.
        EXPECT_EQ(count("watch_branch", "branchid = " + entry), 0);

        remove(list, c.entry, Yes);
        EXPECT_EQ(list->rowCount(), rows - 1);
        EXPECT_EQ(count("users", "id = " + entry), 0);
        EXPECT_EQ(count("extaccess", c.extaccessGone), 0);
        EXPECT_EQ(count("extaccess", c.extaccessKept), c.tab == frmAdmin::Equipment ? 1 : 0);
        EXPECT_EQ(count("reminder", "userid = " + entry), c.remindersGo ? 0 : 1);
    }
    EXPECT_EQ(count("watch_branch", "branchid = 11"), 1);
}

// A command that fails, midway or at its commit under another program's lock, is undone whole and
// says why; tried again once the obstacle is gone, the same command goes through.
TEST_F(FileConsoleCommandsTest, AFailedCommandChangesNothingAndCanBeTriedAgain) {
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
    std::optional<testing_support::OtherProgram> reader;
    using Step = std::function<void()>;
    const struct {
        const char* obstacle;
        Step put;
        Step remove;
        const char* message;
        int tab;  // where an entry is deleted: each obstacle has one of its own
        int entry;
        const char* renamed;
        const char* added;
    } obstacles[] = {
        {"another program's lock",
         [&] { reader.emplace(demoDatabase(), testing_support::kReading); },
         [&] { reader->letGo(); }, "Couldn't update; currently locked.", frmAdmin::Workgroups, 7,
         "Support Team", "Night Desk"},
        // The planner items go after the links; a member is written after the entry.
        {"a statement refused midway",
         [&] {
             testing_support::runOnFile(
                 demoDatabase(),
                 "CREATE TRIGGER refused BEFORE DELETE ON reminder BEGIN SELECT RAISE(ABORT, "
                 "'refused'); END; CREATE TRIGGER alsoRefused BEFORE INSERT ON extaccess BEGIN "
                 "SELECT RAISE(ABORT, 'refused'); END");
         },
         [&] {
             testing_support::runOnFile(demoDatabase(),
                                        "DROP TRIGGER refused; DROP TRIGGER alsoRefused");
         },
         "Duplicate value in index, primary key, or relationship. Changes were unsuccessful.",
         frmAdmin::Equipment, 9, "Support Crew", "Day Desk"},
    };
    for (const auto& o : obstacles) {
        // What the administrator does in the editor: the first OK fails, `between` runs, then OK
        // again.
        const auto inEditor = [&](const QString& name, const Step& between) {
            inWindow<frmEmployee>([&, name, between](auto* editor) {
                editor->txtName->setText(name);
                for (int i = 0; i < editor->lstExtended->count(); ++i) {
                    editor->lstExtended->item(i)->setCheckState(Qt::Checked);
                }
                o.put();
                editor->cmdOK_Click();
                EXPECT_TRUE(editor->isVisible());
                between();
                editor->cmdOK_Click();
            });
        };
        const struct {
            const char* command;
            int tab;
            std::function<void(ReportList*, const Step& between)> tryTwice;
            QString rowAfter;  // one row of users after the second try
        } commands[] = {
            {"delete", o.tab,
             [&](ReportList* list, const Step& between) {
                 o.put();
                 remove(list, o.entry, Yes);
                 between();
                 remove(list, o.entry, Yes);
             },
             QString("id IN (6, %1)").arg(o.entry)},
            {"edit a workgroup", frmAdmin::Workgroups,
             [&](ReportList* list, const Step& between) {
                 select(list, 6);
                 inEditor(o.renamed, between);
                 console.cmdEdit->click();
             },
             QString("id = 6 AND Name = '%1' AND num = 5").arg(o.renamed)},
            {"add a workgroup", frmAdmin::Workgroups,
             [&](ReportList*, const Step& between) {
                 inEditor(o.added, between);
                 console.cmdNew->click();
             },
             QString("Name = '%1' AND num = 5").arg(o.added)},
        };
        for (const auto& c : commands) {
            SCOPED_TRACE(std::string(c.command) + " against " + o.obstacle);
            ReportList* list = showTab(c.tab);
            const QStringList before = state();
            const QStringList rows = listed(list);
            ui.messages.clear();
            c.tryTwice(list, [&] {
                ASSERT_FALSE(ui.messages.empty());
                EXPECT_EQ(ui.messages.back().text, o.message);
                EXPECT_EQ(state(), before);
                EXPECT_EQ(listed(list), rows);
                EXPECT_FALSE(ui.busy);
                o.remove();
            });
            EXPECT_NE(state(), before);
            EXPECT_EQ(count("users", c.rowAfter), 1);
            const std::vector<QString> texts = ui.texts();
            EXPECT_EQ(std::count(texts.begin(), texts.end(), o.message), 1);
            EXPECT_FALSE(ui.ended);
        }
    }
}

TEST_P(ConsoleCommandsTest, DeletingTheLastRowDisablesEditAndDelete) {
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

TEST_P(ConsoleCommandsTest, LoggingOffAnEmployeeFromEveryTabThatReachesIt) {
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
        EXPECT_TRUE(testing_support::saidOnly(ui,
                                              "This will invalidate any current working sessions "
                                              "of the Lattimer Series for Derek Evans.  \r\nAre "
                                              "you SURE you want to continue?",
                                              platform::Msg::YesNo));
    }
    showTab(frmAdmin::Equipment);  // acts on the employee list out of sight
    ui.answers.push_back(Yes);
    console.mnLogOff->trigger();
    EXPECT_EQ(count("rts", "uid = 4"), 0);
    EXPECT_EQ(console.lstEmployees->cell(3, 4), "No");
    showTab(frmAdmin::AccessLevels);
    EXPECT_FALSE(console.mnActions->menuAction()->isVisible());
}

TEST_P(ConsoleCommandsTest, ClearingAllSessionsFromAnyTab) {
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 2, 1)");
    for (int tab : {frmAdmin::AccessLevels, frmAdmin::UserFields, frmAdmin::Workgroups}) {
        showTab(tab);
        ui.messages.clear();
        ui.answers.push_back(No);
        console.mnClearRTS->trigger();
        EXPECT_EQ(count("rts"), 2);
        EXPECT_TRUE(testing_support::saidOnly(
            ui,
            "This will invalidate any current working sessions of the Lattimer Series.  Anyone "
            "currently using the system will be disconnected.\r\nAre you SURE you want to "
            "continue?",
            platform::Msg::YesNo));
    }
    EXPECT_EQ(console.lstEmployees->cell(3, 4), "Yes");
    const bool editEnabled = console.cmdEdit->isEnabled();
    ui.answers.push_back(Yes);
    console.mnClearRTS->trigger();
    EXPECT_EQ(count("rts"), 0);
    for (int row = 0; row < console.lstEmployees->rowCount(); ++row) {
        EXPECT_EQ(console.lstEmployees->cell(row, 4), "No");
    }
    EXPECT_EQ(console.tabAdmin->currentIndex(), frmAdmin::Workgroups);
    EXPECT_EQ(console.cmdEdit->isEnabled(), editEnabled);
}

}  // namespace
