#include "app/SingleInstance.h"

#include <QDir>

SingleInstance::SingleInstance(const QString& dataFolder) {
    QDir().mkpath(dataFolder);
    m_lock = std::make_unique<QLockFile>(dataFolder + QStringLiteral("/brezzario.lock"));
    // A lock left by a process that died is stale and is taken over.
    m_lock->setStaleLockTime(0);
    m_acquired = m_lock->tryLock(0);
}
