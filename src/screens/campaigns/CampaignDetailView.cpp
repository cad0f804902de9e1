#include "screens/campaigns/CampaignDetailView.h"

#include "engine/RunPlanning.h"
#include "engine/SendEngine.h"
#include "records/Store.h"
#include "screens/dashboard/SendDashboardView.h"
#include "screens/templates/PreviewSheet.h"
#include "settings/SettingsStore.h"
#include "ui/Ambiente.h"
#include "ui/Dialoghi.h"
#include "ui/Modulo.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoro/QCoroTask>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace {
QString colore(Colore c) {
    return QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(c)));
}

QLabel* didascalia(QWidget* genitore) {
    auto* etichetta = new QLabel(genitore);
    etichetta->setWordWrap(true);
    etichetta->setFont(carattereScalato(etichetta->font(), 0.9));
    return etichetta;
}

// Sets a picker's entries, unless they are already those, and its current entry.
void riempiScelta(QComboBox* scelta, const QList<QPair<QString, RecordId>>& voci, RecordId corrente) {
    bool uguali = scelta->count() == voci.size();
    for (qsizetype i = 0; uguali && i < voci.size(); ++i)
        uguali =
            scelta->itemText(int(i)) == voci.at(i).first && scelta->itemData(int(i)).toLongLong() == voci.at(i).second;
    if (!uguali) {
        const QSignalBlocker blocco(scelta);
        scelta->clear();
        for (const auto& [testo, id] : voci)
            scelta->addItem(testo, id);
    }
    const int indice = std::max(0, scelta->findData(corrente));
    if (scelta->currentIndex() != indice)
        scelta->setCurrentIndex(indice);
}

QHBoxLayout* rigaSenzaMargini() {
    auto* riga = new QHBoxLayout;
    riga->setContentsMargins(0, 0, 0, 0);
    return riga;
}
} // namespace

CampaignDetailView::CampaignDetailView(Ambiente& ambiente, std::shared_ptr<SendEngine> motore, QWidget* genitore)
    : QWidget(genitore), m_ambiente(ambiente), m_motore(std::move(motore)) {
    auto* colonna = new QVBoxLayout(this);
    colonna->setSpacing(14);

    auto* banner = new QWidget(this);
    banner->setObjectName(QStringLiteral("bannerRiferimenti"));
    auto* colonnaBanner = new QVBoxLayout(banner);
    colonnaBanner->setContentsMargins(0, 0, 0, 0);
    m_bannerTitolo = new QLabel(tr("Questa campagna non è più utilizzabile"), banner);
    m_bannerTitolo->setFont(carattereScalato(font(), 1.0, QFont::DemiBold));
    m_bannerTitolo->setStyleSheet(colore(Colore::red));
    m_banner = new NotaView(QStringLiteral("exclamationmark.triangle.fill"), Colore::red, banner);
    m_banner->setTesto(
        tr("La lista dei destinatari o il modello che usava sono stati eliminati. Lo storico degli invii "
           "resta consultabile, ma per spedire di nuovo scegli qui sotto una lista e un modello ancora "
           "presenti, oppure elimina la campagna dall'elenco a sinistra."));
    colonnaBanner->addWidget(m_bannerTitolo);
    colonnaBanner->addWidget(m_banner);
    colonna->addWidget(banner);

    colonna->addWidget(creaImpostazioni());

    m_avvisoDominio = new QWidget(this);
    m_avvisoDominio->setObjectName(QStringLiteral("avvisoDominio"));
    auto* colonnaAvviso = new QVBoxLayout(m_avvisoDominio);
    colonnaAvviso->setContentsMargins(0, 0, 0, 0);
    auto* rigaTitolo = rigaSenzaMargini();
    auto* scudo = new QLabel(m_avvisoDominio);
    scudo->setPixmap(
        Symbols::pixmap(QStringLiteral("exclamationmark.shield.fill"), Palette::colore(Colore::orange), 18));
    m_avvisoTitolo = new QLabel(m_avvisoDominio);
    m_avvisoTitolo->setWordWrap(true);
    m_avvisoTitolo->setFont(carattereScalato(font(), 1.0, QFont::DemiBold));
    m_avvisoTitolo->setStyleSheet(colore(Colore::orange));
    rigaTitolo->addWidget(scudo, 0, Qt::AlignTop);
    rigaTitolo->addWidget(m_avvisoTitolo, 1);
    m_avvisoTesto = didascalia(m_avvisoDominio);
    colonnaAvviso->addLayout(rigaTitolo);
    colonnaAvviso->addWidget(m_avvisoTesto);
    m_avvisoDominio->hide();
    colonna->addWidget(m_avvisoDominio);

    colonna->addWidget(creaDestinatari());
    colonna->addWidget(creaComandi());
    colonna->addWidget(creaRegistro());
    colonna->addStretch(1);

    // The engine changes after every message; the controls follow at most ten times a second.
    m_battitoMotore = new QTimer(this);
    m_battitoMotore->setSingleShot(true);
    m_battitoMotore->setInterval(100);
    connect(m_battitoMotore, &QTimer::timeout, this, &CampaignDetailView::aggiornaMotore);
    connect(m_motore.get(), &SendEngine::changed, this, [this] {
        if (!m_battitoMotore->isActive())
            m_battitoMotore->start();
    });
    connect(&m_ambiente.settings, &SettingsStore::changed, this, [this] {
        aggiornaLetture();
        controllaDominio();
    });
}

