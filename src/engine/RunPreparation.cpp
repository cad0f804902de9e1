#include "engine/Corsa.h"

#include "checks/MXCheck.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "settings/SettingsStore.h"
#include "smtp/SMTPSession.h"

#include <QCoro/QCoroTimer>

#include <algorithm>
#include <chrono>

Corsa::Corsa(SendEngine& engine, Store& store) : m_engine(engine), m_vivo(&engine), m_store(store) {}

Corsa::~Corsa() = default;

QCoro::Task<bool> Corsa::prepara(Campaign campaign, SettingsStore& settings) {
    if (m_engine.isRunning())
        co_return false;
    // The caller's copy may be older than the record: the snapshot of an earlier run must not be lost.
    if (std::optional<Campaign> attuale = m_store.find<Campaign>(campaign.id))
        campaign = std::move(*attuale);
    const std::optional<MessageTemplate> modello = RunPlanning::modelloValido(campaign, m_store);
    const std::optional<ContactList> lista = RunPlanning::listaValida(campaign, m_store);
    if (!modello || !lista) {
        m_engine.setLastError(tr("La campagna non ha più un modello o una lista validi: forse sono stati eliminati."));
        co_return false;
    }
    m_engine.avvia();

    // Everything the run reads from the settings is fixed here: a change during the run has no effect on it.
    m_config = settings.config();
    m_password = settings.password();
    const QString servizio = settings.nomeProfiloAttivo();
    m_engine.setDescrizione(campaign.name, m_config.fromEmail,
                            m_config.host + QStringLiteral(":") + QString::number(m_config.port), servizio,
                            m_config.delayBetweenMessages);
    // A bad sender would fail every recipient, or carry text of its own into MAIL FROM: nothing starts.
    if (const std::optional<QString> errore = RunPlanning::indirizziNonValidi(m_config)) {
        m_engine.setLastError(*errore);
        m_engine.append(tr("Invio non avviato: ") + *errore);
        m_engine.setRunning(false);
        co_return false;
    }

    // A resumed campaign sends the text of its first run, whatever the template says now.
    if (campaign.snapshotHTML.isEmpty()) {
        campaign.snapshotSubject = modello->subject;
        campaign.snapshotHTML = modello->html;
    }
    m_campagna = campaign;
    m_modello = *modello;
    m_modello.subject = campaign.snapshotSubject;
    // Rendering and building would otherwise scan and decode the template's pictures for every recipient.
    MIMEBuilder::ExtractedImages immagini = MIMEBuilder::extractInlineImages(campaign.snapshotHTML);
    m_modello.html = std::move(immagini.html);
    m_immagini = std::move(immagini.images);
    MIMEBuilder::codifica(m_immagini);

    OutcomeRecorder::Contesto contesto;
    contesto.campagna = campaign.id;
    contesto.nomeCampagna = campaign.name;
    contesto.servizio = servizio;
    contesto.escludiRifiutati = m_config.escludiRifiutati;
    // Recipients are known by the form they go on the wire in, so the maps of the outcomes are too.
    contesto.suppressed = RunPlanning::formaInvio(m_store.suppressedEmails());
    // Large lists are read a page at a time, letting the event loop turn in between: the window, the
    // dashboard and any other run stay live while this one prepares.
    RunPlanning::Pianificatore pianificatore(campaign, contesto.suppressed, m_store);
    for (RecordId dopo = 0;;) {
        const QList<Store::RigaDaPianificare> pagina = m_store.righeDaPianificare(lista->id, dopo, righePerPagina);
        pianificatore.aggiungi(pagina);
        if (pagina.size() < righePerPagina)
            break;
        dopo = pagina.constLast().id;
        const bool avanti = co_await cedi();
        if (!avanti)
            co_return false;
    }
    RunPlanning::Plan piano = std::move(pianificatore).risultato();
    const bool righeLette = co_await righeDegliIndirizzi(piano, contesto.righe);
    if (!righeLette)
        co_return false;
    m_registro = std::make_unique<OutcomeRecorder>(m_engine, m_store, std::move(contesto));
    for (qsizetype i = 0; i < piano.skips.size(); ++i) {
        m_registro->salto(piano.skips.at(i).email, piano.skips.at(i).reason, campaign.snapshotSubject);
        if ((i + 1) % saltiPerPagina != 0)
            continue;
        const bool avanti = co_await cedi();
        if (!avanti)
            co_return false;
    }
    piano.skips.clear();
    m_destinatari = std::move(piano.recipients);

    tagliaAllaQuota();
    if (m_config.verificaDomini && !m_destinatari.isEmpty()) {
        co_await controllaDomini();
        if (!vivo())
            co_return false;
    }
    // Values only for those who will get a message: the quota and the domain check have had their say.
    for (qsizetype da = 0; da < m_destinatari.size(); da += righePerPagina) {
        RunPlanning::caricaValori(m_store, lista->id, m_destinatari, da, da + righePerPagina);
        const bool avanti = co_await cedi();
        if (!avanti)
            co_return false;
    }
    // Planning read the whole list through the store's page cache; the run needs only a few pages of it.
    m_store.liberaCache();
    m_engine.setTotal(m_destinatari.size());
    salvaStato(CampaignStatus::running);

    for (const TemplateAttachment& allegato : m_store.attachments(modello->id))
        m_allegati.append({allegato.filename, allegato.mimeType, allegato.data});
    MIMEBuilder::codifica(m_allegati);
    co_return true;
}

