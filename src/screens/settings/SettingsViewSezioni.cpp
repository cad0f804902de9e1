// The sections of the settings form, each built once; SettingsView::aggiorna fills them.
#include "engine/SendEngine.h"
#include "screens/settings/SettingsModel.h"
#include "screens/settings/SettingsView.h"
#include "settings/SettingsStore.h"
#include "ui/Modulo.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QSlider>

namespace {

// Room for a sign and more digits than any port or limit, so that a port out of range reaches the session,
// which refuses it with its own text.
QValidator* validatoreIntero(QObject* genitore) {
    return new QRegularExpressionValidator(QRegularExpression(QStringLiteral("-?[0-9]{0,9}")), genitore);
}

QPlainTextEdit* areaDiTesto(const char* nome, QWidget* genitore) {
    auto* area = new QPlainTextEdit(genitore);
    area->setObjectName(QLatin1String(nome));
    area->setTabChangesFocus(true);
    const int riga = area->fontMetrics().lineSpacing();
    area->setFixedHeight(riga * 3 + 14);
    return area;
}

} // namespace

QLineEdit* SettingsView::campo(QFormLayout* righe, const QString& etichetta, const char* nome) {
    auto* campo = new QLineEdit(righe->parentWidget());
    campo->setObjectName(QLatin1String(nome));
    righe->addRow(etichetta, campo);
    // A field left after typing shows again what the store holds (a change from the other window).
    connect(campo, &QLineEdit::editingFinished, this, [this] {
        QMetaObject::invokeMethod(
            this, [this] { aggiorna(); }, Qt::QueuedConnection);
    });
    return campo;
}

QCheckBox* SettingsView::interruttore(QFormLayout* righe, const QString& testo, const char* nome) {
    auto* scelta = new QCheckBox(testo, righe->parentWidget());
    scelta->setObjectName(QLatin1String(nome));
    righe->addRow(scelta);
    return scelta;
}

SezioneModulo* SettingsView::creaServizio() {
    auto* sezione = new SezioneModulo(tr("Servizio di invio"), this);
    QFormLayout* righe = sezione->righe();
    m_profilo = new QComboBox(sezione);
    m_profilo->setObjectName(QStringLiteral("profilo"));
    m_profilo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_profilo->setMinimumContentsLength(12);
    connect(m_profilo, &QComboBox::activated, this, [this](int indice) {
        m_ambiente.settings.selezionaProfilo(indice);
        aggiorna(true);
    });
    m_aggiungi = new QPushButton(Symbols::icona(QStringLiteral("plus")), QString(), sezione);
    m_aggiungi->setObjectName(QStringLiteral("aggiungiProfilo"));
    m_aggiungi->setToolTip(tr("Aggiungi un altro servizio di invio"));
    connect(m_aggiungi, &QPushButton::clicked, this, [this] {
        m_ambiente.settings.aggiungiProfilo(tr("Nuovo profilo"), Preset::personalizzato);
        aggiorna(true);
    });
    m_elimina = new QPushButton(Symbols::icona(QStringLiteral("minus")), QString(), sezione);
    m_elimina->setObjectName(QStringLiteral("eliminaProfilo"));
    m_elimina->setToolTip(tr("Elimina questo profilo"));
    connect(m_elimina, &QPushButton::clicked, this, [this] {
        m_ambiente.settings.eliminaProfiloAttivo();
        aggiorna(true);
    });
    auto* scelta = new QHBoxLayout;
    scelta->addWidget(m_profilo, 1);
    scelta->addWidget(m_aggiungi);
    scelta->addWidget(m_elimina);
    righe->addRow(tr("In uso"), scelta);
    righe->addRow(creaNota(tr("Ogni profilo ha server, credenziali e mittente propri: si passa dall'uno all'altro "
                              "senza riconfigurare nulla. Le campagne usano sempre il profilo selezionato qui."),
                           sezione));
    m_nomeProfilo = campo(righe, tr("Nome del profilo"), "nomeProfilo");
    connect(m_nomeProfilo, &QLineEdit::textEdited, this,
            [this](const QString& nome) { m_ambiente.settings.setNomeProfiloAttivo(nome); });
    return sezione;
}

