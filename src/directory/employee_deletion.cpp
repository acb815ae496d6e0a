#include "directory/employee_deletion.h"

#include "data/dbase.h"

// The employee's own data, removed whatever the choice: settings, planner, billing codes,
// automation, budgets, business development, reports and models.
QStringList PersonalStatements(const QString& id) {
    return {
        "DELETE FROM udfs WHERE userid = " + id,
        "DELETE FROM reminder WHERE userid = " + id,
        "DELETE FROM billcode WHERE userid = " + id,
        "DELETE FROM options WHERE userid = " + id,
        "DELETE FROM autostep WHERE autoid IN(SELECT id FROM auto WHERE userid = " + id + ")",
        "DELETE FROM auto WHERE userid = " + id,
        "DELETE FROM budgets WHERE parentid = " + id + " AND type = " + "1",
        "DELETE FROM budgets WHERE type = " + QStringLiteral("0") +
            " AND parentid IN (SELECT id FROM files WHERE ownerid IN (SELECT id FROM clients WHERE "
            "userid = " +
            id + "))",
        "DELETE FROM busdev WHERE userid = " + id,
        "DELETE FROM rptcntls WHERE rptid IN(SELECT id FROM reports WHERE userid = " + id + ")",
        "DELETE FROM reports WHERE userid = " + id,
        "DELETE FROM modeling WHERE userid = " + id,
    };
}

// Everything else the employee owns. clients and files are read as long as anything is found
// through them, so they go late.
QStringList AllDataStatements(const QString& id) {
    const QString ownFiles =
        "(SELECT id FROM files WHERE ownerid IN (SELECT id FROM clients WHERE userid = " + id +
        "))";
    const QString ownClients = "(SELECT id FROM clients WHERE userid = " + id + ")";
    const QString ownLists = "(SELECT listid FROM lists WHERE userid = " + id + ")";
    return {
        "DELETE FROM acctudf WHERE id IN " + ownFiles,
        "DELETE FROM projudf WHERE id IN " + ownFiles,
        "DELETE FROM clntudf WHERE id IN " + ownClients,
        "DELETE FROM clntudf2 WHERE id IN " + ownClients,
        "DELETE FROM reflib WHERE userid = " + id,
        "DELETE FROM RelDocs WHERE accid IN " + ownFiles,
        "DELETE FROM RelPple WHERE accid IN " + ownFiles,
        "DELETE FROM balance WHERE accid IN " + ownFiles,
        "DELETE FROM trans WHERE acc_id IN " + ownFiles,
        "DELETE FROM billsetup WHERE accid IN " + ownFiles,
        "DELETE FROM disburse WHERE invoiceid IN(SELECT id FROM invoice WHERE accid IN " +
            ownFiles + ")",
        "DELETE FROM charges WHERE accid IN " + ownFiles,
        "DELETE FROM invoice WHERE accid IN " + ownFiles,
        "DELETE FROM funds WHERE accid IN " + ownFiles,
        "DELETE FROM files WHERE ownerid IN " + ownClients,
        "DELETE FROM listflds WHERE listid IN " + ownLists,
        "DELETE FROM listmmbr WHERE listid IN " + ownLists,
        "DELETE FROM listudf WHERE id IN (SELECT id FROM lists WHERE userid = " + id + ")",
        "DELETE FROM lists WHERE userid = " + id,
        "DELETE FROM history WHERE client_id IN " + ownClients,
        "DELETE FROM clients WHERE userid = " + id,
        "DELETE FROM charges WHERE userid = " + id,
        "DELETE FROM invoice WHERE userid = " + id,
        // These two repeat statements 10 and 11 and find nothing by now; they stay all the same.
        "DELETE FROM rptcntls WHERE rptid IN (SELECT id FROM reports WHERE userid = " + id + ")",
        "DELETE FROM reports WHERE userid = " + id,
    };
}

// The business data handed over. Invoices and charges are found through the clients the
// employee still owns, so they go before the clients.
QStringList HandOverStatements(const QString& id, const QString& receiver) {
    const QString ownFiles =
        "(SELECT id FROM files WHERE ownerid IN (SELECT id FROM clients WHERE userid = " + id +
        "))";
    return {
        "UPDATE invoice SET userid = " + receiver + " WHERE accid IN " + ownFiles,
        "UPDATE charges SET userid = " + receiver + " WHERE accid IN " + ownFiles,
        "UPDATE clients SET userid = " + receiver + " WHERE userid = " + id,
        "UPDATE lists SET userid = " + receiver + " WHERE userid = " + id,
        "UPDATE reflib SET userid = " + receiver + " WHERE userid = " + id,
    };
}

QStringList ClosingStatements(const QString& id) {
    return {
        "DELETE FROM extaccess WHERE userid = " + id,
        "DELETE FROM extaccess WHERE extid = " + id,
        "DELETE FROM users WHERE id = " + id,
    };
}

void DeleteEmployee(qint32 id, std::optional<qint32> receiver) {
    const QString employee = QString::number(id);
    QStringList statements = PersonalStatements(employee);
    statements += receiver ? HandOverStatements(employee, QString::number(*receiver))
                           : AllDataStatements(employee);
    statements += ClosingStatements(employee);
    for (const QString& statement : statements) {
        gDBase.Execute(statement);
    }
}
