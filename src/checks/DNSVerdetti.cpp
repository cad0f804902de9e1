// The verdicts of the sender-domain check: pure functions of the records found and the SMTP host.

#include "checks/DNSCheck.h"

#include "records/Text.h"

#include <QCoreApplication>

namespace DNSCheck {

namespace {

const QString brevo = QStringLiteral("Brevo");
const QString aruba = QStringLiteral("Aruba");
const QString gmail = QStringLiteral("Gmail");

} // namespace

QString nomeServizio(const QString& host) {
    const QString nome = Text::lowercased(host);
    if (nome.contains(QLatin1String("brevo")) || nome.contains(QLatin1String("sendinblue")))
        return brevo;
    if (nome.contains(QLatin1String("aruba")))
        return aruba;
    if (nome.contains(QLatin1String("gmail")) || nome.contains(QLatin1String("google")))
        return gmail;
    return host;
}

std::optional<QString> includeAtteso(const QString& host) {
    const QString servizio = nomeServizio(host);
    if (servizio == aruba)
        return QString::fromLatin1(includeSPFAruba);
    if (servizio == gmail)
        return QString::fromLatin1(includeSPFGoogle);
    // Brevo signs with DKIM and sends from its own envelope domain, so it needs no include.
    return std::nullopt;
}

QStringList selettoriAttesi(const QString& host) {
    const QString servizio = nomeServizio(host);
    if (servizio == brevo)
        return {QStringLiteral("brevo1"), QStringLiteral("brevo2")};
    if (servizio == gmail)
        return {QStringLiteral("google")};
    return {};
}

Esito valutaSPF(const std::optional<QString>& record, const QString& host) {
    if (!record)
        return {
            Esito::mancante,
            QCoreApplication::translate(
                "DNSCheck", "Nessun record SPF: il dominio non dichiara chi è autorizzato a spedire per suo conto.")};
    const std::optional<QString> include = includeAtteso(host);
    if (!include || Text::lowercased(*record).contains(*include))
        return {Esito::ok, *record};
    return {Esito::attenzione,
            QCoreApplication::translate("DNSCheck",
                                        "SPF presente ma non include %1: con questo servizio l'allineamento SPF non è "
                                        "soddisfatto (conta comunque il DKIM). Record attuale: %2")
                .arg(*include, *record)};
}

Esito valutaDKIM(const QStringList& presenti, const QString& host) {
    const QStringList attesi = selettoriAttesi(host);
    QStringList attesiPresenti;
    for (const QString& selettore : attesi)
        if (presenti.contains(selettore))
            attesiPresenti.append(selettore);
    const QString elenco = presenti.join(QStringLiteral(", "));
    if (!attesiPresenti.isEmpty())
        return {Esito::ok,
                QCoreApplication::translate("DNSCheck", "Firma DKIM attiva per questo servizio (selettori: %1).")
                    .arg(attesiPresenti.join(QStringLiteral(", ")))};
    if (!attesi.isEmpty() && !presenti.isEmpty())
        return {Esito::attenzione,
                QCoreApplication::translate("DNSCheck",
                                            "Trovati i selettori %1, ma per questo servizio servono %2._domainkey.")
                    .arg(elenco, attesi.join(QStringLiteral(" e ")))};
    if (presenti.isEmpty())
        return {Esito::mancante,
                QCoreApplication::translate(
                    "DNSCheck", "Nessuna firma DKIM pubblicata: i messaggi partono senza prova di provenienza "
                                "e finiscono facilmente in posta indesiderata.")};
    const QStringList altrui = {QStringLiteral("brevo1"), QStringLiteral("brevo2"), QStringLiteral("google")};
    if (std::all_of(presenti.cbegin(), presenti.cend(), [&](const QString& s) { return altrui.contains(s); }))
        return {Esito::attenzione,
                QCoreApplication::translate(
                    "DNSCheck", "Nel DNS c'è solo la firma di un altro servizio (%1): i messaggi inviati con "
                                "%2 partono senza firma. Attiva il DKIM anche lì.")
                    .arg(elenco, nomeServizio(host))};
    return {Esito::ok, QCoreApplication::translate("DNSCheck", "Firma DKIM attiva (selettori: %1).").arg(elenco)};
}

Esito valutaDMARC(const std::optional<QString>& record) {
    if (!record)
        return {Esito::attenzione,
                QCoreApplication::translate(
                    "DNSCheck", "Nessun record DMARC: consigliato almeno v=DMARC1; p=none; rua=mailto:… per "
                                "ricevere i rapporti.")};
    const QString minuscolo = Text::lowercased(*record);
    if (minuscolo.contains(QLatin1String("p=none")) && !minuscolo.contains(QLatin1String("rua=")))
        return {Esito::attenzione,
                QCoreApplication::translate("DNSCheck",
                                            "DMARC in sola osservazione e senza indirizzo per i rapporti: aggiungi "
                                            "rua=mailto:… per sapere come vieni valutato.")};
    return {Esito::ok, *record};
}

Esito valutaDMARC(const QStringList& records) {
    if (records.size() > 1)
        return {Esito::mancante,
                QCoreApplication::translate(
                    "DNSCheck", "Ci sono %1 record DMARC: quando sono più di uno i server li ignorano tutti, "
                                "come se non ci fosse. Tienine uno solo.")
                    .arg(records.size())};
    if (records.isEmpty())
        return valutaDMARC(std::optional<QString>{});
    return valutaDMARC(std::optional<QString>{records.first()});
}

} // namespace DNSCheck
