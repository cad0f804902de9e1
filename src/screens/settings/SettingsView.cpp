#include "screens/settings/SettingsView.h"

#include "engine/SendEngine.h"
#include "screens/dashboard/SendDashboardView.h"
#include "screens/domains/DominioCheckView.h"
#include "screens/domains/RimbalziView.h"
#include "screens/domains/VerificaDominiView.h"
#include "screens/settings/SettingsModel.h"
#include "screens/settings/SezioneDatiEsempio.h"
#include "settings/SettingsStore.h"
#include "ui/Modulo.h"
#include "ui/Riquadri.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoro/QCoroTask>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

namespace {

void scrivi(QLineEdit* campo, const QString& valore, bool forza) {
    if ((campo->hasFocus() && !forza) || campo->text() == valore)
        return;
    const QSignalBlocker blocco(campo);
    campo->setText(valore);
}

void scrivi(QLineEdit* campo, int valore, bool forza) {
    if ((campo->hasFocus() && !forza) || SettingsModel::intero(campo->text()) == valore)
        return;
    const QSignalBlocker blocco(campo);
    campo->setText(QString::number(valore));
}

void scrivi(QPlainTextEdit* campo, const QString& valore, bool forza) {
    if ((campo->hasFocus() && !forza) || campo->toPlainText() == valore)
        return;
    const QSignalBlocker blocco(campo);
    campo->setPlainText(valore);
}

// A row of a section shown or hidden as a whole, so that a hidden note leaves no gap behind.
void mostraRiga(QWidget* riga, bool visibile) {
    auto* righe = qobject_cast<QFormLayout*>(riga->parentWidget()->layout());
    if (!righe || riga->isVisibleTo(riga->parentWidget()) == visibile)
        return;
    righe->setRowVisible(riga, visibile);
    // The form keeps the height it had for the row's wrapped text until told otherwise.
    righe->invalidate();
    riga->parentWidget()->updateGeometry();
}

void scrivi(QCheckBox* interruttore, bool valore, bool) {
    const QSignalBlocker blocco(interruttore);
    interruttore->setChecked(valore);
}

} // namespace

SettingsView::SettingsView(Ambiente ambiente, QWidget* genitore)
    : QWidget(genitore), m_ambiente(ambiente), m_motoreProva(std::make_shared<SendEngine>()),
      m_scorrimento(new QScrollArea(this)) {
    setObjectName(QStringLiteral("schermata-impostazioni"));
    auto* esterno = new QVBoxLayout(this);
    esterno->setContentsMargins(0, 0, 0, 0);
    m_scorrimento->setObjectName(QStringLiteral("scorrimentoImpostazioni"));
    m_scorrimento->setWidgetResizable(true);
    m_scorrimento->setFrameShape(QFrame::NoFrame);
    // Tab goes to the fields, which the area keeps in sight; the area itself is no stop.
    m_scorrimento->setFocusPolicy(Qt::NoFocus);
    m_scorrimento->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    esterno->addWidget(m_scorrimento);

    auto* contenuto = new QWidget;
    contenuto->setObjectName(QStringLiteral("moduloImpostazioni"));
    auto* centro = new QHBoxLayout(contenuto);
    centro->setContentsMargins(20, 16, 20, 24);
    auto* modulo = new QWidget(contenuto);
    modulo->setMaximumWidth(720);
    auto* colonna = new QVBoxLayout(modulo);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(18);
    centro->addStretch(0);
    centro->addWidget(modulo, 1);
    centro->addStretch(0);

    colonna->addWidget(creaServizio());
    colonna->addWidget(creaServer());
    colonna->addWidget(creaMittente());

    auto* autenticazione = new SezioneModulo(tr("Autenticazione del dominio"), modulo);
    const SMTPConfig config = m_ambiente.settings.config();
    m_dominio = new DominioCheckView(SettingsModel::dominioMittente(config.fromEmail), config.host, autenticazione);
    autenticazione->righe()->addRow(m_dominio);
    colonna->addWidget(autenticazione);

    colonna->addWidget(creaPiePagina());
    colonna->addWidget(creaRitmo());

    auto* controllo = new SezioneModulo(tr("Controllo dei domini"), modulo);
    m_verificaDominiVista = new VerificaDominiView(m_ambiente.store, controllo);
    controllo->righe()->addRow(m_verificaDominiVista);
    colonna->addWidget(controllo);

    m_sezioneBrevo = new SezioneModulo(tr("Rimbalzi differiti (Brevo)"), modulo);
    m_sezioneBrevo->setObjectName(QStringLiteral("sezioneBrevo"));
    colonna->addWidget(m_sezioneBrevo);

    colonna->addWidget(new SezioneDatiEsempio(m_ambiente.store, modulo));
    colonna->addWidget(creaProva());
    colonna->addWidget(creaConnessione());
    colonna->addStretch(1);
    m_scorrimento->setWidget(contenuto);

    connect(&m_ambiente.settings, &SettingsStore::changed, this, [this] { aggiorna(); });
    connect(m_motoreProva.get(), &SendEngine::changed, this, &SettingsView::aggiornaProva);
    aggiorna();
    aggiornaProva();
}

