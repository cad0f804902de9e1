#pragma once

#include <QLockFile>
#include <QString>

#include <memory>

// Only one copy of the program may work on the store: two processes would lose saves and send twice.
class SingleInstance {
public:
    explicit SingleInstance(const QString& dataFolder);
    bool acquired() const { return m_acquired; }

private:
    std::unique_ptr<QLockFile> m_lock;
    bool m_acquired = false;
};
