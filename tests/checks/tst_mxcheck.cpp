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

using MXCheck::Esito;

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

QString freshLog(const QTemporaryDir& dir, const QString& name) {
    const QString path = dir.filePath(name);
    QFile::remove(path);
    return path;
}

} // namespace

void TestChecks::domini_data() {
    QTest::addColumn<QStringList>("indirizzi");
    QTest::addColumn<QStringList>("attesi");
    QTest::newRow("trimmed, lower-cased, merged")
        << QStringList{" Mario@Ditta.IT \n", "luisa@ditta.it", "b@due.com"} << QStringList{"ditta.it", "due.com"};
    QTest::newRow("no at sign, or two") << QStringList{"mario.ditta.it", "a@b@ditta.it"} << QStringList{};
    QTest::newRow("nothing after the at sign") << QStringList{"mario@", "luisa@ \t"} << QStringList{};
    QTest::newRow("nothing before the at sign") << QStringList{"@ditta.it"} << QStringList{"ditta.it"};
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
    QTest::newRow(".example in capitals") << "Negozio.EXAMPLE" << true;
    QTest::newRow(".test") << "prova.test" << true;
    QTest::newRow(".invalid") << "x.invalid" << true;
    QTest::newRow(".localhost") << "app.localhost" << true;
    QTest::newRow("bare localhost") << "localhost" << false;
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
    QTest::newRow("answers, empty pieces dropped")
        << QByteArray("\n10 mx1.ditta.it.\n\n20 mx2.ditta.it.") << QStringList{"10 mx1.ditta.it.", "20 mx2.ditta.it."};
    QTest::newRow("dig's own notes are no answer")
        << QByteArray(";; communications error to 127.0.0.4#53: timed out\n;; no servers could be reached\n")
        << QStringList{};
    QTest::newRow("invalid UTF-8 gives nothing") << QByteArray("10 mx.\n\xff\xfe\n") << QStringList{};
    QTest::newRow("UTF-8 kept") << QByteArray("\"caff\xc3\xa8\"\n") << QStringList{QString::fromUtf8("\"caffè\"")};
}

void TestChecks::answerPieces() {
    QFETCH(QByteArray, output);
    QFETCH(QStringList, pezzi);
    QCOMPARE(Dig::answerPieces(output), pezzi);
}

void TestChecks::mxAgainstNsd_data() {
    QTest::addColumn<QString>("dominio");
    QTest::addColumn<Esito>("esito");
    QTest::newRow("MX records, capitals") << "Ferramenta-Rossi.IT" << Esito::recapitabile;
    QTest::newRow("only an A record") << "solo-sito.it" << Esito::senzaServerDiPosta;
    QTest::newRow("name that doesn't exist") << "nessuno.ferramenta-rossi.it" << Esito::nonRisolto;
    QTest::newRow("zone nobody serves") << "chiusa-da-anni.it" << Esito::nonRisolto;
    QTest::newRow("demonstration domain") << "negozio.example" << Esito::dimostrativo;
}

void TestChecks::mxAgainstNsd() {
    QFETCH(QString, dominio);
    QFETCH(Esito, esito);
    const QHash<QString, Esito> esiti = QCoro::waitFor(MXCheck::verifica({dominio}));
    QCOMPARE(esiti.size(), 1);
    QCOMPARE(esiti.value(dominio), esito);
    QCOMPARE(QCoro::waitFor(MXCheck::esito(dominio)), esito);
}

void TestChecks::digArguments_data() {
    QTest::addColumn<QString>("resolver");
    QTest::addColumn<QString>("server");
    QTest::newRow("resolver for tests") << "127.0.0.2"
                                        << "@127.0.0.2";
    QTest::newRow("public resolver") << ""
                                     << "@1.1.1.1";
}

void TestChecks::digArguments() {
    QFETCH(QString, resolver);
    QFETCH(QString, server);
    const QString log = freshLog(m_dir, QStringLiteral("arguments.log"));
    standInDig(QStringLiteral("dig-arguments"), QStringLiteral("printf '%s\\n' \"$@\" > '%1'\necho '10 mx.'").arg(log));
    Dig::setResolverForTests(resolver);
    QCOMPARE(QCoro::waitFor(MXCheck::esito(QStringLiteral("Ditta.IT"))), Esito::recapitabile);
    QCOMPARE(readLines(log), (QStringList{"+short", "+time=3", "+tries=1", "MX", "ditta.it", server}));
}

void TestChecks::queriesPerDomain_data() {
    QTest::addColumn<QString>("dominio");
    QTest::addColumn<QStringList>("domande");
    QTest::addColumn<Esito>("esito");
    QTest::newRow("MX answer isn't asked for A") << "conmx.it" << QStringList{"MX conmx.it"} << Esito::recapitabile;
    QTest::newRow("A only") << "soloa.it" << QStringList{"MX soloa.it", "A soloa.it"} << Esito::senzaServerDiPosta;
    QTest::newRow("no answer") << "nessuno.it" << QStringList{"MX nessuno.it", "A nessuno.it"} << Esito::nonRisolto;
    QTest::newRow("demonstration domain, no process") << "Negozio.EXAMPLE" << QStringList{} << Esito::dimostrativo;
    QTest::newRow("invalid UTF-8 is no answer")
        << "binario.it" << QStringList{"MX binario.it", "A binario.it"} << Esito::nonRisolto;
    QTest::newRow("blank line is no answer")
        << "spazi.it" << QStringList{"MX spazi.it", "A spazi.it"} << Esito::nonRisolto;
    QTest::newRow("exit status isn't looked at") << "uscita.it" << QStringList{"MX uscita.it"} << Esito::recapitabile;
}

