#include "checks/DNSCheck.h"

#include "checks/Dig.h"
#include "records/Text.h"

#include <algorithm>
#include <vector>

namespace DNSCheck {

namespace {

bool eChiave(const QString& riga) {
    const QString minuscola = Text::lowercased(riga);
    return minuscola.contains(QLatin1String("p=")) || minuscola.contains(QLatin1String("v=dkim1"));
}

bool haChiave(const QStringList& righe) {
    return std::any_of(righe.cbegin(), righe.cend(), eChiave);
}

// dig prints the names of a CNAME chain before the record it leads to; Brevo's end in its DKIM domain,
// written with or without the final dot.
bool eNomeDKIMBrevo(const QString& riga) {
    QString nome = Text::lowercased(riga);
    if (nome.endsWith(u'.'))
        nome.chop(1);
    return nome.endsWith(QLatin1String(dominioDKIMBrevo));
}

QCoro::Task<bool> selettorePresente(QString selettore, QString dominio) {
    const QString nome = selettore + QStringLiteral("._domainkey.") + dominio;
    const QStringList diretti = co_await txt(nome);
    if (haChiave(diretti))
        co_return true;
    const std::optional<QString> destinazione = co_await cname(nome);
    if (!destinazione || destinazione->isEmpty())
        co_return false;
    const QStringList tramite = co_await txt(*destinazione);
    co_return haChiave(tramite);
}

} // namespace

const QStringList& selettori() {
    static const QStringList nomi = {QStringLiteral("brevo1"), QStringLiteral("brevo2"),    QStringLiteral("brevo"),
                                     QStringLiteral("mail"),   QStringLiteral("default"),   QStringLiteral("s1"),
                                     QStringLiteral("s2"),     QStringLiteral("selector1"), QStringLiteral("selector2"),
                                     QStringLiteral("aruba"),  QStringLiteral("dkim"),      QStringLiteral("k1"),
                                     QStringLiteral("google")};
    return nomi;
}

QStringList righeTXT(const QStringList& pezzi) {
    QStringList righe;
    for (QString riga : pezzi) {
        // "a" "b" is how dig shows one TXT record held in two strings.
        riga.remove(QLatin1String("\" \""));
        qsizetype inizio = 0;
        qsizetype fine = riga.size();
        const auto daTogliere = [](QChar c) { return c == u'"' || c == u' '; };
        while (inizio < fine && daTogliere(riga.at(inizio)))
            ++inizio;
        while (fine > inizio && daTogliere(riga.at(fine - 1)))
            --fine;
        if (fine > inizio)
            righe.append(riga.mid(inizio, fine - inizio));
    }
    return righe;
}

QCoro::Task<QStringList> dig(QString tipo, QString nome) {
    const QStringList pezzi = co_await Dig::query(std::move(tipo), std::move(nome));
    co_return righeTXT(pezzi);
}

QCoro::Task<QStringList> txt(QString nome) {
    QStringList righe = co_await dig(QStringLiteral("TXT"), std::move(nome));
    righe.removeIf(eNomeDKIMBrevo);
    co_return righe;
}

QCoro::Task<std::optional<QString>> cname(QString nome) {
    const QStringList righe = co_await dig(QStringLiteral("CNAME"), std::move(nome));
    if (righe.isEmpty())
        co_return std::nullopt;
    QString destinazione = righe.first();
    if (destinazione.endsWith(u'.'))
        destinazione.chop(1);
    co_return destinazione;
}

QCoro::Task<QStringList> selettoriPresenti(QString dominio) {
    // All selectors at once: the width is small and fixed.
    std::vector<QCoro::Task<bool>> domande;
    for (const QString& selettore : selettori())
        domande.push_back(selettorePresente(selettore, dominio));
    QStringList presenti;
    for (qsizetype i = 0; i < selettori().size(); ++i) {
        const bool presente = co_await std::move(domande[std::size_t(i)]);
        if (presente)
            presenti.append(selettori().at(i));
    }
    presenti.sort();
    co_return presenti;
}

QCoro::Task<Risultato> verifica(QString dominio, QString hostSMTP) {
    Risultato risultato;
    risultato.dominio = Text::lowercased(Text::trimmedWhitespace(dominio));
    risultato.servizio = nomeServizio(hostSMTP);
    // The three queries run side by side.
    auto radice = txt(risultato.dominio);
    auto politica = txt(QStringLiteral("_dmarc.") + risultato.dominio);
    auto chiavi = selettoriPresenti(risultato.dominio);
    const QStringList righeRadice = co_await std::move(radice);
    const QStringList righePolitica = co_await std::move(politica);
    const QStringList presenti = co_await std::move(chiavi);

    std::optional<QString> spf;
    for (const QString& riga : righeRadice)
        if (Text::lowercased(riga).startsWith(QLatin1String("v=spf1"))) {
            spf = riga;
            break;
        }
    QStringList dmarc;
    for (const QString& riga : righePolitica)
        if (Text::lowercased(riga).startsWith(QLatin1String("v=dmarc1")))
            dmarc.append(riga);

    risultato.spf = valutaSPF(spf, hostSMTP);
    risultato.dkim = valutaDKIM(presenti, hostSMTP);
    risultato.dmarc = valutaDMARC(dmarc);
    risultato.verificatoIl = QDateTime::currentDateTimeUtc();
    co_return risultato;
}

} // namespace DNSCheck
