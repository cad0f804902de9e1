#include "engine/DatiEsempio.h"

#include "records/Campaign.h"
#include "records/SendLog.h"
#include "records/Store.h"
#include "records/Suppression.h"
#include "records/Text.h"

#include <QCoreApplication>
#include <QSet>

namespace DatiEsempio {

namespace {

QString tr(const char* testo) {
    return QCoreApplication::translate("DatiEsempio", testo);
}

const QString sito = QStringLiteral("https://www.nembrosa.example");
const QString etichettaSito = QStringLiteral("nembrosa.example");
const QString contatto = QStringLiteral("info@nembrosa.example");
const QString oggettoStorico = QStringLiteral("Presentazione servizi");

struct Azienda {
    const char* azienda;
    const char* referente;
    const char* email;
    const char* citta;
    const char* provincia;
    const char* settore;
    const char* telefono;
};

constexpr Azienda aziende[] = {
    {"Rossi Impianti Srl", "Marco Rossi", "marco.rossi@rossimpianti.example", "Verona", "VR", "Impianti elettrici",
     "045 1234567"},
    {"Bianchi & Figli Snc", "Anna Bianchi", "anna@bianchiefigli.example", "Padova", "PD", "Termoidraulica",
     "049 2345678"},
    {"Officine Meccaniche Verdi", "Luigi Verdi", "info@officineverdi.example", "Brescia", "BS",
     "Meccanica di precisione", "030 3456789"},
    {"Ferrari Automazioni Spa", "Chiara Ferrari", "chiara.ferrari@ferrariautomazioni.example", "Modena", "MO",
     "Automazione industriale", "059 4567890"},
    {"Colombo Serramenti", "Paolo Colombo", "paolo@colomboserramenti.example", "Monza", "MB", "Serramenti",
     "039 5678901"},
    {"Esposito Logistica Srl", "Giulia Esposito", "ufficio@espositologistica.example", "Napoli", "NA", "Logistica",
     "081 6789012"},
    {"Ricci Costruzioni", "Davide Ricci", "davide.ricci@ricci-costruzioni.example", "Roma", "RM", "Edilizia",
     "06 7890123"},
    {"Marino Refrigerazione", "Sara Marino", "sara@marinofrigo.example", "Bari", "BA", "Refrigerazione", "080 8901234"},
    {"Greco Elettroforniture", "Antonio Greco", "acquisti@grecoelettro.example", "Palermo", "PA",
     "Forniture elettriche", "091 9012345"},
    {"Bruno Manutenzioni Srl", "Elena Bruno", "elena.bruno@brunomanutenzioni.example", "Torino", "TO",
     "Manutenzione impianti", "011 0123456"},
    {"Gallo Antincendio", "Riccardo Gallo", "riccardo@galloantincendio.example", "Genova", "GE", "Sistemi antincendio",
     "010 1234567"},
    {"Conti Climatizzazione", "Federica Conti", "federica.conti@conticlima.example", "Firenze", "FI", "Climatizzazione",
     "055 2345678"},
    {"De Luca Energie Srl", "Stefano De Luca", "info@delucaenergie.example", "Bologna", "BO", "Energie rinnovabili",
     "051 3456789"},
    {"Mancini Ascensori", "Laura Mancini", "laura@manciniascensori.example", "Ancona", "AN", "Ascensori",
     "071 4567890"},
    {"Costa Reti Idriche", "Alberto Costa", "tecnico@costaretiidriche.example", "Trieste", "TS", "Reti idriche",
     "040 5678901"},
    {"Fontana Sicurezza Srl", "Martina Fontana", "martina@fontanasicurezza.example", "Bergamo", "BG",
     "Sicurezza sul lavoro", "035 6789012"},
    {"Barbieri Carpenteria", "Giorgio Barbieri", "giorgio@barbiericarpenteria.example", "Vicenza", "VI",
     "Carpenteria metallica", "0444 789012"},
    {"Sartori Domotica", "Valentina Sartori", "valentina.sartori@sartoridomotica.example", "Treviso", "TV", "Domotica",
     "0422 890123"},
    {"Villa Impianti Sportivi", "Matteo Villa", "commerciale@villaimpianti.example", "Como", "CO", "Impianti sportivi",
     "031 9012345"},
    {"Longo Depurazione", "Silvia Longo", "silvia@longodepurazione.example", "Lecce", "LE", "Trattamento acque",
     "0832 012345"},
    {"Pellegrini Tecnologie", "Andrea Pellegrini", "andrea@pellegrinitech.example", "Parma", "PR",
     "Informatica industriale", "0521 123456"},
    {"Rizzo Coibentazioni", "Francesca Rizzo", "francesca.rizzo@rizzocoibentazioni.example", "Catania", "CT",
     "Isolamenti termici", "095 234567"},
    {"Moretti Utensili Srl", "Claudio Moretti", "ordini@morettiutensili.example", "Reggio Emilia", "RE", "Utensileria",
     "0522 345678"},
    {"Ferraro Illuminazione", "Roberta Ferraro", "roberta@ferraroluce.example", "Cagliari", "CA", "Illuminotecnica",
     "070 456789"},
};

struct VoceStorico {
    int riga; // 1-based row of the list
    SendStatus stato;
    int minutiFa;
};

QString dettaglio(const VoceStorico& voce) {
    if (voce.riga == 5)
        return QStringLiteral("Risposta inattesa a RCPT TO: 550 5.1.1 <") + QString::fromUtf8(aziende[4].email) +
               QStringLiteral(">: Recipient address rejected: User unknown");
    if (voce.riga == 9)
        return QStringLiteral("in lista esclusi");
    if (voce.riga == 11)
        return QStringLiteral("Risposta inattesa a RCPT TO: 452 4.2.2 mailbox full");
    if (voce.riga == 16)
        return QStringLiteral("dominio senza server di posta");
    return {};
}

QList<VoceStorico> storico() {
    QList<VoceStorico> voci;
    for (int riga = 1; riga <= 20; ++riga) {
        SendStatus stato = SendStatus::sent;
        if (riga == 5 || riga == 11)
            stato = SendStatus::failed;
        else if (riga == 9 || riga == 16)
            stato = SendStatus::skipped;
        voci.append({riga, stato, 96 - 2 * (riga - 1)});
    }
    return voci;
}

QList<QPair<QString, QString>> esclusi() {
    return {
        {QString::fromUtf8(aziende[4].email),
         QStringLiteral("rifiutato dal server: 550 5.1.1 Recipient address rejected: User unknown")},
        {QStringLiteral("info@ditta-chiusa.example"), QStringLiteral("dominio inesistente (controllo DNS)")},
        {QStringLiteral("amministrazione@vecchio-dominio.example"),
         QStringLiteral("dominio inesistente (controllo DNS)")},
        {QString::fromUtf8(aziende[15].email), QStringLiteral("dominio senza server di posta (controllo DNS)")},
        {QStringLiteral("giovanni.neri@nerisistemi.example"),
         QStringLiteral("ha chiesto di non essere più contattato")},
        {QStringLiteral("acquisti@bianco-forniture.example"),
         QStringLiteral("rimbalzo definitivo: 554 5.7.1 Message rejected")},
        {QStringLiteral("segreteria@studio-gialli.example"), QStringLiteral("importato da esclusi-storici.csv")},
    };
}

QString html() {
    const QStringList parti = {
        QStringLiteral("<div style=\"font-size:15px;\"><b>Buongiorno {{Referente}},</b></div>"),
        QStringLiteral("<div><br></div>"),
        QStringLiteral("<div>mi chiamo Elio Marsan e mi occupo di software gestionale per le imprese del settore "
                       "<b>{{Settore}}</b>.</div>"),
        QStringLiteral("<div><br></div>"),
        QStringLiteral("<div>Abbiamo trovato i riferimenti di <b>{{Azienda}}</b> di {{Città}} e pensiamo che il "
                       "nostro gestionale possa esservi utile per:</div>"),
        QStringLiteral("<ul>"),
        QStringLiteral("<li>gestire interventi e manutenzioni con lo storico completo per cliente;</li>"),
        QStringLiteral("<li>preparare preventivi e rapportini direttamente dal telefono, in cantiere;</li>"),
        QStringLiteral("<li>tenere sotto controllo scadenze, ricambi e ore lavorate.</li>"),
        QStringLiteral("</ul>"),
        QStringLiteral("<div>Se vi fa piacere, possiamo mostrarvelo in venti minuti in videochiamata, senza "
                       "impegno.</div>"),
        QStringLiteral("<div><br></div>"),
        QStringLiteral("<table role=\"presentation\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" "
                       "style=\"margin:16px 0;border:none;\">"),
        QStringLiteral("<tr><td style=\"background:#10a99b;border-radius:6px;border:none;padding:0;\">"),
        QStringLiteral("<a href=\"%1\" style=\"display:inline-block;padding:11px 22px;font-family:Arial,Helvetica,"
                       "sans-serif;font-size:14px;font-weight:bold;color:#ffffff;text-decoration:none;\">Scopri il "
                       "gestionale</a>")
            .arg(sito),
        QStringLiteral("</td></tr></table>"),
        QStringLiteral("<div>Per rispondere basta questa email: se preferite non ricevere altri messaggi, è "
                       "sufficiente scriverlo e non vi contatteremo più.</div>"),
        QStringLiteral("<div><br></div>"),
        QStringLiteral("<div>Un cordiale saluto,</div>"),
        QStringLiteral("<div><b>Elio Marsan</b></div>"),
        QStringLiteral("<div style=\"color:#5a6675;\">Nembrosa Software House — {{Provincia}} e tutta Italia<br>"
                       "<a href=\"%1\" style=\"color:#10a99b;\">%2</a></div>")
            .arg(sito, etichettaSito),
    };
    return parti.join(u'\n');
}

} // namespace

Esito carica(Store& store) {
    QSet<QString> nomi;
    for (const ContactList& lista : store.all<ContactList>())
        nomi.insert(lista.name);
    QString nome = nomeLista;
    for (int n = 2; nomi.contains(nome); ++n)
        nome = nomeLista + u' ' + QString::number(n);

    ContactList lista(nome, QStringLiteral("dati di esempio"),
                      {"Azienda", "Referente", "Email", "Città", "Provincia", "Settore", "Telefono"},
                      QStringLiteral("Email"));
    lista.tag = QStringLiteral("esempio");
    lista.note = QStringLiteral(
        "Contatti inventati su domini .example, riservati agli esempi: nessun messaggio può raggiungerli davvero.");
    store.insert(lista);
    QList<ContactRow> righe;
    for (const Azienda& a : aziende) {
        const QString email = QString::fromUtf8(a.email);
        righe.append(ContactRow({{"Azienda", QString::fromUtf8(a.azienda)},
                                 {"Referente", QString::fromUtf8(a.referente)},
                                 {"Email", email},
                                 {"Città", QString::fromUtf8(a.citta)},
                                 {"Provincia", QString::fromUtf8(a.provincia)},
                                 {"Settore", QString::fromUtf8(a.settore)},
                                 {"Telefono", QString::fromUtf8(a.telefono)}},
                                email));
    }
    store.insertRows(lista.id, righe);

    MessageTemplate modello(nomeModello, QStringLiteral("{{Azienda}}: un gestionale pensato per chi fa {{Settore}}"),
                            html());
    modello.note =
        QStringLiteral("Modello dimostrativo: mostra saluto personalizzato, elenco puntato, pulsante e firma.");
    store.insert(modello);
    store.save();
    return {lista, modello, int(righe.size())};
}

QString caricaScenario(Store& store) {
    const Esito esito = carica(store);
    Campaign campagna(nomeCampagna);
    campagna.listId = esito.lista.id;
    campagna.templateId = esito.modello.id;
    campagna.fromName = QStringLiteral("Nembrosa Software");
    campagna.fromEmail = contatto;
    campagna.snapshotSubject = esito.modello.subject;
    campagna.snapshotHTML = esito.modello.html;
    campagna.statusRaw = QStringLiteral("completed");
    store.insert(campagna);

    QHash<QString, QList<ContactRow>> righe = store.righePerEmail();
    const QDateTime adesso = QDateTime::currentDateTimeUtc();
    const QList<VoceStorico> voci = storico();
    for (const VoceStorico& voce : voci) {
        const QString email = QString::fromUtf8(aziende[voce.riga - 1].email);
        SendLog log(email, oggettoStorico, voce.stato, dettaglio(voce), QStringLiteral("Brevo"));
        log.date = adesso.addSecs(-60 * voce.minutiFa);
        log.campaignId = campagna.id;
        store.insert(log);
        // The rows show the same counters as after a real run.
        for (ContactRow& riga : righe[Text::normalizedAddress(email)]) {
            riga.registraEsito(voce.stato, campagna.name, oggettoStorico, log.detail, log.date);
            store.updateRowOutcome(riga);
        }
    }

    const QSet<QString> giaEsclusi = store.suppressedEmails();
    int aggiunti = 0;
    for (const auto& [email, motivo] : esclusi()) {
        if (giaEsclusi.contains(Text::normalizedAddress(email)))
            continue;
        Suppression esclusione(email, motivo);
        if (store.insert(esclusione))
            ++aggiunti;
    }
    store.save();
    return tr("Creata la campagna \"") + campagna.name + tr("\" con ") + QString::number(voci.size()) +
           tr(" invii nello storico e ") + QString::number(aggiunti) + tr(" esclusi dimostrativi.");
}

QString rimuoviScenario(Store& store) {
    int rimossi = 0;
    const auto togli = [&]<class T>(const QList<T>& tutti, auto scelto) {
        for (const T& record : tutti)
            if (scelto(record) && store.remove<T>(record.id))
                ++rimossi;
    };
    togli(store.all<Campaign>(), [](const Campaign& c) { return c.name.startsWith(nomeCampagna); });
    togli(store.all<ContactList>(), [](const ContactList& l) { return l.name.startsWith(nomeLista); });
    togli(store.all<MessageTemplate>(), [](const MessageTemplate& m) { return m.name.startsWith(nomeModello); });
    togli(store.all<SendLog>(), [](const SendLog& s) { return s.email.endsWith(suffisso); });
    togli(store.all<Suppression>(), [](const Suppression& s) { return s.email.endsWith(suffisso); });
    store.save();

    // A campaign of the user's that joined the demo list or template could no longer run: it goes too.
    QSet<RecordId> liste, modelli;
    for (const ContactList& lista : store.all<ContactList>())
        liste.insert(lista.id);
    for (const MessageTemplate& modello : store.all<MessageTemplate>())
        modelli.insert(modello.id);
    togli(store.all<Campaign>(), [&](const Campaign& c) {
        return (c.listId > 0 && !liste.contains(c.listId)) || (c.templateId > 0 && !modelli.contains(c.templateId));
    });
    store.save();
    return tr("Rimossi ") + QString::number(rimossi) +
           tr(" elementi dimostrativi. I dati veri non sono stati toccati.");
}

} // namespace DatiEsempio
