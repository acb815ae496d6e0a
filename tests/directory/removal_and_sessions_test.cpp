// Deleting workgroups, equipment and branches with their asymmetries, commands that fail undone
// whole, and ending sessions from the console.

#include "console_fixture.h"
#include "directory/frm_employee.h"

#include <QLineEdit>
#include <QListWidget>
#include <QMenu>

#include <algorithm>
#include <optional>

namespace {

using platform::Msg::No;
using platform::Msg::Yes;
using testing_support::saidOnly;

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
    // The rows that a command on an entry may change.
    QStringList state() {
        return testing_support::rowsOf(*db, "SELECT * FROM users ORDER BY id") +
               testing_support::rowsOf(*db, "SELECT * FROM extaccess ORDER BY userid, extid") +
               testing_support::rowsOf(*db, "SELECT * FROM reminder ORDER BY id");
    }
};

class ConsoleCommandsTest : public testing_support::OnEveryBackend<ConsoleCommandsTestFixture> {};

ORVANE_ON_EVERY_BACKEND(ConsoleCommandsTest);

// Failures made with another program's lock on the database file.
class FileConsoleCommandsTest : public ConsoleCommandsTestFixture {};

TEST_P(ConsoleCommandsTest, EachKindAsksAndClearsWhatItsOwnRulesSay) {
    const struct {
        int tab, entry;
        const char* deleted;        // as the question names it
        const char* extaccessGone;  // rows the entry leaves behind in extaccess after a Yes...
        const char* extaccessKept;  // ...and those that stay
        bool remindersGo;
    } cases[] = {
        {frmAdmin::Workgroups, 7, "workgroup and any planner items associated with it",
         "userid = 7", "extid = 7", true},
        {frmAdmin::Equipment, 9, "equipment and any planner items associated with it", "extid = 9",
         "userid = 9", true},
        {frmAdmin::Branches, 10, "branch", "userid = 10", "extid = 10", false},
    };
    for (const auto& c : cases) {
        ui.messages.clear();
        ReportList* list = showTab(c.tab);
        const int rows = list->rowCount();
        const QStringList before = state();
        const QString entry = QString::number(c.entry);
        remove(list, c.entry, No);
        EXPECT_TRUE(saidOnly(ui, QString("Are you sure you want to delete this %1?").arg(c.deleted),
                             platform::Msg::YesNo | platform::Msg::DefaultButton2));
        EXPECT_EQ(list->rowCount(), rows);
        EXPECT_EQ(state(), before);
        // A branch's watch rows go before the question is even asked.
        EXPECT_EQ(count("watch_branch", "branchid = " + entry), 0);

        remove(list, c.entry, Yes);
        EXPECT_EQ(list->rowCount(), rows - 1);
        EXPECT_EQ(count("users", "id = " + entry), 0);
        EXPECT_EQ(count("extaccess", c.extaccessGone), 0);
        EXPECT_EQ(count("extaccess", c.extaccessKept), c.tab == frmAdmin::Equipment ? 1 : 0);
        EXPECT_EQ(count("reminder", "userid = " + entry), c.remindersGo ? 0 : 1);
        EXPECT_EQ(list->selectedRow(), 0);  // the list offers the remaining row
        EXPECT_TRUE(entryCommandsEnabled());
    }
    EXPECT_EQ(count("watch_branch", "branchid = 11"), 1);

    ReportList* list = showTab(frmAdmin::Equipment);
    console.mnDelete->trigger();  // the menu does the same as the button; Enter answers No...
    EXPECT_EQ(list->rowCount(), 1);
    remove(list, 8, Yes);  // ...and the last row gone takes Edit and Delete with it
    EXPECT_FALSE(entryCommandsEnabled());
    EXPECT_TRUE(console.cmdNew->isEnabled());
}