CampaignDetailView::~CampaignDetailView() = default;

QWidget* CampaignDetailView::creaImpostazioni() {
    auto* sezione = new SezioneModulo(tr("Impostazioni"), this);
    m_nome = new QLineEdit(sezione);
    m_nome->setObjectName(QStringLiteral("nome"));
    sezione->righe()->addRow(tr("Nome"), m_nome);
    connect(m_nome, &QLineEdit::textEdited, this, [this](const QString& testo) {
        m_campagna.name = testo;
        salva();
    });

    m_lista = new QComboBox(sezione);
    m_lista->setObjectName(QStringLiteral("lista"));
    sezione->righe()->addRow(tr("Lista destinatari"), m_lista);
    connect(m_lista, &QComboBox::activated, this, [this](int indice) {
        m_campagna.listId = m_lista->itemData(indice).toLongLong();
        salva();
        aggiornaLetture();
    });

    m_modello = new QComboBox(sezione);
    m_modello->setObjectName(QStringLiteral("modello"));
    sezione->righe()->addRow(tr("Modello"), m_modello);
    connect(m_modello, &QComboBox::activated, this, [this](int indice) {
        m_campagna.templateId = m_modello->itemData(indice).toLongLong();
        salva();
        aggiornaLetture();
    });

    m_saltaInviati = new QCheckBox(tr("Salta chi ha già ricevuto questa campagna"), sezione);
    m_saltaInviati->setObjectName(QStringLiteral("saltaInviati"));
    sezione->righe()->addRow(m_saltaInviati);
    connect(m_saltaInviati, &QCheckBox::toggled, this, [this](bool acceso) {
        if (m_campagna.skipDuplicates == acceso)
            return;
        m_campagna.skipDuplicates = acceso;
        salva();
        aggiornaLetture();
    });

    m_mittente = new QLabel(sezione);
    m_mittente->setObjectName(QStringLiteral("mittente"));
    m_mittente->setTextInteractionFlags(Qt::TextSelectableByMouse);
    sezione->righe()->addRow(tr("Mittente"), m_mittente);
    return sezione;
}

