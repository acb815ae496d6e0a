// The entry editor: its face per kind of entry, its lists, and the validation in its order with
// each message, title and focus.

#include "access/right_catalogue.h"
#include "data/dbase.h"
#include "data/session.h"
#include "directory/frm_employee.h"
#include "fixtures.h"
#include "platform/convert.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace {

class EditorTestFixture : public testing_support::SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        for (int i = 0; i <= 9; ++i) {
            gLevelNames(i) = "Level " + QString::number(i + 1);
        }
        gUsers(0).id = admin = testing_support::addEntry("Ann Admin", 0, "admin", "pw", 10, 0);
        bob = testing_support::addEntry("Bob", 0, "bob", "pw", 3, 1);
        carl = testing_support::addEntry("Carl", 0, "carl", "pw", 3, 0);
        team = testing_support::addEntry("Team", 1);
        execute(
            QString("INSERT INTO extaccess (userid, extid) VALUES (%1, %2)").arg(team).arg(carl));
    }
    // Opens the editor on the row and runs the user's part in it.
    void edit(qint32 id, qint16 type, const std::function<void(frmEmployee&)>& script) {
        auto rs = open("SELECT * FROM users WHERE id = " + QString::number(id));
        rs->MoveFirst();
        frmEmployee editor;
        ui.modalScripts.push_back([&](QWidget*) { script(editor); });
        bool isNew = false;
        editor.ShowForm(type, *rs, isNew);
    }
    QStringList checklist(const QListWidget* list) const {
        QStringList items;
        for (int i = 0; i < list->count(); ++i) {
            items << (list->item(i)->checkState() == Qt::Checked ? "[x] " : "[ ] ") +
                         list->item(i)->text();
        }
        return items;
    }

public:
    qint32 admin = 0, bob = 0, carl = 0, team = 0;
};

class EditorTest : public testing_support::OnEveryBackend<EditorTestFixture> {};

ORVANE_ON_EVERY_BACKEND(EditorTest);

TEST_P(EditorTest, ValidationStopsAtTheFirstFailureInItsOrder) {
    const QString taken = "Logon name already exists.  Logon must be unique.";
    const QString badCharacter = "Invalid logon character.";
    const struct {
        qint32 EditorTest::*entry;
        qint16 type;
        const char *name, *logon;
        int edition, level;
        QString message;
        const char* title;
        const char* focus;  // where the editor puts it; else it stays on the password
    } cases[] = {
        {&EditorTest::bob, 0, "", "", -1, 2, "You must enter a name.", nullptr, "txtName"},
        {&EditorTest::team, 1, "", "", -1, 0, "You must enter a name.", nullptr, "txtName"},
        {&EditorTest::bob, 0, "Bob", "", -1, 2, "You must enter a logon.", nullptr, "txtLogon"},
        // The edition before the quote.
        {&EditorTest::bob, 0, "Bob", "o'b", -1, 2,
         "You must select a Lattimer Series level for this employee.", "Level", "cmbLevel"},
        {&EditorTest::bob, 0, "Bob", "o'b", 1, 2, badCharacter, "Logon", "txtLogon"},
        {&EditorTest::bob, 0, "Bob", "o\"b", 1, 2, badCharacter, "Logon", "txtLogon"},
        {&EditorTest::admin, 0, "Ann", "admin", 0, 8,
         "You cannot change yourself to a level other than administrator.  Logon as a different "
         "administrator to change your access level.",
         nullptr, nullptr},
        {&EditorTest::bob, 0, "Bob", "CARL", 1, 2, taken, nullptr, nullptr},  // in another case
        {&EditorTest::bob, 0, "Bob", "zq", 1, 2, taken, nullptr, nullptr},    // the other kinds'
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message.toStdString() + " for " + c.logon);
        ui.messages.clear();
        edit(this->*c.entry, c.type, [&](frmEmployee& editor) {
            editor.txtName->setText(c.name);
            editor.txtLogon->setText(c.logon);
            editor.cmbLevel->setCurrentIndex(c.edition);
            editor.cmbAccess->setCurrentIndex(c.level);
            editor.txtPassword->setFocus();
            EXPECT_TRUE(editor.SaveIt());
            EXPECT_EQ(editor.focusWidget()->objectName(), c.focus ? c.focus : "txtPassword");
        });
        EXPECT_TRUE(testing_support::saidOnly(ui, c.message, platform::Msg::OKOnly,
                                              c.title ? c.title : "Orvane Administration"));
    }
    EXPECT_EQ(count("users", "Name = '' OR Logon LIKE '%''%'"), 0);
}

