#include "screens/dashboard/SendDashboardView.h"

#include "engine/SendReport.h"
#include "records/CSVText.h"
#include "screens/dashboard/EventiModel.h"
#include "screens/dashboard/SendDashboardModel.h"
#include "ui/Dialoghi.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QFontDatabase>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <QVariantAnimation>
#include <QVBoxLayout>

namespace {

constexpr int aggiornamentoMs = 1000;
constexpr int fotogrammaMs = 16;
// The bar is drawn at 1.6 times the height a plain bar has.
constexpr int altezzaBarra = 10;

const char* const nomiRiquadri[] = {"riquadroSpedite", "riquadroRifiutate", "riquadroEscluse", "riquadroDaSpedire",
                                    "riquadroRimandate"};
const char* const nomiDati[] = {"datoTempoTrascorso", "datoRitmo",          "datoFineStimata",
                                "datoTassoErrore",    "datoPausaImpostata", "datoQuotaOggi"};

QLabel* intestazioneGruppo(const QString& testo, Colore colore, const char* nome, QWidget* genitore) {
    auto* etichetta = new QLabel(testo, genitore);
    etichetta->setObjectName(QLatin1String(nome));
    etichetta->setFont(carattereScalato(etichetta->font(), 0.95, QFont::DemiBold));
    etichetta->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(colore))));
    return etichetta;
}

QLabel* testoProblemi(const char* nome, QWidget* genitore) {
    auto* etichetta = new QLabel(genitore);
    etichetta->setObjectName(QLatin1String(nome));
    etichetta->setWordWrap(true);
    etichetta->setTextFormat(Qt::PlainText);
    etichetta->setTextInteractionFlags(Qt::TextSelectableByMouse);
    etichetta->setFont(carattereScalato(etichetta->font(), 0.9));
    return etichetta;
}

} // namespace

SendDashboardView::SendDashboardView(std::shared_ptr<SendEngine> motore, QWidget* genitore)
    : QDialog(genitore), m_motore(std::move(motore)) {
    setObjectName(QStringLiteral("cruscottoInvio"));
    setFixedSize(larghezza, altezza);
    setWindowModality(Qt::WindowModal);

    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(24, 20, 24, 18);
    colonna->setSpacing(14);
    colonna->addWidget(creaIntestazione());
    colonna->addWidget(creaAvanzamento());
    colonna->addWidget(creaRiquadri());
    colonna->addWidget(creaDati());
    auto* pannelli = new QHBoxLayout;
    pannelli->setSpacing(14);
    pannelli->addWidget(creaProblemi(), 2);
    pannelli->addWidget(creaRegistro(), 3);
    colonna->addLayout(pannelli, 1);
    colonna->addWidget(creaComandi());

    // At pace 0 the engine changes at every turn of the event loop; the sheet follows at most once a
    // frame, which no eye can tell apart from every change and leaves the loop free for the user.
    m_fotogramma = new QTimer(this);
    m_fotogramma->setSingleShot(true);
    m_fotogramma->setInterval(fotogrammaMs);
    connect(m_fotogramma, &QTimer::timeout, this, &SendDashboardView::aggiorna);
    connect(m_motore.get(), &SendEngine::changed, this, [this] {
        if (!m_fotogramma->isActive())
            m_fotogramma->start();
    });
    auto* orologio = new QTimer(this);
    orologio->setInterval(aggiornamentoMs);
    connect(orologio, &QTimer::timeout, this, &SendDashboardView::aggiorna);
    orologio->start();
    aggiorna();
}

SendDashboardView::~SendDashboardView() = default;

