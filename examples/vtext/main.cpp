// vtext-example: one typed field of every kind on a window, for a developer of the suite to try
// the shorthand, the arrows and the select button. Beside each field stands what its `text` reads.

#include "controls/vtext.h"
#include "data/dbase.h"
#include "data/session.h"
#include "installation.h"
#include "platform/convert.h"
#include "platform/engine/engine.h"
#include "platform/qt_ui.h"
#include "platform/regional.h"
#include "settings/options.h"

#include <QApplication>
#include <QDir>
#include <QGridLayout>
#include <QLabel>
#include <QTemporaryDir>

#include <cstdio>

namespace {

struct Example {
    qint16 type;
    const char* label;
    void (*prepare)(vText& field);
};

void noChoices(vText&) {}

void colours(vText& field) {
    for (const char* colour : {"Red", "Green", "Blue", "Yellow"}) {
        field.AddSelection(colour);
    }
}

void departments(vText& field) {
    for (const char* department : {"Sales", "Billing", "Planning", "Support", "Legal"}) {
        field.AddSelection(department);
    }
}

void percentage(vText& field) {
    field.setLowLimit(0);
    field.setHighLimit(100);
    field.setNumberDecimals(1);
}

const Example kExamples[] = {
    {0, "Plain text (0)", noChoices},
    {1, "Number, 0 to 100, one decimal (1)", percentage},
    {2, "Currency (2)", noChoices},
    {3, "Date (3): try 5, 1231, -7, +1, 1.2.2003", noChoices},
    {4, "Time (4): arrows step by the time step", noChoices},
    {5, "One colour (5)", colours},
    {6, "Several departments (6)", departments},
    {7, "Yes or No (7)", noChoices},
    {8, "File (8): empty browses, a name opens", noChoices},
    {54, "Date (54)", noChoices},
};

// What the field's `text` gives, with its kind, so the conversions are visible.
QString readBack(const vText& field) {
    try {
        const rt::Variant value = field.text();
        if (value.isNull()) {
            return QStringLiteral("Null");
        }
        const QString kind = value.isDate()     ? QStringLiteral("date")
                             : value.isString() ? QStringLiteral("text")
                                                : QStringLiteral("number");
        return kind + ": " + rt::CStr(value);
    } catch (const rt::Error& error) {
        return error.description();
    }
}

// The date dialog keeps the user's choices in the options of a database, and the time list reads
// its first and last time from there: a throwaway database as the installer ships it stands in
// for the suite's, open on its first user as a logon leaves it.
bool openOptions(const QTemporaryDir& folder) {
    const QString path = QDir(folder.path()).filePath(installer::kDatabaseFile);
    try {
        installer::createDatabase(path);
        gDBase.theDb = engine::openDatabase(path);
        auto rsUser = gDBase.OpenRecordset(QStringLiteral("SELECT id, Name FROM users"));
        gUserCount = 1;
        gUsers.redim(gUserCount);
        gUsers(0).id = rt::CLng(rsUser->Cols("id"));
        gUsers(0).Name = rt::CStr(rsUser->Cols("Name"));
        rsUser->CloseRS();
        gOptionsRS = gDBase.OpenRecordset(QStringLiteral("SELECT * FROM options"));
        return true;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "vtext-example: no options database: %s\n", failure.what());
        return false;
    }
}

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    platform::adoptRegionalSettings();
    QApplication::setApplicationName(QStringLiteral("Orvane Administration"));
    platform::QtUi ui;
    platform::setUi(&ui);

    QTemporaryDir folder;
    if (!folder.isValid() || !openOptions(folder)) {
        return platform::kExitFailure;
    }

    QWidget window;
    window.setWindowTitle(QStringLiteral("Typed fields"));
    auto* grid = new QGridLayout(&window);
    int row = 0;
    for (const Example& example : kExamples) {
        auto* field = new vText(&window);
        field->setObjectName(QStringLiteral("vText%1").arg(example.type));
        field->setMinimumWidth(220);
        field->settexttype(example.type);
        example.prepare(*field);
        auto* reads = new QLabel(readBack(*field), &window);
        QObject::connect(field, &vText::Changed, reads,
                         [field, reads] { reads->setText(readBack(*field)); });
        grid->addWidget(new QLabel(QString::fromLatin1(example.label), &window), row, 0);
        grid->addWidget(field, row, 1);
        grid->addWidget(reads, row, 2);
        ++row;
    }
    grid->setColumnMinimumWidth(2, 200);
    grid->setRowStretch(row, 1);
    window.show();
    const int status = app.exec();

    gOptionsRS.reset();
    gDBase.CloseDB();
    return status;
}
