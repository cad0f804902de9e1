#pragma once

#include <QString>
#include <QTemporaryDir>
#include <QtTest>

// Every test executable runs in a home of its own: HOME and the XDG folders point into a temporary
// folder made before the application object, so preferences, data and caches never touch the user's
// and two tests can run side by side.
namespace TestSupport {

class IsolatedEnvironment {
public:
    IsolatedEnvironment();
    ~IsolatedEnvironment();
    static QString home();

private:
    QTemporaryDir m_dir;
};

// Where tests leave what a person may want to look at (screenshots, saved messages).
QString artifactsDir();

} // namespace TestSupport

#define BREZZARIO_TEST_MAIN(TestObject)                                                                                \
    QTEST_MAIN_WRAPPER(TestObject, TestSupport::IsolatedEnvironment brezzarioIsolation; QTEST_MAIN_SETUP())
#define BREZZARIO_TEST_GUILESS_MAIN(TestObject)                                                                        \
    QTEST_MAIN_WRAPPER(TestObject, TestSupport::IsolatedEnvironment brezzarioIsolation;                                \
                       QTEST_QAPP_SETUP(QCoreApplication))
