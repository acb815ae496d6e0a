// lattimer-db: what the suite's installer does, from the command line.

#include "copy.h"
#include "import.h"
#include "installation.h"
#include "mdb_source.h"

#include <QCoreApplication>
#include <QDir>
#include <QHash>
#include <QStringList>

#include <cstdio>

namespace {

const char* const kUsage =
    "usage:\n"
    "  lattimer-db create DB\n"
    "      a new database of version 6.5 at DB, as the installer ships it; DB is a file or a\n"
    "      database on a PostgreSQL server, postgresql://[user@]host[:port]/name\n"
    "  lattimer-db install DIR --logon L [--name N] [--password P] [--company C]\n"
    "                      [--phone P] [--address1 A] [--address2 A] [--address3 A]\n"
    "                      [--database DB]\n"
    "      a program folder ready for its first logon: the database (in DIR unless --database\n"
    "      names one), tarnell.new, temp.tmp\n"
    "  lattimer-db demo DIR [--console-folder F] [--database DB]\n"
    "      a demo installation with a sample directory, remembered by the console in F\n"
    "      (by default the folder of this program); the first run's temp.tmp and tarnell.new\n"
    "      go to F, so that the first logon sets up the demo's administrator and company\n"
    "  lattimer-db copy SOURCE TARGET\n"
    "      the whole database SOURCE copied into TARGET, a new or empty database, each a file\n"
    "      or a postgresql:// URI; every table's row count is checked on both sides\n"
    "  lattimer-db import LEGACY.mdb TARGET\n"
    "      an office's existing Jet 3 or Jet 4 database file brought into TARGET, a new or empty\n"
    "      database, a file or a postgresql:// URI: every table and every row\n";

struct UsageError {
    QString message;
};

struct Command {
    QString name;
    QString target;
    QHash<QString, QString> options;
};

Command parse(const QStringList& arguments, const QStringList& allowedOptions) {
    Command command;
    if (arguments.size() < 2) {
        throw UsageError{"a command and its target are needed."};
    }
    command.name = arguments[0];
    command.target = arguments[1];
    for (int i = 2; i < arguments.size(); ++i) {
        const QString option = arguments[i];
        if (!option.startsWith("--")) {
            throw UsageError{"unexpected argument '" + option + "'."};
        }
        const int equals = int(option.indexOf('='));
        const QString name = equals > 0 ? option.left(equals) : option;
        if (!allowedOptions.contains(name.mid(2))) {
            throw UsageError{"unknown option " + name + " for '" + command.name + "'."};
        }
        QString value;
        if (equals > 0) {
            value = option.mid(equals + 1);
        } else if (i + 1 < arguments.size()) {
            value = arguments[++i];
        } else {
            throw UsageError{"the option " + name + " needs a value."};
        }
        command.options.insert(name.mid(2), value);
    }
    return command;
}

int run(const QStringList& arguments) {
    const QString name = arguments.value(0);
    if (name == "--help") {
        std::fputs(kUsage, stdout);
    } else if (name == "--version") {
        std::printf("lattimer-db (Orvane Administration) %s\n", ORVANE_VERSION);
    } else if (name == "create") {
        const Command command = parse(arguments, {});
        installer::createDatabase(command.target);
        std::printf("Created %s\n", qPrintable(QDir::toNativeSeparators(command.target)));
    } else if (name == "install") {
        const Command command = parse(arguments, {"name", "logon", "password", "company", "phone",
                                                  "address1", "address2", "address3", "database"});
        const auto& o = command.options;
        installer::installProgramFolder(
            command.target,
            {o.value("name"), o.value("logon"), o.value("password"), o.value("company"),
             o.value("phone"), o.value("address1"), o.value("address2"), o.value("address3")},
            o.value("database"));
        std::printf("Installed in %s\n", qPrintable(QDir::toNativeSeparators(command.target)));
    } else if (name == "demo") {
        const Command command = parse(arguments, {"console-folder", "database"});
        const QString console =
            command.options.value("console-folder", QCoreApplication::applicationDirPath());
        installer::createDemo(command.target, console, command.options.value("database"));
        std::printf("Demo installation in %s; logon '%s', password '%s'\n",
                    qPrintable(QDir::toNativeSeparators(command.target)),
                    qPrintable(installer::kDemoLogon), qPrintable(installer::kDemoPassword));
    } else if (name == "copy") {
        if (arguments.size() != 3) {
            throw UsageError{QStringLiteral("copy needs a source and a target.")};
        }
        installer::copyDatabase(arguments[1], arguments[2], [](const QString& step) {
            std::fprintf(stderr, "%s\n", qPrintable(step));
        });
        std::printf("Copied %s to %s\n", qPrintable(arguments[1]), qPrintable(arguments[2]));
    } else if (name == "import") {
        if (arguments.size() != 3) {
            throw UsageError{QStringLiteral("import needs a legacy database file and a target.")};
        }
        installer::MdbSource legacy(arguments[1]);
        const auto imported = installer::importDatabase(
            legacy, arguments[2],
            [](const QString& step) { std::fprintf(stderr, "%s\n", qPrintable(step)); });
        std::printf("Imported %s into %s:\n", qPrintable(arguments[1]), qPrintable(arguments[2]));
        for (const installer::ImportedTable& table : imported) {
            std::printf("  %s: %lld rows\n", qPrintable(table.name), table.rows);
        }
    } else {
        throw UsageError{name.isEmpty() ? QStringLiteral("a command is needed.")
                                        : "unknown command '" + name + "'."};
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    try {
        return run(app.arguments().mid(1));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "lattimer-db: %s\n%s", qPrintable(error.message), kUsage);
        return 2;
    } catch (const installer::InstallError& error) {
        std::fprintf(stderr, "lattimer-db: %s\n", error.what());
        return 1;
    }
}