void TestChecks::queriesPerDomain() {
    QFETCH(QString, dominio);
    QFETCH(QStringList, domande);
    QFETCH(Esito, esito);
    const QString log = freshLog(m_dir, QStringLiteral("queries.log"));
    standInDig(QStringLiteral("dig-queries"), QStringLiteral(R"(echo "$4 $5" >> '%1'
case "$4 $5" in
"MX conmx.it") echo "10 mx.conmx.it." ;;
"A soloa.it") echo "192.0.2.1" ;;
"MX binario.it") printf '10 \377\n' ;;
"MX spazi.it") printf '   \n\t\n' ;;
"MX uscita.it") echo "10 mx.uscita.it."; exit 9 ;;
esac)")
                                                  .arg(log));
    // Asked twice: the second answer comes from the cache, with no further process.
    for (int volta = 0; volta < 2; ++volta) {
        QCOMPARE(QCoro::waitFor(MXCheck::esito(dominio)), esito);
        QCOMPARE(readLines(log), domande);
    }
}

void TestChecks::widthAndProgress() {
    int chiamateVuote = 0;
    QVERIFY(QCoro::waitFor(MXCheck::verifica({}, [&](int, int) { ++chiamateVuote; })).isEmpty());
    QCOMPARE(chiamateVuote, 0);

    const QString log = freshLog(m_dir, QStringLiteral("width.log"));
    standInDig(QStringLiteral("dig-slow"), QStringLiteral(R"(echo "start $5" >> '%1'
sleep 1
echo "end $5" >> '%1'
echo "10 mx.$5.")")
                                               .arg(log));
    QSet<QString> domini;
    QStringList primiAttesi;
    QList<QPair<int, int>> chiamateAttese;
    for (int i = 0; i < 30; ++i) {
        domini.insert(QStringLiteral("d%1.ditta.it").arg(i, 2, 10, QLatin1Char('0')));
        if (i < MXCheck::larghezza)
            primiAttesi.append(QStringLiteral("d%1.ditta.it").arg(i, 2, 10, QLatin1Char('0')));
        chiamateAttese.append({i + 1, 30});
    }

    QList<QPair<int, int>> chiamate;
    bool sulThreadPrincipale = true;
    const auto avanzamento = [&](int fatti, int totale) {
        chiamate.append({fatti, totale});
        sulThreadPrincipale = sulThreadPrincipale && QThread::currentThread() == QCoreApplication::instance()->thread();
    };
    const QHash<QString, Esito> esiti = QCoro::waitFor(MXCheck::verifica(domini, avanzamento));
    QCOMPARE(esiti.size(), 30);
    for (const QString& dominio : domini)
        QCOMPARE(esiti.value(dominio, Esito::nonRisolto), Esito::recapitabile);
    QCOMPARE(chiamate, chiamateAttese);
    QVERIFY(sulThreadPrincipale);

    // Replay the log, whose order is the order in which the processes started and ended.
    const QStringList righe = readLines(log);
    QCOMPARE(righe.size(), 60);
    int inCorso = 0;
    int picco = 0;
    QStringList primi; // started before any had ended
    bool finitoUno = false;
    for (const QString& riga : righe) {
        const bool inizio = riga.startsWith(QLatin1String("start "));
        inCorso += inizio ? 1 : -1;
        picco = std::max(picco, inCorso);
        finitoUno = finitoUno || !inizio;
        if (inizio && !finitoUno)
            primi.append(riga.mid(6));
    }
    QCOMPARE(picco, 12);
    // The first lanes take the first domains in ascending order.
    QCOMPARE(sorted(primi), primiAttesi);

    QCOMPARE(QCoro::waitFor(MXCheck::esito(QStringLiteral("d07.ditta.it"))), Esito::recapitabile);
    QCOMPARE(readLines(log).size(), 60);
}

void TestChecks::failuresReadAsAbsence_data() {
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QString>("resolver");
    QTest::newRow("missing dig") << m_dir.filePath(QStringLiteral("nowhere/dig")) << "";
    QTest::newRow("dig that can't be launched") << m_dir.filePath(QStringLiteral("not-executable")) << "";
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

    QCOMPARE(QCoro::waitFor(MXCheck::esito(QStringLiteral("ferramenta-rossi.it"))), Esito::nonRisolto);
    QCOMPARE(QCoro::waitFor(DNSCheck::txt(QStringLiteral("studio-bianchi.it"))), QStringList{});
    QCOMPARE(QCoro::waitFor(DNSCheck::cname(QStringLiteral("default._domainkey.studio-bianchi.it"))),
             std::optional<QString>{});
}
