#include "screens/templates/PannelloLaterale.h"

#include "screens/editor/FlowLayout.h"
#include "screens/templates/Stile.h"
#include "screens/templates/TemplatesModel.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// One section of the panel: a column under its title.
QVBoxLayout* sezione(QWidget* riquadro, const QString& titolo) {
    auto* colonna = new QVBoxLayout(riquadro);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(8);
    if (!titolo.isEmpty()) {
        auto* etichetta = new QLabel(titolo, riquadro);
        etichetta->setFont(carattereScalato(etichetta->font(), 1.05, QFont::DemiBold));
        colonna->addWidget(etichetta);
    }
    return colonna;
}

QLabel* titoloSezione(const QString& testo, QWidget* genitore) {
    auto* etichetta = new QLabel(testo, genitore);
    etichetta->setFont(carattereScalato(etichetta->font(), 1.05, QFont::DemiBold));
    return etichetta;
}

} // namespace

PannelloLaterale::PannelloLaterale(QWidget* genitore) : QWidget(genitore) {
    setObjectName(QStringLiteral("pannelloLaterale"));
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(14, 12, 14, 12);
    colonna->setSpacing(12);
    colonna->addWidget(sezioneCampi());
    colonna->addWidget(Stile::linea(Qt::Horizontal, this));
    colonna->addWidget(sezioneAllegati());
    colonna->addWidget(Stile::linea(Qt::Horizontal, this));
    colonna->addWidget(sezioneProva());
    colonna->addStretch(1);
}

QWidget* PannelloLaterale::sezioneCampi() {
    auto* riquadro = new QWidget(this);
    auto* colonna = sezione(riquadro, tr("Campi del CSV"));
    colonna->addWidget(new QLabel(tr("Lista di riferimento"), riquadro));
    m_liste = new QComboBox(riquadro);
    m_liste->setObjectName(QStringLiteral("listaRiferimento"));
    m_liste->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_liste->setMinimumContentsLength(12);
    connect(m_liste, &QComboBox::activated, this,
            [this](int indice) { Q_EMIT listaScelta(m_idListe.value(indice, 0)); });
    colonna->addWidget(m_liste);
    m_aiutoCampi = Stile::nota(QString(), riquadro);
    m_aiutoCampi->setObjectName(QStringLiteral("aiutoCampi"));
    colonna->addWidget(m_aiutoCampi);
    m_chip = new QWidget(riquadro);
    m_chip->setObjectName(QStringLiteral("chipCampi"));
    new FlowLayout(m_chip, 6);
    colonna->addWidget(m_chip);
    m_mancanti = new NotaView(QStringLiteral("exclamationmark.triangle.fill"), Colore::orange, riquadro);
    m_mancanti->setObjectName(QStringLiteral("campiMancanti"));
    colonna->addWidget(m_mancanti);
    return riquadro;
}

QWidget* PannelloLaterale::sezioneAllegati() {
    auto* riquadro = new QWidget(this);
    auto* colonna = sezione(riquadro, QString());
    auto* testa = new QHBoxLayout;
    testa->addWidget(titoloSezione(tr("Allegati"), riquadro));
    testa->addStretch(1);
    auto* graffetta = new QToolButton(riquadro);
    graffetta->setObjectName(QStringLiteral("aggiungiAllegati"));
    graffetta->setIcon(Symbols::iconaColorata(QStringLiteral("paperclip"), Palette::colore(Colore::accent)));
    graffetta->setToolTip(tr("Aggiungi allegati"));
    graffetta->setAutoRaise(true);
    connect(graffetta, &QToolButton::clicked, this, &PannelloLaterale::aggiungiAllegati);
    testa->addWidget(graffetta);
    colonna->addLayout(testa);
    m_nessunAllegato = Stile::nota(tr("Nessun allegato."), riquadro);
    m_nessunAllegato->setObjectName(QStringLiteral("nessunAllegato"));
    colonna->addWidget(m_nessunAllegato);
    m_righeAllegati = new QWidget(riquadro);
    m_righeAllegati->setObjectName(QStringLiteral("righeAllegati"));
    m_colonnaAllegati = new QVBoxLayout(m_righeAllegati);
    m_colonnaAllegati->setContentsMargins(0, 0, 0, 0);
    m_colonnaAllegati->setSpacing(2);
    colonna->addWidget(m_righeAllegati);
    m_oltreSoglia = new NotaView(QStringLiteral("exclamationmark.triangle.fill"), Colore::orange, riquadro);
    m_oltreSoglia->setObjectName(QStringLiteral("oltreSoglia"));
    m_oltreSoglia->setTesto(tr("Oltre 10 MB di allegati: molti server rifiutano il messaggio."));
    colonna->addWidget(m_oltreSoglia);
    return riquadro;
}

QWidget* PannelloLaterale::sezioneProva() {
    auto* riquadro = new QWidget(this);
    auto* colonna = sezione(riquadro, tr("Verifica"));
    auto* pulsante = new QPushButton(tr("Anteprima e invio di prova"), riquadro);
    pulsante->setObjectName(QStringLiteral("anteprima"));
    connect(pulsante, &QPushButton::clicked, this, &PannelloLaterale::anteprima);
    colonna->addWidget(pulsante);
    colonna->addWidget(Stile::nota(tr("L'anteprima usa i dati di una riga reale della lista scelta."), riquadro));
    return riquadro;
}