QWidget* SendDashboardView::creaIntestazione() {
    auto* pezzo = new QWidget(this);
    auto* riga = new QHBoxLayout(pezzo);
    riga->setContentsMargins(0, 0, 0, 0);
    auto* testi = new QVBoxLayout;
    testi->setSpacing(2);
    m_titolo = new QLabel(pezzo);
    m_titolo->setObjectName(QStringLiteral("titolo"));
    m_titolo->setFont(carattereScalato(font(), 1.6, QFont::Bold));
    m_sottotitolo = new QLabel(pezzo);
    m_sottotitolo->setObjectName(QStringLiteral("sottotitolo"));
    m_sottotitolo->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::secondary))));
    testi->addWidget(m_titolo);
    testi->addWidget(m_sottotitolo);
    riga->addLayout(testi, 1);
    m_servizio = new BadgeView(pezzo);
    m_servizio->setObjectName(QStringLiteral("badgeServizio"));
    m_stato = new BadgeView(pezzo);
    m_stato->setObjectName(QStringLiteral("badgeStato"));
    riga->addWidget(m_servizio, 0, Qt::AlignTop);
    riga->addWidget(m_stato, 0, Qt::AlignTop);
    return pezzo;
}

QWidget* SendDashboardView::creaAvanzamento() {
    auto* pezzo = new QWidget(this);
    auto* colonna = new QVBoxLayout(pezzo);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(6);
    m_barra = new QProgressBar(pezzo);
    m_barra->setObjectName(QStringLiteral("barra"));
    m_barra->setRange(0, 1000);
    m_barra->setTextVisible(false);
    m_barra->setFixedHeight(altezzaBarra);
    colonna->addWidget(m_barra);
    auto* riga = new QHBoxLayout;
    m_destinatari = new QLabel(pezzo);
    m_destinatari->setObjectName(QStringLiteral("destinatari"));
    m_percentuale = new QLabel(pezzo);
    m_percentuale->setObjectName(QStringLiteral("percentuale"));
    const QFont cifre = carattereScalato(font(), 1.0, QFont::DemiBold);
    m_percentuale->setFont(cifre);
    m_inCorso = new QLabel(pezzo);
    m_inCorso->setObjectName(QStringLiteral("inCorso"));
    m_inCorso->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::secondary))));
    riga->addWidget(m_destinatari);
    riga->addSpacing(8);
    riga->addWidget(m_percentuale);
    riga->addStretch(1);
    riga->addWidget(m_inCorso);
    colonna->addLayout(riga);
    return pezzo;
}

QWidget* SendDashboardView::creaRiquadri() {
    auto* pezzo = new QWidget(this);
    auto* riga = new QHBoxLayout(pezzo);
    riga->setContentsMargins(0, 0, 0, 0);
    riga->setSpacing(10);
    for (const char* nome : nomiRiquadri) {
        auto* riquadro = new RiquadroView(pezzo);
        riquadro->setObjectName(QLatin1String(nome));
        riga->addWidget(riquadro, 1);
        m_riquadri.append(riquadro);
    }
    return pezzo;
}

QWidget* SendDashboardView::creaDati() {
    auto* pezzo = new QWidget(this);
    auto* riga = new QHBoxLayout(pezzo);
    riga->setContentsMargins(2, 0, 2, 0);
    riga->setSpacing(28);
    for (const char* nome : nomiDati) {
        auto* dato = new DatoInlineView(pezzo);
        dato->setObjectName(QLatin1String(nome));
        riga->addWidget(dato);
        m_dati.append(dato);
    }
    riga->addStretch(1);
    return pezzo;
}