QWidget* CampaignDetailView::creaDestinatari() {
    auto* sezione = new SezioneModulo(tr("Destinatari"), this);
    auto* tessere = new QWidget(sezione);
    auto* rigaTessere = new QHBoxLayout(tessere);
    rigaTessere->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < 4; ++i) {
        auto* riquadro = new RiquadroView(tessere);
        riquadro->setObjectName(QStringLiteral("riquadro%1").arg(i));
        m_riquadri.append(riquadro);
        rigaTessere->addWidget(riquadro, 1);
    }
    sezione->righe()->addRow(tessere);

    m_righeEsclusi = didascalia(sezione);
    m_righeEsclusi->setObjectName(QStringLiteral("righeEsclusi"));
    m_righeEsclusi->setStyleSheet(colore(Colore::secondary));
    sezione->righe()->addRow(m_righeEsclusi);

    m_campiMancanti = new NotaView(QStringLiteral("exclamationmark.triangle.fill"), Colore::orange, sezione);
    m_campiMancanti->setObjectName(QStringLiteral("campiMancanti"));
    sezione->righe()->addRow(m_campiMancanti);

    auto* dati = new QWidget(sezione);
    auto* rigaDati = new QHBoxLayout(dati);
    rigaDati->setContentsMargins(0, 6, 0, 6);
    for (int i = 0; i < 4; ++i) {
        auto* dato = new DatoInlineView(dati);
        dato->setObjectName(QStringLiteral("dato%1").arg(i));
        m_dati.append(dato);
        rigaDati->addWidget(dato, 1);
    }
    sezione->righe()->addRow(dati);

    m_quota = didascalia(sezione);
    m_quota->setObjectName(QStringLiteral("quota"));
    sezione->righe()->addRow(m_quota);
    m_attesa = didascalia(sezione);
    m_attesa->setObjectName(QStringLiteral("attesa"));
    sezione->righe()->addRow(m_attesa);
    return sezione;
}

QWidget* CampaignDetailView::creaComandi() {
    m_comandi = new QStackedWidget(this);

    auto* fermo = new QWidget(m_comandi);
    auto* colonnaFermo = new QVBoxLayout(fermo);
    colonnaFermo->setContentsMargins(0, 0, 0, 0);
    m_ultimoErrore = new QLabel(fermo);
    m_ultimoErrore->setObjectName(QStringLiteral("ultimoErrore"));
    m_ultimoErrore->setWordWrap(true);
    m_ultimoErrore->setStyleSheet(colore(Colore::red));
    colonnaFermo->addWidget(m_ultimoErrore);
    auto* pulsanti = rigaSenzaMargini();
    m_anteprima = new QPushButton(tr("Anteprima e prova"), fermo);
    m_anteprima->setObjectName(QStringLiteral("anteprima"));
    connect(m_anteprima, &QPushButton::clicked, this, &CampaignDetailView::apriAnteprima);
    m_avvia = new QPushButton(Symbols::icona(QStringLiteral("paperplane.fill")), QString(), fermo);
    m_avvia->setObjectName(QStringLiteral("avvia"));
    m_avvia->setDefault(true);
    connect(m_avvia, &QPushButton::clicked, this, &CampaignDetailView::chiediAvvio);
    pulsanti->addWidget(m_anteprima);
    pulsanti->addStretch(1);
    pulsanti->addWidget(m_avvia);
    colonnaFermo->addLayout(pulsanti);
    m_nonConfigurato = new NotaView(QStringLiteral("exclamationmark.triangle"), Colore::orange, fermo);
    m_nonConfigurato->setObjectName(QStringLiteral("nonConfigurato"));
    m_nonConfigurato->setTesto(tr("SMTP non configurato"));
    colonnaFermo->addWidget(m_nonConfigurato);
    m_altroInvio = new NotaView(QStringLiteral("clock.fill"), Colore::secondary, fermo);
    m_altroInvio->setObjectName(QStringLiteral("altroInvio"));
    m_altroInvio->setTesto(tr("L'invio di questa campagna prosegue in secondo piano: segui l'avanzamento in Storico "
                              "invii. Potrai riprenderla quando sarà finito."));
    colonnaFermo->addWidget(m_altroInvio);
    m_comandi->addWidget(fermo);

    auto* inCorso = new QWidget(m_comandi);
    auto* colonnaCorsa = new QVBoxLayout(inCorso);
    colonnaCorsa->setContentsMargins(0, 0, 0, 0);
    m_statoInvio = new QLabel(inCorso);
    m_statoInvio->setObjectName(QStringLiteral("statoInvio"));
    m_progresso = new QProgressBar(inCorso);
    m_progresso->setRange(0, 1000);
    m_progresso->setTextVisible(false);
    auto* pulsantiCorsa = rigaSenzaMargini();
    auto* cruscotto = new QPushButton(Symbols::icona(QStringLiteral("gauge.with.dots.needle.50percent")),
                                      tr("Apri cruscotto"), inCorso);
    cruscotto->setObjectName(QStringLiteral("apriCruscotto"));
    connect(cruscotto, &QPushButton::clicked, this, &CampaignDetailView::apriCruscotto);
    m_pausa = new QPushButton(inCorso);
    m_pausa->setObjectName(QStringLiteral("pausa"));
    connect(m_pausa, &QPushButton::clicked, this, [this] { m_motore->setPaused(!m_motore->isPaused()); });
    m_interrompi = new QPushButton(tr("Interrompi"), inCorso);
    m_interrompi->setObjectName(QStringLiteral("interrompi"));
    m_interrompi->setStyleSheet(colore(Colore::red));
    connect(m_interrompi, &QPushButton::clicked, this, [this] { m_motore->cancel(); });
    pulsantiCorsa->addWidget(cruscotto);
    pulsantiCorsa->addWidget(m_pausa);
    pulsantiCorsa->addWidget(m_interrompi);
    pulsantiCorsa->addStretch(1);
    m_contatori = didascalia(inCorso);
    m_contatori->setObjectName(QStringLiteral("contatori"));
    colonnaCorsa->addWidget(m_statoInvio);
    colonnaCorsa->addWidget(m_progresso);
    colonnaCorsa->addLayout(pulsantiCorsa);
    colonnaCorsa->addWidget(m_contatori);
    m_comandi->addWidget(inCorso);
    return m_comandi;
}