void PannelloLaterale::mostra(const MessageTemplate& modello, const std::optional<ContactList>& riferimento,
                              const QList<ContactList>& liste, const QList<TemplateAttachment>& allegati) {
    QList<RecordId> id = {0};
    QStringList nomi = {tr("Nessuna")};
    for (const ContactList& lista : liste) {
        id.append(lista.id);
        nomi.append(lista.name);
    }
    if (id != m_idListe || nomi.size() != m_liste->count()) {
        m_liste->clear();
        m_liste->addItems(nomi);
        m_idListe = id;
    } else {
        for (qsizetype i = 0; i < nomi.size(); ++i)
            if (m_liste->itemText(int(i)) != nomi.at(i))
                m_liste->setItemText(int(i), nomi.at(i));
    }
    m_liste->setCurrentIndex(std::max(0, int(m_idListe.indexOf(riferimento ? riferimento->id : 0))));

    const QStringList campi = TemplatesModel::campiDisponibili(riferimento);
    aggiorna(m_aiutoCampi, campi.isEmpty() ? tr("Importa un CSV e scegli qui la lista per vedere i campi disponibili.")
                                           : tr("Clicca un campo per inserirlo nel punto in cui si trova il cursore."));
    mostraCampi(campi);
    const QStringList mancanti = TemplatesModel::campiMancanti(modello, riferimento);
    m_mancanti->setTesto(
        mancanti.isEmpty() ? QString() : tr("Campi non presenti nella lista: ") + mancanti.join(QStringLiteral(", ")));

    mostraAllegati(allegati);
    m_oltreSoglia->setVisible(TemplatesModel::allegatiOltreSoglia(allegati));
}

void PannelloLaterale::mostraCampi(const QStringList& campi) {
    if (m_campiPronti && campi == m_campiMostrati)
        return;
    m_campiPronti = true;
    m_campiMostrati = campi;
    QLayout* flusso = m_chip->layout();
    while (QLayoutItem* voce = flusso->takeAt(0)) {
        delete voce->widget();
        delete voce;
    }
    const QString stile =
        QStringLiteral("QToolButton { background: %1; color: %2; border-radius: 5px; padding: 2px 8px;"
                       " font-weight: 600; border: none; } QToolButton:hover { background: %3; }")
            .arg(Palette::css(Palette::colore(Colore::blue, 0.14)), Palette::css(Palette::colore(Colore::blue)),
                 Palette::css(Palette::colore(Colore::blue, 0.26)));
    for (const QString& campo : campi) {
        auto* chip = new QToolButton(m_chip);
        chip->setObjectName(QStringLiteral("chip-") + campo);
        chip->setText(campo);
        chip->setToolTip(tr("Inserisce il banner {{") + campo + QStringLiteral("}}"));
        chip->setStyleSheet(stile);
        chip->setCursor(Qt::PointingHandCursor);
        // The page keeps its caret: the chip goes where the user left it.
        chip->setFocusPolicy(Qt::NoFocus);
        connect(chip, &QToolButton::clicked, this, [this, campo] { Q_EMIT campoScelto(campo); });
        flusso->addWidget(chip);
    }
    m_chip->setVisible(!campi.isEmpty());
    m_chip->updateGeometry();
}

void PannelloLaterale::mostraAllegati(const QList<TemplateAttachment>& allegati) {
    QList<QPair<RecordId, qint64>> forma;
    for (const TemplateAttachment& allegato : allegati)
        forma.append({allegato.id, allegato.data.size()});
    m_nessunAllegato->setVisible(allegati.isEmpty());
    m_righeAllegati->setVisible(!allegati.isEmpty());
    if (forma == m_allegatiMostrati && m_colonnaAllegati->count() == allegati.size())
        return;
    m_allegatiMostrati = forma;
    while (QLayoutItem* voce = m_colonnaAllegati->takeAt(0)) {
        delete voce->widget();
        delete voce;
    }
    for (const TemplateAttachment& allegato : allegati) {
        auto* riga = new QWidget(m_righeAllegati);
        riga->setObjectName(QStringLiteral("allegato-%1").arg(allegato.id));
        auto* disposizione = new QHBoxLayout(riga);
        disposizione->setContentsMargins(0, 0, 0, 0);
        auto* nome = new QLabel(riga);
        nome->setObjectName(QStringLiteral("nome"));
        nome->setToolTip(allegato.filename);
        nome->setMinimumWidth(40);
        nome->setText(nome->fontMetrics().elidedText(allegato.filename, Qt::ElideMiddle, 150));
        disposizione->addWidget(nome, 1);
        auto* dimensione = new QLabel(allegato.sizeDescription(), riga);
        dimensione->setObjectName(QStringLiteral("dimensione"));
        dimensione->setStyleSheet(Stile::testoColorato(Palette::colore(Colore::secondary)));
        disposizione->addWidget(dimensione);
        auto* cestino = new QToolButton(riga);
        cestino->setObjectName(QStringLiteral("elimina"));
        cestino->setIcon(Symbols::iconaColorata(QStringLiteral("trash"), Palette::colore(Colore::red)));
        cestino->setToolTip(tr("Elimina l'allegato"));
        cestino->setAutoRaise(true);
        const RecordId id = allegato.id;
        connect(cestino, &QToolButton::clicked, this, [this, id] { Q_EMIT eliminaAllegato(id); });
        disposizione->addWidget(cestino);
        m_colonnaAllegati->addWidget(riga);
    }
}
