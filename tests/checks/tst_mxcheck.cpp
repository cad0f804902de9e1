#include "tst_checks.h"

#include "checks/Dig.h"
#include "checks/DNSCheck.h"
#include "checks/MXCheck.h"
#include "Loopback.h"

#include <QCoreApplication>
#include <QFile>
#include <QThread>
#include <QtTest>
#include <QUdpSocket>

namespace MXCheck {
char* toString(Esito esito) {
    static const char* const names[] = {"recapitabile", "senzaServerDiPosta", "nonRisolto", "dimostrativo"};
    return qstrdup(names[int(esito)]);
}
} // namespace MXCheck

namespace {

QStringList sorted(QStringList list) {
    list.sort();
    return list;
}

QStringList readLines(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

} // namespace

void TestChecks::domini_data() {
    QTest::addColumn<QStringList>("indirizzi");
    QTest::addColumn<QStringList>("attesi");
    QTest::newRow("trimmed and lower-cased")
        << QStringList{" Mario@Ditta.IT \n", "luisa@ditta.it"} << QStringList{"ditta.it"};
    QTest::newRow("several domains") << QStringList{"a@uno.it", "b@due.com", "c@UNO.it"}
                                     << QStringList{"due.com", "uno.it"};
    QTest::newRow("no at sign") << QStringList{"mario.ditta.it"} << QStringList{};
    QTest::newRow("two at signs") << QStringList{"a@b@ditta.it"} << QStringList{};
    QTest::newRow("nothing after the at sign") << QStringList{"mario@", "luisa@ \t"} << QStringList{};
    QTest::newRow("nothing before the at sign") << QStringList{"@ditta.it"} << QStringList{"ditta.it"};
    QTest::newRow("empty list") << QStringList{} << QStringList{};
}

void TestChecks::domini() {
    QFETCH(QStringList, indirizzi);
    QFETCH(QStringList, attesi);
    const QSet<QString> trovati = MXCheck::domini(indirizzi);
    QCOMPARE(sorted(QStringList(trovati.cbegin(), trovati.cend())), attesi);
}

void TestChecks::eDimostrativo_data() {
    QTest::addColumn<QString>("dominio");
    QTest::addColumn<bool>("dimostrativo");
    QTest::newRow(".example") << "negozio.example" << true;
    QTest::newRow("capitals") << "Negozio.EXAMPLE" << true;
    QTest::newRow(".test") << "prova.test" << true;
    QTest::newRow(".invalid") << "x.invalid" << true;
    QTest::newRow(".localhost") << "app.localhost" << true;
    QTest::newRow("bare localhost") << "localhost" << false;
    QTest::newRow("bare example") << "example" << false;
    QTest::newRow("example.com") << "example.com" << false;
    QTest::newRow("suffix without dot") << "miotest" << false;
    QTest::newRow("longer suffix") << "prova.testing" << false;
}

void TestChecks::eDimostrativo() {
    QFETCH(QString, dominio);
    QFETCH(bool, dimostrativo);
    QCOMPARE(MXCheck::eDimostrativo(dominio), dimostrativo);
}

void TestChecks::answerPieces_data() {
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QStringList>("pezzi");
    QTest::newRow("two answers") << QByteArray("10 mx1.ditta.it.\n20 mx2.ditta.it.\n")
                                 << QStringList{"10 mx1.ditta.it.", "20 mx2.ditta.it."};
    QTest::newRow("empty pieces dropped") << QByteArray("\n\n10 mx.\n\n") << QStringList{"10 mx."};
    QTest::newRow("no final line feed") << QByteArray("192.0.2.1") << QStringList{"192.0.2.1"};
    QTest::newRow("dig's own notes are no answer")
        << QByteArray(";; communications error to 127.0.0.4#53: timed out\n;; no servers could be reached\n")
        << QStringList{};
    QTest::newRow("invalid UTF-8 gives nothing") << QByteArray("10 mx.\n\xff\xfe\n") << QStringList{};
    QTest::newRow("UTF-8 kept") << QByteArray("\"caff\xc3\xa8\"\n") << QStringList{QString::fromUtf8("\"caffè\"")};
    QTest::newRow("nothing") << QByteArray() << QStringList{};
}

void TestChecks::answerPieces() {
    QFETCH(QByteArray, output);
    QFETCH(QStringList, pezzi);
    QCOMPARE(Dig::answerPieces(output), pezzi);
}

void TestChecks::mxAgainstNsd_data() {
    QTest::addColumn<QString>("dominio");
    QTest::addColumn<MXCheck::Esito>("esito");
    QTest::newRow("MX records") << "ferramenta-rossi.it" << MXCheck::Esito::recapitabile;
    QTest::newRow("MX records, capitals") << "Ferramenta-Rossi.IT" << MXCheck::Esito::recapitabile;
    QTest::newRow("MX towards another zone") << "studio-bianchi.it" << MXCheck::Esito::recapitabile;
    QTest::newRow("only an A record") << "solo-sito.it" << MXCheck::Esito::senzaServerDiPosta;
    QTest::newRow("a host with an address") << "mx1.ferramenta-rossi.it" << MXCheck::Esito::senzaServerDiPosta;
    QTest::newRow("name that doesn't exist") << "nessuno.ferramenta-rossi.it" << MXCheck::Esito::nonRisolto;
    QTest::newRow("zone nobody serves") << "chiusa-da-anni.it" << MXCheck::Esito::nonRisolto;
    QTest::newRow("demonstration domain") << "negozio.example" << MXCheck::Esito::dimostrativo;
}

void TestChecks::mxAgainstNsd() {
    QFETCH(QString, dominio);
    QFETCH(MXCheck::Esito, esito);
    const QHash<QString, MXCheck::Esito> esiti = QCoro::waitFor(MXCheck::verifica({dominio}));
    QCOMPARE(esiti.size(), 1);
    QCOMPARE(esiti.value(dominio), esito);
    QCOMPARE(QCoro::waitFor(MXCheck::esito(dominio)), esito);
}

void TestChecks::digArguments_data() {
    QTest::addColumn<QString>("resolver");
    QTest::addColumn<QStringList>("argomenti");
    QTest::newRow("resolver for tests") << "127.0.0.2"
                                        << QStringList{"+short", "+time=3", "+tries=1", "MX", "ditta.it", "@127.0.0.2"};
    QTest::newRow("public resolver") << ""
                                     << QStringList{"+short", "+time=3", "+tries=1", "MX", "ditta.it", "@1.1.1.1"};
}

void TestChecks::digArguments() {
    QFETCH(QString, resolver);
    QFETCH(QStringList, argomenti);
    const QString log = m_dir.filePath(QStringLiteral("arguments.log"));
    QFile::remove(log);
    Dig::setExecutableForTests(standInDig(QStringLiteral("dig-arguments"),
                                          QStringLiteral("printf '%s\\n' \"$@\" > '%1'\necho '10 mx.'").arg(log)));
    Dig::setResolverForTests(resolver);
    QCOMPARE(QCoro::waitFor(MXCheck::esito(QStringLiteral("Ditta.IT"))), MXCheck::Esito::recapitabile);
    QCOMPARE(readLines(log), argomenti);
}

void TestChecks::queriesPerDomain_data() {
    QTest::addColumn<QString>("dominio");
    QTest::addColumn<QStringList>("domande");
    QTest::addColumn<MXCheck::Esito>("esito");
    QTest::newRow("MX answer isn't asked for A")
        << "conmx.it" << QStringList{"MX conmx.it"} << MXCheck::Esito::recapitabile;
    QTest::newRow("A only") << "soloa.it" << QStringList{"MX soloa.it", "A soloa.it"}
                            << MXCheck::Esito::senzaServerDiPosta;
    QTest::newRow("no answer") << "nessuno.it" << QStringList{"MX nessuno.it", "A nessuno.it"}
                               << MXCheck::Esito::nonRisolto;
    QTest::newRow("demonstration domain, no process")
        << "Negozio.EXAMPLE" << QStringList{} << MXCheck::Esito::dimostrativo;
    QTest::newRow("bare localhost is asked")
        << "localhost" << QStringList{"MX localhost", "A localhost"} << MXCheck::Esito::nonRisolto;
    QTest::newRow("invalid UTF-8 is no answer")
        << "binario.it" << QStringList{"MX binario.it", "A binario.it"} << MXCheck::Esito::nonRisolto;
    QTest::newRow("blank line is no answer")
        << "spazi.it" << QStringList{"MX spazi.it", "A spazi.it"} << MXCheck::Esito::nonRisolto;
    QTest::newRow("exit status isn't looked at")
        << "uscita.it" << QStringList{"MX uscita.it"} << MXCheck::Esito::recapitabile;
}

void TestChecks::queriesPerDomain() {
    QFETCH(QString, dominio);
    QFETCH(QStringList, domande);
    QFETCH(MXCheck::Esito, esito);
    const QString log = m_dir.filePath(QStringLiteral("queries.log"));
    QFile::remove(log);
    Dig::setExecutableForTests(standInDig(QStringLiteral("dig-queries"), QStringLiteral(R"(echo "$4 $5" >> '%1'
case "$4 $5" in
"MX conmx.it") echo "10 mx.conmx.it." ;;
"A soloa.it") echo "192.0.2.1" ;;
"MX binario.it") printf '10 \377\n' ;;
"MX spazi.it") printf '   \n\t\n' ;;
"MX uscita.it") echo "10 mx.uscita.it."; exit 9 ;;
esac)")
                                                                             .arg(log)));
    QCOMPARE(QCoro::waitFor(MXCheck::esito(dominio)), esito);
    QCOMPARE(readLines(log), domande);
    // Asked again, the domain comes from the cache: no further process.
    QCOMPARE(QCoro::waitFor(MXCheck::esito(dominio)), esito);
    QCOMPARE(readLines(log), domande);
}