QWidget* SendDashboardView::creaProblemi() {
    auto* gruppo = new QGroupBox(tr("Problemi"), this);
    gruppo->setObjectName(QStringLiteral("problemi"));
    auto* colonna = new QVBoxLayout(gruppo);
    colonna->setSpacing(8);
    m_ultimoErrore = new NotaView(QStringLiteral("exclamationmark.triangle.fill"), Colore::red, gruppo);
    m_ultimoErrore->setObjectName(QStringLiteral("ultimoErrore"));
    m_nessunProblema = new QLabel(tr("Nessun rifiuto né scarto finora."), gruppo);
    m_nessunProblema->setObjectName(QStringLiteral("nessunProblema"));
    m_nessunProblema->setStyleSheet(QStringLiteral("color: %1;").arg(Palette::css(Palette::colore(Colore::secondary))));
    m_esclusi = new NotaView(QStringLiteral("nosign"), Colore::orange, gruppo);
    m_esclusi->setObjectName(QStringLiteral("esclusiAggiunti"));
    colonna->addWidget(m_ultimoErrore);
    colonna->addWidget(m_nessunProblema);
    colonna->addWidget(m_esclusi);

    auto* scorrevole = new QScrollArea(gruppo);
    scorrevole->setObjectName(QStringLiteral("scorrimentoProblemi"));
    scorrevole->setWidgetResizable(true);
    scorrevole->setFrameShape(QFrame::NoFrame);
    scorrevole->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // The notes sit on the group's own background, not on a second panel.
    scorrevole->setStyleSheet(
        QStringLiteral("QScrollArea, QScrollArea > QWidget > QWidget { background: transparent; }"));
    m_dettaglioProblemi = new QWidget(scorrevole);
    auto* dentro = new QVBoxLayout(m_dettaglioProblemi);
    dentro->setContentsMargins(0, 0, 6, 0);
    dentro->setSpacing(4);
    m_titoloRifiuti = intestazioneGruppo(tr("Rifiuti del server"), Colore::red, "titoloRifiuti", m_dettaglioProblemi);
    m_rifiuti = testoProblemi("rifiutiDelServer", m_dettaglioProblemi);
    m_titoloScarti = intestazioneGruppo(tr("Non contattati"), Colore::primary, "titoloScarti", m_dettaglioProblemi);
    m_scarti = testoProblemi("nonContattati", m_dettaglioProblemi);
    m_rimandati = new NotaView(QStringLiteral("calendar.badge.clock"), Colore::indigo, m_dettaglioProblemi);
    m_rimandati->setObjectName(QStringLiteral("rimandati"));
    m_titoloIndirizzi =
        intestazioneGruppo(tr("Indirizzi rifiutati"), Colore::primary, "titoloIndirizzi", m_dettaglioProblemi);
    m_indirizzi = testoProblemi("indirizziRifiutati", m_dettaglioProblemi);
    QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    mono.setPointSizeF(m_indirizzi->font().pointSizeF());
    m_indirizzi->setFont(mono);
    m_indirizzi->setWordWrap(false);
    m_mostraTuttiPulsante = new QPushButton(m_dettaglioProblemi);
    m_mostraTuttiPulsante->setObjectName(QStringLiteral("mostraTutti"));
    m_mostraTuttiPulsante->setFlat(true);
    m_mostraTuttiPulsante->setCursor(Qt::PointingHandCursor);
    m_mostraTuttiPulsante->setStyleSheet(QStringLiteral("QPushButton { color: %1; padding: 2px 0; text-align: left; }")
                                             .arg(Palette::css(Palette::colore(Colore::accent))));
    connect(m_mostraTuttiPulsante, &QPushButton::clicked, this, [this] {
        m_mostraTutti = true;
        aggiorna();
    });

    dentro->addWidget(m_titoloRifiuti);
    dentro->addWidget(m_rifiuti);
    dentro->addSpacing(6);
    dentro->addWidget(m_titoloScarti);
    dentro->addWidget(m_scarti);
    dentro->addSpacing(6);
    dentro->addWidget(m_rimandati);
    dentro->addSpacing(6);
    dentro->addWidget(m_titoloIndirizzi);
    dentro->addWidget(m_indirizzi);
    dentro->addWidget(m_mostraTuttiPulsante, 0, Qt::AlignLeft);
    dentro->addStretch(1);
    scorrevole->setWidget(m_dettaglioProblemi);
    colonna->addWidget(scorrevole, 1);
    return gruppo;
}