SettingsView::~SettingsView() = default;

void SettingsView::showEvent(QShowEvent* evento) {
    QWidget::showEvent(evento);
    if (m_giaMostrata)
        return;
    m_giaMostrata = true;
    // The secret store is asked only once a screen that needs the password is shown.
    m_ambiente.settings.caricaPasswordSeServe();
    aggiorna();
}

void SettingsView::scriviConfig(const std::function<void(SMTPConfig&)>& cambia) {
    SMTPConfig config = m_ambiente.settings.config();
    cambia(config);
    if (config != m_ambiente.settings.config())
        m_ambiente.settings.setConfig(config);
}

void SettingsView::aggiorna(bool forza) {
    SettingsStore& settings = m_ambiente.settings;
    const SMTPConfig config = settings.config();
    const Preset preset = SettingsModel::presetCorrente(config.host);
    aggiornaProfili(forza);

    {
        const QSignalBlocker blocco(m_provider);
        m_provider->setCurrentIndex(int(tuttiIPreset().indexOf(preset)));
    }
    const QString suggerimento = SettingsModel::suggerimentoProvider(preset);
    ::aggiorna(m_suggerimento, suggerimento);
    mostraRiga(m_suggerimento, !suggerimento.isEmpty());
    scrivi(m_host, config.host, forza);
    scrivi(m_porta, config.port, forza);
    scrivi(m_tls, config.useTLS, forza);
    scrivi(m_nomeUtente, config.username, forza);
    scrivi(m_password, settings.password(), forza);

    scrivi(m_nomeMittente, config.fromName, forza);
    scrivi(m_indirizzoMittente, config.fromEmail, forza);
    scrivi(m_rispondiA, config.replyTo, forza);
    m_avvisoMittente->setTesto(SettingsModel::avvisoMittente(config.fromEmail));
    mostraRiga(m_avvisoMittente, !m_avvisoMittente->testo().isEmpty());
    m_dominio->imposta(SettingsModel::dominioMittente(config.fromEmail), config.host);

    scrivi(m_piePagina, config.piePaginaAttivo, forza);
    for (QWidget* campo : {static_cast<QWidget*>(m_motivazione), static_cast<QWidget*>(m_disiscrizione),
                           static_cast<QWidget*>(m_mittentePostale), static_cast<QWidget*>(m_notaPiePagina)})
        m_righePiePagina->setRowVisible(campo, config.piePaginaAttivo);
    scrivi(m_motivazione, config.motivazioneContatto, forza);
    scrivi(m_disiscrizione, config.emailDisiscrizione, forza);
    m_disiscrizione->setPlaceholderText(SettingsModel::promptDisiscrizione(config));
    scrivi(m_mittentePostale, config.mittentePostale, forza);
    scrivi(m_verificaDomini, config.verificaDomini, forza);
    scrivi(m_escludiRifiutati, config.escludiRifiutati, forza);

    {
        const QSignalBlocker blocco(m_pausa);
        m_pausa->setValue(qRound(config.delayBetweenMessages * 2));
    }
    ::aggiorna(m_valorePausa, SettingsModel::pausa(config.delayBetweenMessages));
    scrivi(m_limite, config.dailyLimit, forza);
    ::aggiorna(m_notaRitmo, SettingsModel::notaRitmo(preset));

    aggiornaBrevo(preset == Preset::brevo);
    m_prova->setAbilitato(!config.host.isEmpty());
}