void TestChecks::widthAndProgress() {
    const QString log = m_dir.filePath(QStringLiteral("width.log"));
    QFile::remove(log);
    const QString script = QStringLiteral(R"sh(echo "start $5 $(date +%s.%N)" >> '%1'
sleep 1
echo "end $5 $(date +%s.%N)" >> '%1'
echo "10 mx.$5.")sh");
    Dig::setExecutableForTests(standInDig(QStringLiteral("dig-slow"), script.arg(log)));
    QSet<QString> domini;
    for (int i = 0; i < 30; ++i)
        domini.insert(QStringLiteral("d%1.ditta.it").arg(i, 2, 10, QLatin1Char('0')));

    QList<QPair<int, int>> chiamate;
    bool sulThreadPrincipale = true;
    const auto avanzamento = [&](int fatti, int totale) {
        chiamate.append({fatti, totale});
        sulThreadPrincipale = sulThreadPrincipale && QThread::currentThread() == QCoreApplication::instance()->thread();
    };
    const QHash<QString, MXCheck::Esito> esiti = QCoro::waitFor(MXCheck::verifica(domini, avanzamento));

    QCOMPARE(esiti.size(), 30);
    for (const QString& dominio : domini)
        QCOMPARE(esiti.value(dominio, MXCheck::Esito::nonRisolto), MXCheck::Esito::recapitabile);
    QList<QPair<int, int>> attese;
    for (int i = 1; i <= 30; ++i)
        attese.append({i, 30});
    QCOMPARE(chiamate, attese);
    QVERIFY(sulThreadPrincipale);

    // Replay the log: the file's order is the order in which the processes started and ended.
    const QStringList righe = readLines(log);
    QCOMPARE(righe.size(), 60);
    int inCorso = 0;
    int picco = 0;
    bool finitoUno = false;
    QStringList primi; // started before any had ended
    for (const QString& riga : righe) {
        const QStringList campi = riga.split(u' ');
        QCOMPARE(campi.size(), 3);
        if (campi.at(0) == QLatin1String("start")) {
            picco = std::max(picco, ++inCorso);
            if (!finitoUno)
                primi.append(campi.at(1));
        } else {
            --inCorso;
            finitoUno = true;
        }
    }
    QCOMPARE(picco, MXCheck::larghezza);
    // The first lanes take the first domains in ascending order.
    QStringList attesi;
    for (int i = 0; i < 12; ++i)
        attesi.append(QStringLiteral("d%1.ditta.it").arg(i, 2, 10, QLatin1Char('0')));
    QCOMPARE(sorted(primi), attesi);

    QCOMPARE(QCoro::waitFor(MXCheck::esito(QStringLiteral("d07.ditta.it"))), MXCheck::Esito::recapitabile);
    QCOMPARE(readLines(log).size(), 60);
}

