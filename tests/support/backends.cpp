#include "backends.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <atomic>

namespace testing_support {

std::string backendName(const testing::TestParamInfo<Backend>& info) {
    return info.param == Backend::Sqlite ? "Sqlite" : "Postgresql";
}

// pg_virtualenv, and any server a developer points the tests at, set PGHOST.
bool postgresqlServerIsThere() {
    return !qEnvironmentVariableIsEmpty("PGHOST");
}

bool lacksServer(Backend backend) {
    return backend == Backend::Postgresql && !postgresqlServerIsThere();
}

std::vector<Backend> conformanceBackends() {
    return {Backend::Sqlite, Backend::Postgresql};
}

QString newDatabaseLocation(Backend backend, const QTemporaryDir& dir, const QString& stem) {
    if (backend == Backend::Sqlite) {
        return dir.filePath(stem + QStringLiteral(".mdb"));
    }
    // Test processes run side by side against one server, and a server a developer keeps running
    // keeps the databases of earlier runs, whose process ids come round again; the random part
    // keeps this process's names apart from both.
    static const QString tag = QString::number(QCoreApplication::applicationPid(), 36) + u'_' +
                               QString::number(QRandomGenerator::system()->generate(), 36);
    static std::atomic<int> counter{0};
    // The stem starts an unquoted identifier. It is cut short because the server silently
    // truncates names past 63 bytes, which would cut off the part that keeps them apart.
    const QString part = stem.left(24).toLower().replace(QRegularExpression("[^a-z0-9_]"), "_");
    // libpq takes the host, port, user and password from the PG* environment.
    return "postgresql:///orvane_" + part + u'_' + tag + u'_' + QString::number(++counter);
}

}  // namespace testing_support