void SettingsView::aggiornaProfili(bool forza) {
    const SettingsStore& settings = m_ambiente.settings;
    QStringList nomi;
    for (const ProfiloInvio& profilo : settings.profili())
        nomi.append(profilo.nome);
    const QSignalBlocker blocco(m_profilo);
    bool uguali = m_profilo->count() == nomi.size();
    for (int i = 0; uguali && i < nomi.size(); ++i)
        uguali = m_profilo->itemText(i) == nomi[i];
    if (!uguali) {
        m_profilo->clear();
        m_profilo->addItems(nomi);
    }
    m_profilo->setCurrentIndex(settings.indiceAttivo());
    scrivi(m_nomeProfilo, settings.nomeProfiloAttivo(), forza);
    m_elimina->setEnabled(settings.profili().size() >= 2);
}

void SettingsView::aggiornaBrevo(bool brevo) {
    // The panel exists only while the host is Brevo's relay, and reads its key when it appears.
    m_sezioneBrevo->setVisible(brevo);
    if (brevo && !m_rimbalzi) {
        m_rimbalzi = new RimbalziView(m_ambiente.store, m_sezioneBrevo);
        m_sezioneBrevo->righe()->addRow(m_rimbalzi);
    } else if (!brevo && m_rimbalzi) {
        m_sezioneBrevo->righe()->removeRow(m_rimbalzi);
        m_rimbalzi = nullptr;
    }
}

void SettingsView::aggiornaProva() {
    m_simula->setEnabled(!m_motoreProva->isRunning());
    m_prova->setInAttesa(m_provaInCorso);
    if (m_esitoProva && m_provaRiuscita)
        m_esitoProvaVista->setAspetto(QStringLiteral("checkmark.circle.fill"), Colore::green);
    else
        m_esitoProvaVista->setAspetto(QStringLiteral("xmark.octagon.fill"), Colore::red);
    m_esitoProvaVista->setTesto(m_esitoProva.value_or(QString()));
    mostraRiga(m_esitoProvaVista, m_esitoProva.has_value());
}

void SettingsView::provaConnessione() {
    if (m_provaInCorso)
        return;
    m_provaInCorso = true;
    m_esitoProva.reset();
    aggiornaProva();
    // The test runs on a copy: the user may go on editing meanwhile.
    QCoro::connect(SettingsModel::provaConnessione(m_ambiente.settings.config(), m_ambiente.settings.password()), this,
                   [this](const SettingsModel::EsitoProva& esito) {
                       m_provaRiuscita = esito.riuscita;
                       m_esitoProva = esito.testo;
                       m_provaInCorso = false;
                       aggiornaProva();
                   });
}

void SettingsView::simulaSpedizione() {
    if (m_motoreProva->isRunning())
        return;
    m_mostraCruscottoProva = true;
    if (!m_cruscotto) {
        m_cruscotto = new SendDashboardView(m_motoreProva, this);
        m_cruscotto->setAttribute(Qt::WA_DeleteOnClose);
        connect(m_cruscotto, &QDialog::finished, this, [this] {
            m_mostraCruscottoProva = false;
            m_cruscotto = nullptr;
        });
        m_cruscotto->open();
    }
    m_motoreProva->simula(m_destinatariSimulazione, m_ritmoSimulazione);
}

void SettingsView::impostaSimulazione(int destinatari, double ritmo) {
    m_destinatariSimulazione = destinatari;
    m_ritmoSimulazione = ritmo;
}