QCoro::Task<bool> Corsa::cedi() {
    co_await QCoro::sleepFor(std::chrono::milliseconds(0));
    co_return vivo();
}

QCoro::Task<bool> Corsa::righeDegliIndirizzi(const RunPlanning::Plan& piano, QHash<QString, QList<RecordId>>& righe) {
    // Only the rows of this run's addresses, in every list, and only their identities.
    QSet<QString> indirizzi;
    indirizzi.reserve(piano.recipients.size() + piano.skips.size());
    for (const RunPlanning::Destinatario& destinatario : piano.recipients)
        indirizzi.insert(destinatario.email);
    for (const RunPlanning::Skip& salto : piano.skips)
        indirizzi.insert(salto.email);
    for (RecordId dopo = 0;;) {
        const QList<QPair<RecordId, QString>> pagina = m_store.indirizziRighe(dopo, righePerPagina);
        for (const auto& [id, email] : pagina) {
            // An accented domain answers to its ASCII form, the one the outcome carries. The key is the plan's
            // own copy of the address, so the map adds no text of its own.
            const auto trovato = indirizzi.constFind(wireAddress(Text::normalizedAddress(email)));
            if (trovato != indirizzi.cend())
                righe[*trovato].append(id);
        }
        if (pagina.size() < righePerPagina)
            co_return true;
        dopo = pagina.constLast().first;
        const bool avanti = co_await cedi();
        if (!avanti)
            co_return false;
    }
}

void Corsa::tagliaAllaQuota() {
    const qint64 inviateOggi = RunPlanning::inviateUltime24Ore(m_store, m_engine.servizio(), m_engine.adesso());
    const qint64 tetto = m_config.dailyLimit;
    m_engine.setQuota(inviateOggi, tetto);
    if (tetto <= 0)
        return;
    const qint64 spazio = std::max<qint64>(0, tetto - inviateOggi);
    if (m_destinatari.size() <= spazio)
        return;
    // Those cut leave no trace in the store: a later run takes them up, as no log says they were delivered.
    m_engine.setRimandati(m_destinatari.size() - spazio);
    m_destinatari.resize(spazio);
    m_engine.append(tr("Tetto giornaliero %1 (già inviate oggi: %2): in questa tornata partono %3 messaggi, gli "
                       "altri restano in attesa e si riprendono domani.")
                        .arg(tetto)
                        .arg(inviateOggi)
                        .arg(spazio));
}

QCoro::Task<> Corsa::controllaDomini() {
    m_engine.append(tr("Controllo dei domini dei destinatari…"));
    QStringList indirizzi;
    indirizzi.reserve(m_destinatari.size());
    for (const RunPlanning::Destinatario& destinatario : std::as_const(m_destinatari))
        indirizzi.append(destinatario.email);
    const QHash<QString, MXCheck::Esito> esiti = co_await MXCheck::verifica(MXCheck::domini(indirizzi));
    if (!vivo())
        co_return;

    // Only a domain that answers nothing at all is dropped: one with an address record but no mail server
    // may still take mail, and an unknown answer is not a reason to leave someone out.
    QList<RunPlanning::Destinatario> restano;
    restano.reserve(m_destinatari.size());
    qsizetype scartati = 0;
    for (RunPlanning::Destinatario& destinatario : m_destinatari) {
        const QString dominio = destinatario.email.mid(destinatario.email.lastIndexOf(u'@') + 1);
        const auto esito = esiti.constFind(dominio);
        if (esito != esiti.constEnd() && *esito == MXCheck::Esito::nonRisolto) {
            m_registro->salto(destinatario.email, RunPlanning::SkipReason::dominioSenzaPosta,
                              m_campagna.snapshotSubject);
            ++scartati;
        } else {
            restano.append(std::move(destinatario));
        }
    }
    m_destinatari = std::move(restano);
    if (scartati > 0)
        m_engine.append(tr("Scartati %1 indirizzi con dominio inesistente.").arg(scartati));
}

void Corsa::salvaStato(CampaignStatus stato) {
    // The record in the store may have moved since the run began (a rename); only the run's fields change.
    std::optional<Campaign> attuale = m_store.find<Campaign>(m_campagna.id);
    if (attuale) {
        attuale->snapshotSubject = m_campagna.snapshotSubject;
        attuale->snapshotHTML = m_campagna.snapshotHTML;
        attuale->setStatus(stato);
        m_store.update(*attuale);
    }
    m_campagna.setStatus(stato);
    m_store.save();
}