TEST_P(EditorTest, WhatPassesAndWhatIsWritten) {
    edit(bob, 0, [](frmEmployee& editor) {
        editor.txtName->setText("   ");  // blanks pass and are stored trimmed
        editor.txtLogon->setText(" bob2 ");
        editor.txtPassword->setText(" secret ");
        editor.cmbLevel->setCurrentIndex(3);
        editor.cmbAccess->setCurrentIndex(4);
        editor.lstExtended->item(1)->setCheckState(Qt::Checked);
        editor.cmdOK->click();
    });
    EXPECT_EQ(count("users", QString("id = %1 AND Name = '' AND Logon = 'bob2' AND "
                                     "Password = 'secret' AND fslevel = 3 AND accLevel = 5 AND "
                                     "num = 1")
                                 .arg(bob)),
              1);
    EXPECT_EQ(count("extaccess", QString("userid = %1").arg(bob)), 1);
}

TEST_P(EditorTest, TheFaceOfEachKindOfEntry) {
    const struct {
        qint16 type;
        const char* caption;
        int help;
        const char* frame;
    } cases[] = {
        {0, "Edit Employee", 169, "Extend Access to these Employees"},
        {1, "Edit Workgroup", 171, "Workgroup Members"},
        {2, "Edit Equipment", 172, "Users Who Can Access this Equipment"},
        {3, "Edit Branch", 0, "Branch Members"},
    };
    for (const auto& c : cases) {
        edit(c.type == 0 ? bob : team, c.type, [&](frmEmployee& editor) {
            EXPECT_EQ(editor.windowTitle(), c.caption);
            EXPECT_EQ(editor.txtName->maxLength(), 50);  // the columns' sizes
            EXPECT_EQ(editor.txtLogon->maxLength(), 8);
            EXPECT_EQ(editor.HelpContextID, c.help);
            EXPECT_EQ(editor.Frame3->title(), c.frame);
            for (QWidget* w : std::initializer_list<QWidget*>{
                     editor.lbl1, editor.lbl2, editor.lbl3, editor.cmbAccess, editor.txtLogon,
                     editor.txtPassword, editor.cmbLevel, editor.lblLevel}) {
                EXPECT_EQ(w->isVisibleTo(&editor), c.type == 0)
                    << c.caption << " " << w->objectName().toStdString();
            }
            EXPECT_FALSE(editor.chkBranchManager->isVisibleTo(&editor) ||
                         editor.chkSupervision->isVisibleTo(&editor) ||
                         editor.frameBranches->isVisibleTo(&editor));
        });
    }
}

TEST_P(EditorTest, TheListsTickedFirstEachInNameOrder) {
    edit(team, 1, [&](frmEmployee& editor) {
        EXPECT_EQ(checklist(editor.lstExtended),
                  QStringList({"[x] Carl", "[ ] Ann Admin", "[ ] Bob", "[ ] New User"}));
        EXPECT_EQ(editor.lstExtended->item(0)->data(Qt::UserRole).toInt(), carl);
    });
    execute(QString("INSERT INTO extaccess (userid, extid) VALUES (%1, %1)")
                .arg(bob));  // itself, ticked
    edit(bob, 0, [&](frmEmployee& editor) {
        EXPECT_EQ(checklist(editor.lstExtended),
                  QStringList({"[x] Bob", "[ ] Ann Admin", "[ ] Carl", "[ ] New User"}));
        EXPECT_EQ(editor.txtName->text(), "Bob");
        EXPECT_EQ(editor.cmbAccess->currentIndex(), 2);
        EXPECT_EQ(editor.cmbLevel->currentIndex(), 1);
        EXPECT_EQ(editor.cmbLevel->itemText(3), "Counsel Desk");
        const qint32 branch = testing_support::addEntry("Harbor Branch", 3);
        execute(
            QString("INSERT INTO extaccess (userid, extid) VALUES (%1, %2)").arg(bob).arg(branch));
        testing_support::addEntry("Other Branch", 3);
        editor.FillBranches();
        EXPECT_EQ(checklist(editor.lstBranches),
                  QStringList({"[x] Harbor Branch", "[ ] Other Branch"}));
    });
}

TEST_P(EditorTest, StoredValuesOutsideItsLists) {
    // An edition outside the four leaves its list empty, to be chosen before a save.
    execute(QString("UPDATE users SET fslevel = 7 WHERE id = %1").arg(bob));
    edit(bob, 0, [](frmEmployee& editor) {
        EXPECT_EQ(editor.cmbLevel->currentIndex(), -1);
        EXPECT_TRUE(editor.SaveIt());
    });
    EXPECT_EQ(ui.texts(),
              std::vector<QString>{"You must select a Lattimer Series level for this employee."});
    // A level outside the ten fails as setting the list's index would.
    execute(QString("UPDATE users SET accLevel = 11 WHERE id = %1").arg(bob));
    EXPECT_EQ(testing_support::errorOf([&] { edit(bob, 0, [](frmEmployee&) {}); }),
              rt::InvalidPropertyValue);
}

}  // namespace
