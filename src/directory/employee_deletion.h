#pragma once

#include <QStringList>

#include <optional>

// What hangs on an employee, as the statements that remove or hand it over, in the order they
// run: each child table before the parent through which its rows are found. `id` and `receiver`
// are the decimal texts of users.id.

// The employee's own data, removed whatever the choice.
QStringList PersonalStatements(const QString& id);
// Everything else the employee owns, for the choice of removing all data.
QStringList AllDataStatements(const QString& id);
// The business data given to the receiver, for the other choice.
QStringList HandOverStatements(const QString& id, const QString& receiver);
// The links and the employee's own row, last on both choices.
QStringList ClosingStatements(const QString& id);

// Runs the statements of the deletion through the database handle, in their order: all of the
// employee's data, or with the business data given to `receiver`.
void DeleteEmployee(qint32 id, std::optional<qint32> receiver);
