#include "screens/templates/PreviewSheet.h"

#include "engine/SendEngine.h"
#include "screens/templates/HTMLPreview.h"
#include "screens/templates/PreviewModel.h"
#include "screens/templates/Stile.h"
#include "settings/SettingsStore.h"
#include "ui/OrdineTab.h"
#include "ui/Palette.h"
#include "ui/Rinfresco.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QStringListModel>
#include <QVBoxLayout>

#include <QCoro/QCoroTask>

namespace {

// The engine travels with the task, so a sheet closed mid-send leaves nothing dangling.
QCoro::Task<QString> invia(std::shared_ptr<SendEngine> motore, MessageTemplate modello, RowValues valori, QString a,
                           SettingsStore& settings, Store& store) {
    co_return co_await motore->sendTest(std::move(modello), std::move(valori), std::move(a), settings, store);
}

QLabel* titoletto(const QString& testo, QWidget* genitore) {
    auto* etichetta = new QLabel(testo, genitore);
    QFont carattere = etichetta->font();
    carattere.setWeight(QFont::DemiBold);
    etichetta->setFont(carattere);
    return etichetta;
}

} // namespace

PreviewSheet::PreviewSheet(MessageTemplate modello, std::optional<ContactList> lista, SettingsStore& settings,
                           Store& store, QWidget* genitore)
    : QDialog(genitore), m_modello(std::move(modello)), m_lista(std::move(lista)), m_settings(settings), m_store(store),
      m_motore(std::make_shared<SendEngine>()) {
    setObjectName(QStringLiteral("previewSheet"));
    setWindowTitle(tr("Anteprima"));
    setMinimumSize(760, 760);
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(20, 16, 20, 16);
    colonna->setSpacing(10);
    colonna->addWidget(creaIntestazione());

    m_senzaRighe = new NotaView(QStringLiteral("info.circle"), Colore::secondary, this);
    m_senzaRighe->setObjectName(QStringLiteral("senzaRighe"));
    m_senzaRighe->setTesto(tr("La lista scelta non ha righe valide: l'anteprima mostra i campi vuoti."));
    colonna->addWidget(m_senzaRighe);

    m_sceltaRiga = new QWidget(this);
    auto* rigaScelta = new QHBoxLayout(m_sceltaRiga);
    rigaScelta->setContentsMargins(0, 0, 0, 0);
    rigaScelta->addWidget(new QLabel(tr("Riga di esempio"), m_sceltaRiga));
    m_righeCombo = new QComboBox(m_sceltaRiga);
    m_righeCombo->setObjectName(QStringLiteral("rigaDiEsempio"));
    m_indirizzi = new QStringListModel(this);
    m_righeCombo->setModel(m_indirizzi);
    // Lists can be long: one row height for all keeps the popup cheap.
    if (auto* vista = qobject_cast<QListView*>(m_righeCombo->view()))
        vista->setUniformItemSizes(true);
    m_righeCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_righeCombo->setMinimumContentsLength(32);
    connect(m_righeCombo, &QComboBox::activated, this, &PreviewSheet::setIndiceRiga);
    rigaScelta->addWidget(m_righeCombo, 1);
    colonna->addWidget(m_sceltaRiga);

    auto* rigaOggetto = new QHBoxLayout;
    rigaOggetto->addWidget(titoletto(tr("Oggetto:"), this));
    m_oggetto = new QLabel(this);
    m_oggetto->setObjectName(QStringLiteral("oggettoReso"));
    m_oggetto->setTextFormat(Qt::PlainText);
    m_oggetto->setTextInteractionFlags(Qt::TextSelectableByMouse);
    rigaOggetto->addWidget(m_oggetto, 1);
    colonna->addLayout(rigaOggetto);

    m_corpo = new QStackedWidget(this);
    m_anteprima = new HTMLPreview(m_corpo);
    m_testoSorgente = new QPlainTextEdit(m_corpo);
    m_testoSorgente->setObjectName(QStringLiteral("sorgenteHTML"));
    m_testoSorgente->setReadOnly(true);
    m_testoSorgente->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_corpo->addWidget(m_anteprima);
    m_corpo->addWidget(m_testoSorgente);
    colonna->addWidget(m_corpo, 1);
    OrdineTab::subitoDopo(m_righeCombo, m_anteprima);

    colonna->addWidget(creaProva());

    m_rinfresco = new Rinfresco(
        m_store, Store::ContactRows | Store::ContactLists | Store::MessageTemplates,
        [this](Store::Entities cosa) {
            // The last keystrokes of the editor may land after the sheet opened.
            if (cosa & Store::MessageTemplates)
                if (const auto modello = m_store.find<MessageTemplate>(m_modello.id))
                    m_modello = *modello;
            if (cosa & (Store::ContactRows | Store::ContactLists))
                rileggiRighe();
            aggiorna();
        },
        this);
    connect(&m_settings, &SettingsStore::changed, this, &PreviewSheet::aggiorna);
    rileggiRighe();
    aggiorna();
}