QWidget* CampaignDetailView::creaRegistro() {
    m_registro = new SezioneModulo(tr("Registro"), this);
    m_righeRegistroVista = new QListWidget(m_registro);
    m_righeRegistroVista->setObjectName(QStringLiteral("registro"));
    m_righeRegistroVista->setFixedHeight(200);
    m_righeRegistroVista->setUniformItemSizes(true);
    m_righeRegistroVista->setSelectionMode(QAbstractItemView::NoSelection);
    m_registro->righe()->addRow(m_righeRegistroVista);
    m_registro->hide();
    return m_registro;
}

ProfiloAttivo CampaignDetailView::profilo() const {
    const SMTPConfig config = m_ambiente.settings.config();
    return {m_ambiente.settings.nomeProfiloAttivo(),
            config.fromEmail,
            config.host,
            config.delayBetweenMessages,
            config.dailyLimit,
            m_ambiente.settings.isConfigured()};
}

void CampaignDetailView::imposta(const Campaign& campagna, const QList<ContactList>& liste,
                                 const QList<MessageTemplate>& modelli, const QHash<RecordId, int>& validiPerLista) {
    m_campagna = campagna;
    m_liste = liste;
    m_modelli = modelli;
    if (!m_nome->hasFocus() && m_nome->text() != campagna.name)
        m_nome->setText(campagna.name);

    // The pickers show what is valid: a deleted list reads "Nessuna". Their entries are made again only when
    // they change, so that a refresh never closes a picker the user has open.
    QList<QPair<QString, RecordId>> vociListe{{tr("Nessuna"), 0}};
    for (const ContactList& voce : liste)
        vociListe.append(
            {voce.name + QStringLiteral(" — ") + QString::number(validiPerLista.value(voce.id)) + tr(" validi"),
             voce.id});
    QList<QPair<QString, RecordId>> vociModelli{{tr("Nessuno"), 0}};
    for (const MessageTemplate& voce : modelli)
        vociModelli.append({voce.name, voce.id});
    const std::optional<ContactList> lista = RunPlanning::listaValida(campagna, m_ambiente.store);
    const std::optional<MessageTemplate> modello = RunPlanning::modelloValido(campagna, m_ambiente.store);
    riempiScelta(m_lista, vociListe, lista ? lista->id : 0);
    riempiScelta(m_modello, vociModelli, modello ? modello->id : 0);

    const QSignalBlocker blocco(m_saltaInviati);
    m_saltaInviati->setChecked(campagna.skipDuplicates);
    aggiornaLetture();
}

