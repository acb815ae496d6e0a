#include "backends.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <atomic>

namespace testing_support {

std::string backendName(const testing::TestParamInfo<Backend>& info) {
    switch (info.param) {
        case Backend::Sqlite:
            return "Sqlite";
        case Backend::Postgresql:
            return "Postgresql";
    }
    return "Unknown";
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

namespace {

// The stem as the start of an unquoted identifier: lowercase ASCII, digits and underscores.
// It is cut short because the server silently truncates names past 63 bytes, which would cut off
// the part that keeps them apart.
QString identifierPart(const QString& stem) {
    QString part;
    for (QChar c : stem.left(24).toLower()) {
        const bool plain = (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_';
        part += plain ? c : u'_';
    }
    return part;
}

// Test processes run side by side against one server, and a server a developer keeps running
// keeps the databases of earlier runs, whose process ids come round again; the random part keeps
// this process's names apart from both.
QString processTag() {
    static const QString tag = QString::number(QCoreApplication::applicationPid(), 36) + u'_' +
                               QString::number(QRandomGenerator::system()->generate(), 36);
    return tag;
}

}  // namespace

QString newDatabaseLocation(Backend backend, const QTemporaryDir& dir, const QString& stem) {
    if (backend == Backend::Sqlite) {
        return dir.filePath(stem + QStringLiteral(".mdb"));
    }
    static std::atomic<int> counter{0};
    // libpq takes the host, port, user and password from the PG* environment.
    return QStringLiteral("postgresql:///orvane_") + identifierPart(stem) + u'_' + processTag() +
           u'_' + QString::number(++counter);
}

}  // namespace testing_support
