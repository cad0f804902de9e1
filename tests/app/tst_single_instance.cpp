#include "app/SingleInstance.h"
#include "TestEnvironment.h"

#include <QProcess>

class TestSingleInstance : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void secondCopyIsRefused();
    void lockOfADeadProcessIsTakenOver();
};

void TestSingleInstance::secondCopyIsRefused() {
    QTemporaryDir dir;
    SingleInstance first(dir.path());
    QVERIFY(first.acquired());
    SingleInstance second(dir.path());
    QVERIFY(!second.acquired());
}

void TestSingleInstance::lockOfADeadProcessIsTakenOver() {
    // The program itself takes the lock in its data folder and is then killed, as a crash would leave it.
    QTemporaryDir dataHome;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome.path());
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(BREZZARIO_EXECUTABLE));
    QVERIFY(program.waitForStarted());
    const QString dataFolder = dataHome.filePath(QStringLiteral("velarmo/Brezzario"));
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(dataFolder + QStringLiteral("/brezzario.sqlite")), 20'000);
    {
        SingleInstance whileRunning(dataFolder);
        QVERIFY(!whileRunning.acquired());
    }
    program.kill();
    QVERIFY(program.waitForFinished());
    SingleInstance afterCrash(dataFolder);
    QVERIFY(afterCrash.acquired());
}

BREZZARIO_TEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_single_instance.moc"