QWidget* SendDashboardView::creaRegistro() {
    auto* gruppo = new QGroupBox(tr("Registro"), this);
    gruppo->setObjectName(QStringLiteral("gruppoRegistro"));
    auto* colonna = new QVBoxLayout(gruppo);
    m_eventi = new EventiModel(m_motore, this);
    m_registro = new QTreeView(gruppo);
    m_registro->setObjectName(QStringLiteral("registro"));
    m_registro->setModel(m_eventi);
    m_registro->setRootIsDecorated(false);
    m_registro->setUniformRowHeights(true);
    m_registro->setHeaderHidden(true);
    m_registro->setSelectionMode(QAbstractItemView::NoSelection);
    m_registro->setFocusPolicy(Qt::NoFocus);
    m_registro->setTextElideMode(Qt::ElideRight);
    m_registro->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_registro->header()->setStretchLastSection(true);
    m_registro->setColumnWidth(EventiModel::ora, 96);
    m_registro->setColumnWidth(EventiModel::destinatario, 210);
    colonna->addWidget(m_registro);

    m_scorrimento = new QVariantAnimation(this);
    m_scorrimento->setDuration(180);
    m_scorrimento->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_scorrimento, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& valore) { m_registro->verticalScrollBar()->setValue(valore.toInt()); });
    return gruppo;
}

QWidget* SendDashboardView::creaComandi() {
    auto* pezzo = new QWidget(this);
    auto* riga = new QHBoxLayout(pezzo);
    riga->setContentsMargins(0, 0, 0, 0);
    m_pausa = new QPushButton(pezzo);
    m_pausa->setObjectName(QStringLiteral("pausa"));
    m_pausa->setAutoDefault(false);
    connect(m_pausa, &QPushButton::clicked, this, [this] { m_motore->setPaused(!m_motore->isPaused()); });
    m_interrompi = new QPushButton(Symbols::iconaColorata(QStringLiteral("stop.fill"), Palette::colore(Colore::red)),
                                   tr("Interrompi"), pezzo);
    m_interrompi->setObjectName(QStringLiteral("interrompi"));
    m_interrompi->setAutoDefault(false);
    m_interrompi->setStyleSheet(
        QStringLiteral("QPushButton { color: %1; }").arg(Palette::css(Palette::colore(Colore::red))));
    connect(m_interrompi, &QPushButton::clicked, this, [this] { m_motore->cancel(); });
    m_esporta = new QPushButton(Symbols::icona(QStringLiteral("square.and.arrow.up")), tr("Esporta rapporto"), pezzo);
    m_esporta->setObjectName(QStringLiteral("esportaRapporto"));
    m_esporta->setAutoDefault(false);
    connect(m_esporta, &QPushButton::clicked, this, &SendDashboardView::esportaRapporto);
    m_principale = new QPushButton(pezzo);
    m_principale->setObjectName(QStringLiteral("principale"));
    m_principale->setDefault(true);
    connect(m_principale, &QPushButton::clicked, this, &QDialog::accept);
    riga->addWidget(m_pausa);
    riga->addWidget(m_interrompi);
    riga->addStretch(1);
    riga->addWidget(m_esporta);
    riga->addWidget(m_principale);
    return pezzo;
}

void SendDashboardView::aggiorna() {
    const SendEngine& motore = *m_motore;
    const QDateTime adesso = motore.adesso();

    const QString titolo = SendDashboardModel::titolo(motore);
    ::aggiorna(m_titolo, titolo);
    if (windowTitle() != titolo)
        setWindowTitle(titolo);
    ::aggiorna(m_sottotitolo, SendDashboardModel::sottotitolo(motore));
    m_servizio->imposta(SendDashboardModel::badgeServizio(motore));
    m_stato->imposta(SendDashboardModel::badgeStato(motore));

    m_barra->setValue(int(motore.progress() * m_barra->maximum()));
    ::aggiorna(m_destinatari, SendDashboardModel::destinatari(motore));
    ::aggiorna(m_percentuale, SendDashboardModel::percentuale(motore));
    const QString inCorso = SendDashboardModel::inCorso(motore);
    ::aggiorna(m_inCorso, inCorso);

    const QList<RiquadroDato> riquadri = SendDashboardModel::riquadri(motore);
    for (qsizetype i = 0; i < m_riquadri.size(); ++i)
        m_riquadri[i]->imposta(riquadri.at(i));
    const QList<DatoInline> dati = SendDashboardModel::dati(motore, adesso);
    for (qsizetype i = 0; i < m_dati.size(); ++i)
        m_dati[i]->imposta(dati.at(i));

    aggiornaProblemi();
    m_eventi->sincronizza();
    scorriAllUltimo();
    aggiornaComandi();
}