PreviewSheet::~PreviewSheet() = default;

QWidget* PreviewSheet::creaIntestazione() {
    auto* testa = new QWidget(this);
    auto* riga = new QHBoxLayout(testa);
    riga->setContentsMargins(0, 0, 0, 0);
    auto* titolo = new QLabel(tr("Anteprima"), testa);
    titolo->setFont(carattereScalato(titolo->font(), 1.4, QFont::DemiBold));
    riga->addWidget(titolo);
    riga->addStretch(1);
    m_sorgente = new QCheckBox(tr("Sorgente HTML"), testa);
    m_sorgente->setObjectName(QStringLiteral("sorgente"));
    connect(m_sorgente, &QCheckBox::toggled, this, &PreviewSheet::aggiorna);
    riga->addWidget(m_sorgente);
    auto* chiudi = new QPushButton(tr("Chiudi"), testa);
    chiudi->setObjectName(QStringLiteral("chiudi"));
    chiudi->setAutoDefault(false);
    connect(chiudi, &QPushButton::clicked, this, &QDialog::accept);
    riga->addWidget(chiudi);
    return testa;
}

QWidget* PreviewSheet::creaProva() {
    auto* prova = new QWidget(this);
    auto* colonna = new QVBoxLayout(prova);
    colonna->setContentsMargins(0, 4, 0, 0);
    auto* riga = new QHBoxLayout;
    m_indirizzo = new QLineEdit(prova);
    m_indirizzo->setObjectName(QStringLiteral("indirizzoProva"));
    m_indirizzo->setPlaceholderText(tr("Indirizzo per l'invio di prova"));
    connect(m_indirizzo, &QLineEdit::textChanged, this, &PreviewSheet::aggiornaProva);
    connect(m_indirizzo, &QLineEdit::returnPressed, this, &PreviewSheet::inviaProva);
    riga->addWidget(m_indirizzo, 1);
    m_invia = new QPushButton(Symbols::icona(QStringLiteral("paperplane")), tr("Invia prova"), prova);
    m_invia->setObjectName(QStringLiteral("inviaProva"));
    m_invia->setAutoDefault(false);
    m_invia->setMinimumWidth(130);
    connect(m_invia, &QPushButton::clicked, this, &PreviewSheet::inviaProva);
    riga->addWidget(m_invia);
    // Stands where the button was while a send is under way.
    m_attesa = new QProgressBar(prova);
    m_attesa->setObjectName(QStringLiteral("attesaProva"));
    m_attesa->setRange(0, 0);
    m_attesa->setTextVisible(false);
    m_attesa->setFixedWidth(130);
    m_attesa->hide();
    riga->addWidget(m_attesa);
    colonna->addLayout(riga);
    m_impostazioni = new QLabel(tr("Completa prima le impostazioni SMTP."), prova);
    m_impostazioni->setObjectName(QStringLiteral("impostazioniIncomplete"));
    m_impostazioni->setStyleSheet(Stile::testoColorato(Palette::colore(Colore::orange)));
    colonna->addWidget(m_impostazioni);
    m_esitoTesto = new QLabel(prova);
    m_esitoTesto->setObjectName(QStringLiteral("esitoProva"));
    m_esitoTesto->setWordWrap(true);
    m_esitoTesto->setTextFormat(Qt::PlainText);
    m_esitoTesto->setTextInteractionFlags(Qt::TextSelectableByMouse);
    colonna->addWidget(m_esitoTesto);
    return prova;
}

