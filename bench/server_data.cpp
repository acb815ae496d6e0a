#include "server_data.h"

#include "bench_data.h"
#include "copy.h"

#include "platform/engine/engine.h"

#include <libpq-fe.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

QString uriOf(const QString& name) {
    return QStringLiteral("postgresql:///") + name;
}

QString nameOf(const QString& uri) {
    return uri.mid(uri.lastIndexOf(u'/') + 1);
}

// Databases are made and dropped from the server's own maintenance database.
void runOnServer(const std::string& sql) {
    std::unique_ptr<PGconn, decltype(&PQfinish)> server(PQconnectdb("dbname=postgres"), &PQfinish);
    if (PQstatus(server.get()) != CONNECTION_OK) {
        throw std::runtime_error(PQerrorMessage(server.get()));
    }
    std::unique_ptr<PGresult, decltype(&PQclear)> result(PQexec(server.get(), sql.c_str()),
                                                         &PQclear);
    if (PQresultStatus(result.get()) != PGRES_COMMAND_OK) {
        throw std::runtime_error(sql + ": " + PQerrorMessage(server.get()));
    }
}

bool exists(const QString& uri) {
    try {
        engine::openDatabase(uri)->close();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

bool serverIsThere() {
    return !qEnvironmentVariableIsEmpty("PGHOST");
}

namespace {

QString serverCopy(const QString& file, const QString& name) {
    const QString uri = uriOf(name);
    if (!exists(uri)) {
        std::fprintf(stderr, "copying %s onto the server ...\n", qPrintable(name));
        installer::copyDatabase(file, uri, [](const QString&) {});
    }
    return uri;
}

}  // namespace

QString serverDirectoryDatabase(int employees) {
    return serverCopy(directoryDatabase(employees),
                      QStringLiteral("orvane_bench_directory_%1").arg(employees));
}

QString serverDeletionDatabase(int ownedRows) {
    return serverCopy(deletionDatabase(ownedRows),
                      QStringLiteral("orvane_bench_deletion_%1").arg(ownedRows));
}

QString freshServerCopy(const QString& source, const QString& name) {
    runOnServer("DROP DATABASE IF EXISTS \"" + name.toStdString() + "\"");
    runOnServer("CREATE DATABASE \"" + name.toStdString() + "\" TEMPLATE \"" +
                nameOf(source).toStdString() + "\"");
    return uriOf(name);
}

}  // namespace bench