SezioneModulo* SettingsView::creaServer() {
    auto* sezione = new SezioneModulo(tr("Server di posta in uscita"), this);
    QFormLayout* righe = sezione->righe();
    m_provider = new QComboBox(sezione);
    m_provider->setObjectName(QStringLiteral("provider"));
    for (Preset preset : tuttiIPreset())
        m_provider->addItem(SettingsModel::etichettaProvider(preset));
    connect(m_provider, &QComboBox::activated, this, [this](int indice) {
        SettingsModel::applica(m_ambiente.settings, tuttiIPreset().at(indice));
        // Personalizzato changes nothing, and the picker goes back to what the host says.
        aggiorna(true);
    });
    righe->addRow(tr("Provider"), m_provider);
    m_suggerimento = creaNota(QString(), sezione);
    m_suggerimento->setObjectName(QStringLiteral("suggerimentoProvider"));
    righe->addRow(m_suggerimento);
    m_host = campo(righe, tr("Host"), "host");
    connect(m_host, &QLineEdit::textEdited, this,
            [this](const QString& host) { SettingsModel::cambiaHost(m_ambiente.settings, host); });
    m_porta = campo(righe, tr("Porta"), "porta");
    m_porta->setValidator(validatoreIntero(m_porta));
    connect(m_porta, &QLineEdit::textEdited, this, [this](const QString& testo) {
        if (const auto porta = SettingsModel::intero(testo))
            scriviConfig([&](SMTPConfig& config) { config.port = *porta; });
    });
    m_tls = interruttore(righe, tr("Connessione SSL/TLS diretta (porta 465)"), "tls");
    connect(m_tls, &QCheckBox::toggled, this,
            [this](bool acceso) { scriviConfig([&](SMTPConfig& config) { config.useTLS = acceso; }); });
    m_nomeUtente = campo(righe, tr("Nome utente"), "nomeUtente");
    connect(m_nomeUtente, &QLineEdit::textEdited, this,
            [this](const QString& nome) { SettingsModel::cambiaNomeUtente(m_ambiente.settings, nome); });
    connect(m_nomeUtente, &QLineEdit::editingFinished, this,
            [this] { SettingsModel::riempiMittenteDalNomeUtente(m_ambiente.settings); });
    m_password = campo(righe, tr("Password"), "password");
    m_password->setEchoMode(QLineEdit::Password);
    connect(m_password, &QLineEdit::textEdited, this,
            [this](const QString& password) { m_ambiente.settings.setPassword(password); });
    righe->addRow(
        creaNota(tr("La password è salvata nel portachiavi di sistema, non nelle impostazioni dell'app."), sezione));
    return sezione;
}

SezioneModulo* SettingsView::creaMittente() {
    auto* sezione = new SezioneModulo(tr("Mittente"), this);
    QFormLayout* righe = sezione->righe();
    m_nomeMittente = campo(righe, tr("Nome visualizzato"), "nomeMittente");
    connect(m_nomeMittente, &QLineEdit::textEdited, this,
            [this](const QString& testo) { scriviConfig([&](SMTPConfig& config) { config.fromName = testo; }); });
    m_indirizzoMittente = campo(righe, tr("Indirizzo mittente"), "indirizzoMittente");
    connect(m_indirizzoMittente, &QLineEdit::textEdited, this,
            [this](const QString& testo) { scriviConfig([&](SMTPConfig& config) { config.fromEmail = testo; }); });
    m_rispondiA = campo(righe, tr("Rispondi a (facoltativo)"), "rispondiA");
    connect(m_rispondiA, &QLineEdit::textEdited, this,
            [this](const QString& testo) { scriviConfig([&](SMTPConfig& config) { config.replyTo = testo; }); });
    m_avvisoMittente = new NotaView(QStringLiteral("exclamationmark.triangle"), Colore::orange, sezione);
    m_avvisoMittente->setObjectName(QStringLiteral("avvisoMittente"));
    righe->addRow(m_avvisoMittente);
    return sezione;
}

SezioneModulo* SettingsView::creaPiePagina() {
    auto* sezione = new SezioneModulo(tr("Disiscrizione e piè di pagina"), this);
    QFormLayout* righe = sezione->righe();
    m_righePiePagina = righe;
    m_piePagina = interruttore(righe, tr("Aggiungi il piè di pagina a ogni messaggio"), "piePagina");
    connect(m_piePagina, &QCheckBox::toggled, this,
            [this](bool acceso) { scriviConfig([&](SMTPConfig& config) { config.piePaginaAttivo = acceso; }); });
    m_motivazione = areaDiTesto("motivazione", sezione);
    righe->addRow(tr("Perché ricevono il messaggio"), m_motivazione);
    connect(m_motivazione, &QPlainTextEdit::textChanged, this, [this] {
        const QString testo = m_motivazione->toPlainText();
        scriviConfig([&](SMTPConfig& config) { config.motivazioneContatto = testo; });
    });
    m_disiscrizione = campo(righe, tr("Indirizzo per le cancellazioni"), "disiscrizione");
    connect(m_disiscrizione, &QLineEdit::textEdited, this, [this](const QString& testo) {
        scriviConfig([&](SMTPConfig& config) { config.emailDisiscrizione = testo; });
    });
    m_mittentePostale = areaDiTesto("mittentePostale", sezione);
    m_mittentePostale->setPlaceholderText(tr("Es. Nembrosa Software House — Via …, Città (IT) — P.IVA …"));
    righe->addRow(tr("Ragione sociale e recapito"), m_mittentePostale);
    connect(m_mittentePostale, &QPlainTextEdit::textChanged, this, [this] {
        const QString testo = m_mittentePostale->toPlainText();
        scriviConfig([&](SMTPConfig& config) { config.mittentePostale = testo; });
    });
    m_notaPiePagina = creaNota(tr("In fondo a ogni email compare la nota con il motivo del contatto e il "
                                  "collegamento per cancellarsi. È anche la prima cosa che i filtri antispam "
                                  "cercano in un invio massivo."),
                               sezione);
    m_notaPiePagina->setObjectName(QStringLiteral("notaPiePagina"));
    righe->addRow(m_notaPiePagina);
    m_verificaDomini = interruttore(righe, tr("Controlla i domini prima di inviare"), "verificaDominiScelta");
    connect(m_verificaDomini, &QCheckBox::toggled, this,
            [this](bool acceso) { scriviConfig([&](SMTPConfig& config) { config.verificaDomini = acceso; }); });
    righe->addRow(creaNota(tr("Prima di partire, Brezzario verifica nel DNS che il dominio di ogni destinatario "
                              "esista e possa ricevere posta. Gli indirizzi di aziende chiuse o domini scaduti "
                              "vengono scartati subito, senza far salire il tasso di rimbalzo del servizio."),
                           sezione));
    m_escludiRifiutati =
        interruttore(righe, tr("Aggiungi agli esclusi gli indirizzi rifiutati definitivamente"), "escludiRifiutati");
    connect(m_escludiRifiutati, &QCheckBox::toggled, this,
            [this](bool acceso) { scriviConfig([&](SMTPConfig& config) { config.escludiRifiutati = acceso; }); });
    righe->addRow(creaNota(tr("Quando il server risponde che la casella non esiste o è chiusa (errori 5xx), "
                              "l'indirizzo viene messo negli esclusi e non sarà più contattato: i rimbalzi ripetuti "
                              "sono uno dei motivi principali di perdita di reputazione."),
                           sezione));
    return sezione;
}