void SendDashboardView::aggiornaProblemi() {
    const SendEngine& motore = *m_motore;
    const QList<SendEngine::EventoInvio> errori = motore.errori();
    const QList<SendEngine::Motivo> erroriPerMotivo = motore.erroriPerMotivo();
    const QList<SendEngine::Motivo> scarti = motore.scartiPerMotivo();

    m_ultimoErrore->setTesto(motore.lastError().value_or(QString()));
    m_nessunProblema->setVisible(SendDashboardModel::nessunProblema(errori, scarti));
    m_esclusi->setTesto(SendDashboardModel::esclusiAggiunti(motore));

    const QStringList rifiuti = SendDashboardModel::rifiutiDelServer(erroriPerMotivo);
    m_titoloRifiuti->setVisible(!rifiuti.isEmpty());
    m_rifiuti->setVisible(!rifiuti.isEmpty());
    ::aggiorna(m_rifiuti, rifiuti.join(u'\n'));

    const QStringList nonContattati = SendDashboardModel::nonContattati(scarti);
    m_titoloScarti->setVisible(!nonContattati.isEmpty());
    m_scarti->setVisible(!nonContattati.isEmpty());
    ::aggiorna(m_scarti, nonContattati.join(u'\n'));

    m_rimandati->setTesto(SendDashboardModel::rimandati(motore));

    const IndirizziRifiutati indirizzi = SendDashboardModel::indirizziRifiutati(errori, m_mostraTutti);
    m_titoloIndirizzi->setVisible(indirizzi.totale > 0);
    m_indirizzi->setVisible(indirizzi.totale > 0);
    ::aggiorna(m_indirizzi, indirizzi.mostrati.join(u'\n'));
    m_mostraTuttiPulsante->setVisible(!indirizzi.pulsante.isEmpty());
    if (m_mostraTuttiPulsante->text() != indirizzi.pulsante)
        m_mostraTuttiPulsante->setText(indirizzi.pulsante);
}

void SendDashboardView::aggiornaComandi() {
    const SendEngine& motore = *m_motore;
    m_pausa->setVisible(motore.isRunning());
    m_interrompi->setVisible(motore.isRunning());
    const bool inPausa = motore.isPaused();
    const QString testoPausa = inPausa ? tr("Riprendi") : tr("Pausa");
    if (m_pausa->text() != testoPausa) {
        m_pausa->setText(testoPausa);
        m_pausa->setIcon(Symbols::iconaColorata(inPausa ? QStringLiteral("play.fill") : QStringLiteral("pause.fill"),
                                                Palette::colore(Colore::primary)));
    }
    m_esporta->setEnabled(!motore.eventi().isEmpty());
    const QString principale = motore.isRunning() ? tr("Nascondi") : tr("Chiudi");
    if (m_principale->text() != principale) {
        m_principale->setText(principale);
        m_principale->setToolTip(motore.isRunning() ? tr("L'invio prosegue in secondo piano") : QString());
    }
}

void SendDashboardView::scorriAllUltimo() {
    const int righe = m_eventi->rowCount();
    if (righe == m_righeViste)
        return;
    m_righeViste = righe;
    QScrollBar* barra = m_registro->verticalScrollBar();
    // The scroll bar learns its new range when the view lays itself out again; ask for that first.
    m_registro->doItemsLayout();
    m_scorrimento->stop();
    m_scorrimento->setStartValue(barra->value());
    m_scorrimento->setEndValue(barra->maximum());
    m_scorrimento->start();
}

void SendDashboardView::esportaRapporto() {
    const QString percorso =
        Dialoghi::fileDaSalvare(this, tr("Esporta rapporto"), SendReport::nomeProposto(m_motore->nomeCampagna()),
                                tr("Testo separato da virgole (*.csv)"));
    if (percorso.isEmpty())
        return;
    // A failed write leaves no trace and no message: the sheet stays as it was.
    CSVText::scrivi(percorso, SendReport::testo(m_motore->eventi()));
}
