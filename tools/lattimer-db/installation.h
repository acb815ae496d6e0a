#pragma once

#include <QString>

#include <stdexcept>

// What the suite's installer does: ship a database of version 6.5, lay out a program folder
// for the first run, or set up a demo installation.
namespace installer {

inline const QString kDatabaseFile = QStringLiteral("lattimer.mdb");
inline const QString kReportsDatabaseFile = QStringLiteral("tarnell.new");
inline const QString kFirstRunFile = QStringLiteral("temp.tmp");
constexpr double kSampleReferenceDay = 36766;  // 28 Aug 2000, the day the sample data is dated to

// A failure of the installer, in words for its user.
class InstallError : public std::runtime_error {
public:
    explicit InstallError(const QString& message) : std::runtime_error(message.toStdString()) {}
};

// The first user's and the company's details, as temp.tmp hands them to the first logon.
// An empty value is left out of the file, so that the first run uses its default.
struct FirstRunDetails {
    QString name;
    QString logon;
    QString password;
    QString company;
    QString companyPhone;
    QString companyAddress1;
    QString companyAddress2;
    QString companyAddress3;
};

// A new database as the installer ships it: every table with its indexes, the sysinfo row,
// the placeholder first user, the field definitions, sample reminders and reports.
void createDatabase(const QString& path);

// A program folder holding tarnell.new and temp.tmp, and the database unless `database` names
// another place for it: a file, or a database on a server by its postgresql:// URI.
void installProgramFolder(const QString& folder, const FirstRunDetails& details,
                          const QString& database = QString());

// A demo database with a sample directory, remembered in the settings of the console in
// `consoleFolder` so that its logon window opens on it. Its first user is still the placeholder:
// temp.tmp and tarnell.new in the console's folder make the first logon set up the demo's
// administrator and company, as a new installation's first logon does.
// The demo database goes to `database` when given, as for an installation.
void createDemo(const QString& folder, const QString& consoleFolder,
                const QString& database = QString());

// The demo's administrator.
inline const QString kDemoLogon = QStringLiteral("admin");
inline const QString kDemoPassword = QStringLiteral("orvane");

}  // namespace installer
