// orvane-admin: the administration console. Until its windows land, it logs on as the logon
// window's command-line route does (-l<logon> -p<password>, the database as the settings
// remember it) and prints the session it got.

#include "access/right_catalogue.h"
#include "data/session.h"
#include "logon/command_line.h"
#include "logon/logon_state.h"
#include "logon/validate_logon.h"
#include "platform/ui.h"
#include "settings/settings_file.h"

#include <QApplication>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace {

// The seam on a terminal: every message is printed, and a question takes its default answer.
class TerminalUi : public platform::Ui {
public:
    int messageBox(const QString& text, int style, const QString& title) override {
        std::fprintf(stderr, "[%s] %s\n", qPrintable(title), qPrintable(text));
        const std::vector<int> answers = platform::Msg::answersOf(style);
        return answers[std::min<size_t>(platform::Msg::defaultButtonOf(style), answers.size()) - 1];
    }
    void showModal(QWidget*, QWidget*) override {}
    void setBusy(bool) override {}
    void doEvents() override {}
    std::optional<QString> openFileDialog(const platform::FileDialogRequest&) override {
        return {};
    }
    int launch(const QString&) override { return 31; }
    [[noreturn]] void endRun() override { std::exit(1); }
};

// The logon window's boxes as the command line fills them.
class CommandLineLogon : public LogonWindow {
public:
    QString logonText() const override { return GetCommandSwitch("-l"); }
    QString passwordText() const override { return GetCommandSwitch("-p"); }
    QString databaseText() const override { return database_; }
    int savePasswordValue() const override { return 0; }
    void focusLogon() override {}
    void focusPassword() override {}
    void focusDatabase() override {}
    void ShowDb() override {}
    void cmdCancel_Click() override {}

private:
    QString database_ = ReadIni("Database");
};

void printSession() {
    std::printf("Logged on as %s (%s), access level %d: %s\n", qPrintable(gUsers(0).Name),
                qPrintable(gLogon), gAccessLevel, qPrintable(gLevelNames(gAccessLevel - 1)));
    std::printf("Reachable entries: %d\n", gUserCount - 1);
    static const char* const kinds[] = {"employee", "workgroup", "equipment", "branch"};
    for (int i = 1; i < gUserCount; ++i) {
        const UserEntry& entry = gUsers(i);
        std::printf("  %-24s %-10s id %d%s\n", qPrintable(entry.Name), kinds[entry.Type & 3],
                    entry.id, entry.bMember ? ", member" : "");
    }
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    SetCommandLine(app.arguments().mid(1).join(' '));
    TerminalUi ui;
    platform::setUi(&ui);
    gSystemDir = GetSystemDir();
    CommandLineLogon logon;
    try {
        if (!ValidateLogon(logon, QString(), false, true)) {
            return 1;
        }
    } catch (const rt::Error& error) {
        platform::failRun(error);
    }
    printSession();
    return 0;
}