SezioneModulo* SettingsView::creaRitmo() {
    auto* sezione = new SezioneModulo(tr("Ritmo di invio"), this);
    QFormLayout* righe = sezione->righe();
    // Half seconds: 0 to 30 s in steps of 0.5.
    m_pausa = new QSlider(Qt::Horizontal, sezione);
    m_pausa->setObjectName(QStringLiteral("pausa"));
    m_pausa->setRange(0, 60);
    m_pausa->setSingleStep(1);
    m_pausa->setPageStep(4);
    connect(m_pausa, &QSlider::valueChanged, this, [this](int mezzi) {
        scriviConfig([&](SMTPConfig& config) { config.delayBetweenMessages = mezzi / 2.0; });
    });
    m_valorePausa = new QLabel(sezione);
    m_valorePausa->setObjectName(QStringLiteral("valorePausa"));
    m_valorePausa->setMinimumWidth(m_valorePausa->fontMetrics().horizontalAdvance(QStringLiteral("30.0 s ")));
    m_valorePausa->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* pausa = new QHBoxLayout;
    pausa->addWidget(m_pausa, 1);
    pausa->addWidget(m_valorePausa);
    righe->addRow(tr("Pausa tra i messaggi"), pausa);
    m_limite = campo(righe, tr("Massimo messaggi al giorno"), "limite");
    m_limite->setValidator(validatoreIntero(m_limite));
    connect(m_limite, &QLineEdit::textEdited, this, [this](const QString& testo) {
        if (const auto limite = SettingsModel::intero(testo))
            scriviConfig([&](SMTPConfig& config) { config.dailyLimit = *limite; });
    });
    m_notaRitmo = creaNota(QString(), sezione);
    m_notaRitmo->setObjectName(QStringLiteral("notaRitmo"));
    righe->addRow(m_notaRitmo);
    return sezione;
}

SezioneModulo* SettingsView::creaProva() {
    auto* sezione = new SezioneModulo(tr("Prova"), this);
    m_simula = new QPushButton(Symbols::icona(QStringLiteral("gauge.with.dots.needle.50percent")),
                               tr("Simula una spedizione"), sezione);
    m_simula->setObjectName(QStringLiteral("simula"));
    connect(m_simula, &QPushButton::clicked, this, &SettingsView::simulaSpedizione);
    sezione->aggiungiASinistra(m_simula);
    sezione->righe()->addRow(creaNota(tr("Apre il cruscotto con una spedizione finta di 60 destinatari: nessun "
                                         "messaggio viene spedito e l'archivio non viene toccato. Serve a vedere "
                                         "come si comporta l'invio prima di lanciare una campagna vera."),
                                      sezione));
    return sezione;
}

SezioneModulo* SettingsView::creaConnessione() {
    auto* sezione = new SezioneModulo(QString(), this);
    m_prova = new PulsanteAttesa(QStringLiteral("bolt.horizontal"), tr("Prova connessione"), sezione);
    m_prova->setObjectName(QStringLiteral("provaConnessione"));
    connect(m_prova, &QPushButton::clicked, this, &SettingsView::provaConnessione);
    sezione->aggiungiASinistra(m_prova);
    m_esitoProvaVista = new NotaView(QStringLiteral("xmark.octagon.fill"), Colore::red, sezione);
    m_esitoProvaVista->setObjectName(QStringLiteral("esitoProva"));
    m_esitoProvaVista->setTesto(QString());
    sezione->righe()->addRow(m_esitoProvaVista);
    return sezione;
}
