#include "TestEnvironment.h"

#include <QCoreApplication>
#include <QDir>

namespace TestSupport {

namespace {
QString& homePath() {
    static QString path;
    return path;
}
} // namespace

IsolatedEnvironment::IsolatedEnvironment() : m_dir(QDir::tempPath() + QStringLiteral("/brezzario-test-XXXXXX")) {
    const QString root = m_dir.path();
    homePath() = root;
    for (const char* folder : {"config", "data", "cache"})
        QDir(root).mkpath(QLatin1String(folder));
    qputenv("HOME", root.toUtf8());
    qputenv("XDG_CONFIG_HOME", (root + QStringLiteral("/config")).toUtf8());
    qputenv("XDG_DATA_HOME", (root + QStringLiteral("/data")).toUtf8());
    qputenv("XDG_CACHE_HOME", (root + QStringLiteral("/cache")).toUtf8());
    QCoreApplication::setOrganizationName(QStringLiteral("velarmo"));
    QCoreApplication::setApplicationName(QStringLiteral("Brezzario"));
}

IsolatedEnvironment::~IsolatedEnvironment() {
    homePath().clear();
}

QString IsolatedEnvironment::home() {
    return homePath();
}

QString artifactsDir() {
    QString dir = qEnvironmentVariable("BREZZARIO_TEST_ARTIFACTS");
    if (dir.isEmpty())
        dir = QDir::currentPath() + QStringLiteral("/test-artifacts");
    QDir().mkpath(dir);
    return dir;
}

} // namespace TestSupport
