#include "TestEnvironment.h"
#include "ui/Risorse.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// A program finds its editor page and pictures from where its executable is, wherever a package put it.
class TestRisorse : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cercaDa_data() {
        QTest::addColumn<QStringList>("pagine"); // folders, under the temporary one, holding an editor page
        QTest::addColumn<QStringList>("vuote");  // folders holding a share/brezzario with no editor page
        QTest::addColumn<QString>("eseguibile"); // the executable's folder
        QTest::addColumn<QString>("attesa");     // the root expected, or empty
        QTest::newRow("installed under /usr") << QStringList{"usr"} << QStringList{} << "usr/bin"
                                              << "usr";
        QTest::newRow("installed under /opt/brezzario")
            << QStringList{"opt/brezzario"} << QStringList{} << "opt/brezzario/bin"
            << "opt/brezzario";
        QTest::newRow("the program of a build tree") << QStringList{"build"} << QStringList{} << "build/src"
                                                     << "build";
        QTest::newRow("a test three folders down") << QStringList{"build"} << QStringList{} << "build/tests/screens/ui"
                                                   << "build";
        QTest::newRow("the nearest wins") << QStringList{"a", "a/b"} << QStringList{} << "a/b/bin"
                                          << "a/b";
        QTest::newRow("a folder without the page is passed over") << QStringList{"a"} << QStringList{"a/b"} << "a/b/bin"
                                                                  << "a";
        QTest::newRow("nothing installed") << QStringList{} << QStringList{"usr"} << "usr/bin"
                                           << "";
        QTest::newRow("too far up") << QStringList{"x"} << QStringList{} << "x/1/2/3/4/5"
                                    << "";
    }
    void cercaDa() {
        QFETCH(QStringList, pagine);
        QFETCH(QStringList, vuote);
        QFETCH(QString, eseguibile);
        QFETCH(QString, attesa);
        QTemporaryDir cartella;
        QDir base(cartella.path());
        for (const QString& prefisso : pagine) {
            QVERIFY(base.mkpath(prefisso + QStringLiteral("/share/brezzario/Editor")));
            QFile pagina(base.filePath(prefisso + QStringLiteral("/share/brezzario/Editor/editor.html")));
            QVERIFY(pagina.open(QIODevice::WriteOnly));
        }
        for (const QString& prefisso : vuote)
            QVERIFY(base.mkpath(prefisso + QStringLiteral("/share/brezzario/Media")));
        QVERIFY(base.mkpath(eseguibile));
        const QString trovata = Risorse::cercaDa(base.filePath(eseguibile + QStringLiteral("/..")));
        QCOMPARE(trovata, attesa.isEmpty() ? QString() : base.filePath(attesa + QStringLiteral("/share/brezzario")));
    }

    // This very test, from the build tree, finds the real page and pictures.
    void radiceDelBuild() {
        QVERIFY(QFile::exists(Risorse::percorso(QStringLiteral("Editor/editor.html"))));
        QVERIFY(QFile::exists(Risorse::percorso(QStringLiteral("Media/icons/circle.svg"))));
        QCOMPARE(Risorse::percorso(QStringLiteral("Media/nessuna.png")), QString());
    }
};

BREZZARIO_TEST_GUILESS_MAIN(TestRisorse)
#include "tst_risorse.moc"
