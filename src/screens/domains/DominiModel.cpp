#include "screens/domains/DominiModel.h"

#include "records/EmailSyntax.h"
#include "records/Store.h"

#include <QCoreApplication>

#include <algorithm>

namespace DominiModel {

namespace {

QString tr(const char* testo) {
    return QCoreApplication::translate("DominiModel", testo);
}

QString dominioDi(const QString& indirizzo) {
    return indirizzo.section(u'@', -1);
}

QStringList ordinati(QStringList testi) {
    std::sort(testi.begin(), testi.end());
    return testi;
}

} // namespace

bool haMancanti(const DNSCheck::Risultato& risultato) {
    using DNSCheck::Esito;
    return risultato.spf.caso == Esito::mancante || risultato.dkim.caso == Esito::mancante ||
           risultato.dmarc.caso == Esito::mancante;
}

QString titolo(const DNSCheck::Risultato& risultato) {
    return tr("Il dominio ") + risultato.dominio +
           (haMancanti(risultato) ? tr(" non è ancora pronto per ") : tr(" è configurato correttamente per ")) +
           risultato.servizio;
}

QString suggerimento(const QString& servizio) {
    if (servizio == QLatin1String("Brevo"))
        return tr("In Brevo: Impostazioni → Mittenti, domini e IP dedicati → Domini → Aggiungi un dominio. Pubblica "
                  "poi i record che ti fornisce (brevo-code, brevo._domainkey e DMARC) nel pannello DNS di Aruba.");
    if (servizio == QLatin1String("Aruba"))
        return tr("Nel pannello Aruba: attiva la firma DKIM per il dominio e pubblica il record indicato. Il record "
                  "SPF con include:") +
               QLatin1String(DNSCheck::includeSPFAruba) + tr(" deve restare.");
    return tr("Pubblica nel DNS del dominio i record SPF e DKIM indicati dal tuo servizio di invio.");
}

QStringList indirizziDelleListe(const Store& store) {
    QStringList indirizzi;
    const auto righe = store.righePerEmail(); // keyed by the normalised address already
    for (auto it = righe.cbegin(); it != righe.cend(); ++it)
        if (isValidEmailSyntax(it.key()))
            indirizzi.append(it.key());
    return ordinati(indirizzi);
}

Riepilogo riepiloga(const QStringList& indirizzi, const QHash<QString, MXCheck::Esito>& esiti) {
    Riepilogo riepilogo;
    riepilogo.indirizzi = int(indirizzi.size());
    const QSet<QString> domini = MXCheck::domini(indirizzi);
    riepilogo.domini = int(domini.size());
    for (const QString& dominio : domini) {
        if (MXCheck::eDimostrativo(dominio))
            continue;
        switch (esiti.value(dominio, MXCheck::Esito::nonRisolto)) {
        case MXCheck::Esito::recapitabile:
            ++riepilogo.recapitabili;
            break;
        case MXCheck::Esito::senzaServerDiPosta:
            riepilogo.senzaServerDiPosta.append(dominio);
            break;
        case MXCheck::Esito::nonRisolto:
            riepilogo.inesistenti.append(dominio);
            break;
        case MXCheck::Esito::dimostrativo:
            break;
        }
    }
    const QSet<QString> inesistenti(riepilogo.inesistenti.cbegin(), riepilogo.inesistenti.cend());
    const QSet<QString> senzaServer(riepilogo.senzaServerDiPosta.cbegin(), riepilogo.senzaServerDiPosta.cend());
    for (const QString& indirizzo : indirizzi) {
        const QString dominio = dominioDi(indirizzo);
        if (MXCheck::eDimostrativo(dominio))
            ++riepilogo.dimostrativi;
        else if (inesistenti.contains(dominio))
            riepilogo.daScartare.append(indirizzo);
        else if (senzaServer.contains(dominio))
            riepilogo.incerti.append(indirizzo);
    }
    riepilogo.senzaServerDiPosta = ordinati(riepilogo.senzaServerDiPosta);
    riepilogo.inesistenti = ordinati(riepilogo.inesistenti);
    riepilogo.daScartare = ordinati(riepilogo.daScartare);
    riepilogo.incerti = ordinati(riepilogo.incerti);
    return riepilogo;
}

QString avanzamento(int fatti, int totale) {
    if (totale <= 0)
        return {};
    return QString::number(fatti) + tr(" di ") + QString::number(totale) + tr(" domini");
}

QString lineaConteggi(const Riepilogo& r) {
    return QString::number(r.indirizzi) + tr(" indirizzi, ") + QString::number(r.domini) + tr(" domini distinti: ") +
           QString::number(r.recapitabili) + tr(" con server di posta.");
}

QString lineaDimostrativi(const Riepilogo& r) {
    if (r.dimostrativi <= 0)
        return {};
    return QString::number(r.dimostrativi) +
           tr(" indirizzi appartengono ai dati dimostrativi (domini .example): esclusi dal controllo, non sono un "
              "problema.");
}

QString lineaNessunProblema(const Riepilogo& r) {
    if (!r.inesistenti.isEmpty() || !r.senzaServerDiPosta.isEmpty())
        return {};
    return tr("Nessun problema: tutti i domini possono ricevere posta.");
}

QString lineaInesistenti(const Riepilogo& r) {
    if (r.inesistenti.isEmpty())
        return {};
    return QString::number(r.inesistenti.size()) + tr(" domini non esistono più: ") +
           r.inesistenti.join(QStringLiteral(", "));
}

QString lineaSenzaServer(const Riepilogo& r) {
    if (r.senzaServerDiPosta.isEmpty())
        return {};
    return QString::number(r.senzaServerDiPosta.size()) +
           tr(" domini esistono ma non dichiarano un server di posta (") +
           r.senzaServerDiPosta.join(QStringLiteral(", ")) +
           tr("): la consegna è incerta, ma vengono comunque inviati.");
}

QString elenco(const QStringList& indirizzi) {
    QStringList righe;
    righe.reserve(indirizzi.size());
    for (const QString& indirizzo : indirizzi)
        righe.append(QStringLiteral("· ") + indirizzo);
    return righe.join(u'\n');
}

int daAggiungere(const Riepilogo& r, bool includiIncerti) {
    return int(r.daScartare.size() + (includiIncerti ? r.incerti.size() : 0));
}

QString esitoAggiunta(int aggiunti) {
    if (aggiunti > 0)
        return QString::number(aggiunti) + tr(" indirizzi aggiunti agli esclusi.");
    return tr("Erano già tutti fra gli esclusi.");
}

int aggiungiAgliEsclusi(Store& store, const Riepilogo& riepilogo, bool includiIncerti) {
    QSet<QString> esclusi = store.suppressedEmails();
    const QHash<QString, QList<ContactRow>> righe = store.righePerEmail(); // rows without their values
    int aggiunti = 0;
    auto escludi = [&](const QStringList& indirizzi, const QString& motivo) {
        for (const QString& indirizzo : indirizzi) {
            if (esclusi.contains(indirizzo))
                continue;
            Suppression esclusione(indirizzo, motivo);
            store.insert(esclusione);
            esclusi.insert(indirizzo);
            for (const ContactRow& riga : righe.value(indirizzo))
                store.updateRowExcluded(riga.id, true);
            ++aggiunti;
        }
    };
    // Stored texts, read back by the reason classes: never translated.
    escludi(riepilogo.daScartare, QStringLiteral("dominio inesistente (controllo DNS)"));
    if (includiIncerti)
        escludi(riepilogo.incerti, QStringLiteral("dominio senza server di posta (controllo DNS)"));
    store.save();
    return aggiunti;
}

QString esitoScarica(qsizetype eventi, const Rimbalzi::Conteggio& conteggio, int giorni) {
    if (eventi == 0)
        return tr("Nessun rimbalzo negli ultimi ") + QString::number(giorni) + tr(" giorni.");
    return QString::number(eventi) + tr(" rimbalzi trovati: ") + QString::number(conteggio.aggiunti) +
           tr(" aggiunti agli esclusi, ") + QString::number(conteggio.giaPresenti) + tr(" già presenti.");
}

} // namespace DominiModel