void TestChecks::emptySetGivesEmptyMap() {
    int chiamate = 0;
    const auto esiti = QCoro::waitFor(MXCheck::verifica({}, [&](int, int) { ++chiamate; }));
    QVERIFY(esiti.isEmpty());
    QCOMPARE(chiamate, 0);
}

void TestChecks::failuresReadAsAbsence_data() {
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QString>("resolver");
    QTest::newRow("missing dig") << m_dir.filePath(QStringLiteral("nowhere/dig")) << "";
    QTest::newRow("dig that can't be launched") << m_dir.filePath(QStringLiteral("not-executable")) << "";
    QTest::newRow("a folder in place of dig") << m_dir.path() << "";
    QTest::newRow("resolver that never answers") << "" << QString::fromLatin1(Loopback::checksSilent);
}

void TestChecks::failuresReadAsAbsence() {
    QFETCH(QString, executable);
    QFETCH(QString, resolver);
    QFile notExecutable(m_dir.filePath(QStringLiteral("not-executable")));
    QVERIFY(notExecutable.open(QIODevice::WriteOnly | QIODevice::Truncate));
    notExecutable.write("#!/bin/sh\necho '10 mx.'\n");
    notExecutable.close();
    QVERIFY(notExecutable.setPermissions(QFile::ReadOwner | QFile::WriteOwner));

    QUdpSocket silent;
    QVERIFY(silent.bind(QHostAddress(QString::fromLatin1(Loopback::checksSilent)), 53));
    Dig::setExecutableForTests(executable);
    if (!resolver.isEmpty())
        Dig::setResolverForTests(resolver);

    QCOMPARE(QCoro::waitFor(MXCheck::esito(QStringLiteral("ferramenta-rossi.it"))), MXCheck::Esito::nonRisolto);
    QCOMPARE(QCoro::waitFor(DNSCheck::txt(QStringLiteral("studio-bianchi.it"))), QStringList{});
    QCOMPARE(QCoro::waitFor(DNSCheck::cname(QStringLiteral("default._domainkey.studio-bianchi.it"))),
             std::optional<QString>{});
}