void PreviewSheet::showEvent(QShowEvent* evento) {
    QDialog::showEvent(evento);
    if (!m_passwordChiesta) {
        m_passwordChiesta = true;
        m_settings.caricaPasswordSeServe();
        aggiornaProva();
    }
}

RowValues PreviewSheet::valoriCorrenti() const {
    return PreviewModel::valoriCorrenti(m_righe, m_indiceRiga);
}

QString PreviewSheet::corpoRenderizzato() const {
    return PreviewModel::corpoRenderizzato(m_modello, valoriCorrenti(), m_settings.config());
}

void PreviewSheet::setIndiceRiga(int indice) {
    m_indiceRiga = std::max(0, indice);
    aggiorna();
}

void PreviewSheet::rileggiRighe() {
    if (m_lista)
        m_lista = m_store.find<ContactList>(m_lista->id);
    m_righe = PreviewModel::righe(m_store, m_lista);
    QStringList indirizzi;
    indirizzi.reserve(m_righe.size());
    for (const ContactRow& riga : m_righe)
        indirizzi.append(riga.email);
    m_indirizzi->setStringList(indirizzi);
}

void PreviewSheet::aggiorna() {
    const bool vuota = m_righe.isEmpty();
    m_senzaRighe->setVisible(vuota);
    m_sceltaRiga->setVisible(!vuota);
    // A list that shrank shows its last row.
    const int indice = PreviewModel::indiceEffettivo(m_righe, m_indiceRiga);
    if (m_righeCombo->currentIndex() != indice)
        m_righeCombo->setCurrentIndex(indice);
    const RowValues valori = valoriCorrenti();
    ::aggiorna(m_oggetto, PreviewModel::oggetto(m_modello, valori));
    const QString corpo = PreviewModel::corpoRenderizzato(m_modello, valori, m_settings.config());
    if (m_sorgente->isChecked()) {
        if (m_testoSorgente->toPlainText() != corpo)
            m_testoSorgente->setPlainText(corpo);
        m_corpo->setCurrentWidget(m_testoSorgente);
    } else {
        m_anteprima->setHtml(corpo);
        m_corpo->setCurrentWidget(m_anteprima);
    }
    aggiornaProva();
}

void PreviewSheet::aggiornaProva() {
    const bool configurato = m_settings.isConfigured();
    m_invia->setEnabled(PreviewModel::puoInviare(m_indirizzo->text(), m_invioInCorso, configurato));
    m_invia->setVisible(!m_invioInCorso);
    m_attesa->setVisible(m_invioInCorso);
    m_impostazioni->setVisible(!configurato);
    m_esitoTesto->setVisible(m_esito.has_value());
    if (m_esito) {
        m_esitoTesto->setText(*m_esito);
        const Colore colore = PreviewModel::esitoPositivo(*m_esito) ? Colore::green : Colore::red;
        m_esitoTesto->setStyleSheet(Stile::testoColorato(Palette::colore(colore)));
    }
}

void PreviewSheet::inviaProva() {
    if (!PreviewModel::puoInviare(m_indirizzo->text(), m_invioInCorso, m_settings.isConfigured()))
        return;
    m_invioInCorso = true;
    m_esito.reset();
    // The button hides while the message goes: the keyboard stays on the address rather than falling into the
    // preview, where it would light a link that Enter then opens.
    if (m_invia->hasFocus())
        m_indirizzo->setFocus();
    aggiornaProva();
    QCoro::connect(invia(m_motore, m_modello, valoriCorrenti(), m_indirizzo->text().trimmed(), m_settings, m_store),
                   this, [this](const QString& esito) { concludiProva(esito); });
}

void PreviewSheet::concludiProva(const QString& esito) {
    m_esito = esito;
    m_invioInCorso = false;
    aggiornaProva();
}