void CampaignDetailView::aggiornaLetture() {
    const ProfiloAttivo attivo = profilo();
    // A run started before the user left the section goes on with an engine of its own: it holds the start
    // back as this screen's own run would.
    const bool altroInvio = !m_motore->isRunning() && SendEngine::campagnaInInvio(m_campagna.id);
    m_letture = CampaignReadings::leggi(m_campagna, m_ambiente.store, attivo, m_motore->isRunning() || altroInvio);

    m_bannerTitolo->parentWidget()->setVisible(m_letture.riferimentiRotti);
    if (attivo.fromEmail.isEmpty()) {
        m_mittente->setText(tr("da configurare nelle impostazioni"));
        m_mittente->setStyleSheet(colore(Colore::orange));
    } else {
        m_mittente->setText(attivo.fromEmail);
        m_mittente->setStyleSheet(colore(Colore::secondary));
    }

    const QList<RiquadroDato> riquadri = m_letture.riquadri();
    for (qsizetype i = 0; i < m_riquadri.size(); ++i)
        m_riquadri.at(i)->imposta(riquadri.at(i));
    const QStringList esclusi = m_letture.righeEsclusi();
    m_righeEsclusi->setText(esclusi.join(u'\n'));
    m_righeEsclusi->setVisible(!esclusi.isEmpty());
    const QString mancanti = m_letture.rigaCampiMancanti();
    m_campiMancanti->setTesto(mancanti);
    m_campiMancanti->setVisible(!mancanti.isEmpty());
    const QList<DatoTondo> dati = m_letture.datiTondi(attivo);
    for (qsizetype i = 0; i < m_dati.size(); ++i)
        m_dati.at(i)->imposta(dati.at(i));
    const QString quota = m_letture.rigaQuota(attivo);
    m_quota->setText(quota);
    m_quota->setStyleSheet(colore(m_letture.residuo == 0 ? Colore::orange : Colore::secondary));
    m_quota->setVisible(!quota.isEmpty());
    const QString attesa = m_letture.rigaAttesa();
    m_attesa->setText(attesa);
    m_attesa->setVisible(!attesa.isEmpty());

    m_anteprima->setEnabled(m_letture.modelloValido);
    m_avvia->setText(m_letture.etichettaAvvio);
    m_avvia->setEnabled(m_letture.pronta);
    m_nonConfigurato->setVisible(!attivo.configurato);
    m_altroInvio->setVisible(altroInvio);
    aggiornaMotore();
}