// A command that fails, midway or at its commit under another program's lock, is undone whole and
// says why; tried again once the obstacle is gone, the same command goes through.
TEST_F(FileConsoleCommandsTest, AFailedCommandChangesNothingAndCanBeTriedAgain) {
    std::optional<testing_support::OtherProgram> reader;
    using Step = std::function<void()>;
    const struct {
        const char* obstacle;
        Step put;
        Step remove;
        const char* message;
        int tab, entry;  // where an entry is deleted: each obstacle has one of its own
    } obstacles[] = {
        {"a lock by another program",
         [&] { reader.emplace(demoDatabase(), testing_support::kReading); },
         [&] { reader->letGo(); }, "Couldn't update; currently locked.", frmAdmin::Workgroups, 7},
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
         frmAdmin::Equipment, 9},
    };
    for (const auto& o : obstacles) {
        // Each obstacle's entry is named after it, so that no earlier pass's row can stand in.
        const QString renamed = o.obstacle, added = QString("New ") + o.obstacle;
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
                 inEditor(renamed, between);
                 console.cmdEdit->click();
             },
             QString("id = 6 AND Name = '%1' AND num = 5").arg(renamed)},
            {"add a workgroup", frmAdmin::Workgroups,
             [&](ReportList*, const Step& between) {
                 inEditor(added, between);
                 console.cmdNew->click();
             },
             QString("Name = '%1' AND num = 5").arg(added)},
        };
        for (const auto& c : commands) {
            SCOPED_TRACE(std::string(c.command) + " against " + o.obstacle);
            ReportList* list = showTab(c.tab);
            const QStringList before = state();
            const QStringList shown = rows(list);
            ui.messages.clear();
            c.tryTwice(list, [&] {
                ASSERT_FALSE(ui.messages.empty());
                EXPECT_EQ(ui.messages.back().text, o.message);
                EXPECT_EQ(state(), before);
                EXPECT_EQ(rows(list), shown);
                EXPECT_FALSE(ui.busy);
                o.remove();
            });
            EXPECT_EQ(count("users", c.rowAfter), 1);
            const std::vector<QString> texts = ui.texts();
            EXPECT_EQ(std::count(texts.begin(), texts.end(), o.message), 1);
            EXPECT_FALSE(ui.ended);
        }
    }
}

// Logging an employee off, from every tab that shows the entries' commands and out of sight of
// the employee list, and clearing every session, from any tab; each asks first.
TEST_P(ConsoleCommandsTest, EndingSessionsAsksFirstFromAnyTab) {
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 4, 1)");  // Derek twice
    run("INSERT INTO rts (lt, uid, fslevel) VALUES (NOW(), 2, 1)");
    console.lstEmployees->selectRow(3);
    const QString logOff =
        "This will invalidate any current working sessions of the Lattimer Series for Derek "
        "Evans.  \r\nAre you SURE you want to continue?";
    const QString clearAll =
        "This will invalidate any current working sessions of the Lattimer Series.  Anyone "
        "currently using the system will be disconnected.\r\nAre you SURE you want to continue?";
    const struct {
        int tab;
        QAction* action;
        const QString& question;
        int answer;
        int sessionsLeft;
        QString derekShown;
    } cases[] = {
        {frmAdmin::Workgroups, console.mnLogOff, logOff, No, 3, "Yes"},
        {frmAdmin::Equipment, console.mnLogOff, logOff, Yes, 1, "No"},
        {frmAdmin::AccessLevels, console.mnClearRTS, clearAll, No, 1, "No"},
        {frmAdmin::Workgroups, console.mnClearRTS, clearAll, Yes, 0, "No"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tab);
        showTab(c.tab);
        const bool editEnabled = console.cmdEdit->isEnabled();
        ui.messages.clear();
        ui.answers.push_back(c.answer);
        c.action->trigger();
        EXPECT_TRUE(saidOnly(ui, c.question, platform::Msg::YesNo));
        EXPECT_EQ(count("rts"), c.sessionsLeft);
        EXPECT_EQ(console.lstEmployees->cell(3, 4), c.derekShown);
        EXPECT_EQ(console.tabAdmin->currentIndex(), c.tab);
        EXPECT_EQ(console.cmdEdit->isEnabled(), editEnabled);
    }
    showTab(frmAdmin::AccessLevels);
    EXPECT_FALSE(console.mnActions->menuAction()->isVisible());
}

}  // namespace