void CampaignDetailView::aggiornaMotore() {
    const SendEngine& motore = *m_motore;
    m_comandi->setCurrentIndex(motore.isRunning() ? 1 : 0);
    m_ultimoErrore->setText(motore.lastError().value_or(QString()));
    m_ultimoErrore->setVisible(motore.lastError().has_value());
    // The button waits for the run to end; the readings follow with the store's next change.
    m_avvia->setEnabled(m_letture.pronta && !motore.isRunning());
    if (motore.isRunning()) {
        m_statoInvio->setText(tr("Invio in corso: ") + QString::number(motore.processed()) + u'/' +
                              QString::number(motore.total()) + QStringLiteral(" — ") + motore.currentRecipient());
        m_progresso->setValue(int(motore.progress() * 1000));
        m_pausa->setText(motore.isPaused() ? tr("Riprendi") : tr("Pausa"));
        m_contatori->setText(QString::number(motore.sent()) + tr(" inviate · ") + QString::number(motore.failed()) +
                             tr(" errori · ") + QString::number(motore.skipped()) + tr(" saltate"));
    }
    const QStringList& righe = motore.activityLog();
    m_registro->setVisible(motore.isRunning() || !righe.isEmpty());
    if (righe.size() != m_righeRegistroVista->count() ||
        (!righe.isEmpty() && m_righeRegistroVista->item(m_righeRegistroVista->count() - 1)->text() != righe.last())) {
        m_righeRegistroVista->clear();
        m_righeRegistroVista->addItems(righe);
    }
    if (righe.size() != m_righeRegistro) {
        m_righeRegistro = righe.size();
        m_righeRegistroVista->scrollToBottom();
    }
}

void CampaignDetailView::salva() {
    // A failed save leaves the change in memory; the next save takes it along.
    m_ambiente.store.update(m_campagna);
    m_ambiente.store.save();
}

void CampaignDetailView::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    if (!m_apparsa) {
        m_apparsa = true;
        // The password leaves the keychain only when a screen that can send is shown.
        m_ambiente.settings.caricaPasswordSeServe();
        aggiornaLetture();
    }
    controllaDominio();
}

void CampaignDetailView::controllaDominio() {
    const ProfiloAttivo attivo = profilo();
    const QString chiave = attivo.fromEmail + attivo.host;
    if (chiave == m_dominioControllato && m_esitoDNS)
        return;
    m_dominioControllato = chiave;
    const QString dominio = CampaignReadings::dominioMittente(attivo.fromEmail);
    if (dominio.isEmpty())
        return;
    QCoro::connect(DNSCheck::verifica(dominio, attivo.host), this, [this, chiave](const DNSCheck::Risultato& esito) {
        if (chiave != m_dominioControllato)
            return; // the profile changed meanwhile; its own check follows
        m_esitoDNS = esito;
        mostraAvvisoDominio();
    });
}

void CampaignDetailView::mostraAvvisoDominio() {
    const auto avviso = CampaignReadings::avvisoDominio(m_esitoDNS);
    m_avvisoDominio->setVisible(avviso.has_value());
    if (!avviso)
        return;
    m_avvisoTitolo->setText(avviso->first);
    m_avvisoTesto->setText(avviso->second);
}

void CampaignDetailView::chiediAvvio() {
    aggiornaLetture();
    if (!m_letture.pronta)
        return;
    const int risposta =
        Dialoghi::scelta(this, m_letture.titoloConferma(), m_letture.testoConferma(profilo(), m_esitoDNS),
                         {tr("Avvia invio"), tr("Annulla")});
    if (risposta != 0)
        return;
    // The run holds on to its engine: leaving the section drops the screen, not the run. It starts before
    // the dashboard opens, so the dashboard's first picture is of a run already under way.
    std::shared_ptr<SendEngine> motore = m_motore;
    QCoro::connect(motore->run(m_campagna, m_ambiente.settings, m_ambiente.store), motore.get(), [motore] {});
    apriCruscotto();
}

void CampaignDetailView::apriAnteprima() {
    const std::optional<MessageTemplate> modello = RunPlanning::modelloValido(m_campagna, m_ambiente.store);
    if (!modello)
        return;
    auto* foglio = new PreviewSheet(*modello, RunPlanning::listaValida(m_campagna, m_ambiente.store),
                                    m_ambiente.settings, m_ambiente.store, this);
    foglio->setAttribute(Qt::WA_DeleteOnClose);
    foglio->open();
}

void CampaignDetailView::apriCruscotto() {
    if (m_cruscotto)
        return;
    m_cruscotto = new SendDashboardView(m_motore, this);
    m_cruscotto->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_cruscotto, &QDialog::finished, this, [this] { m_cruscotto = nullptr; });
    m_cruscotto->open();
}
