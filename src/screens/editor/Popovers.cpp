#include "screens/editor/Popovers.h"

#include "screens/editor/EditorToolbar.h"
#include "ui/Dialoghi.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int lunghezzaMinimaIndirizzo = 5;

QLabel* titolo(const QString& testo, QWidget* genitore) {
    auto* etichetta = new QLabel(testo, genitore);
    QFont carattere = etichetta->font();
    carattere.setWeight(QFont::DemiBold);
    carattere.setPointSizeF(carattere.pointSizeF() * 1.15);
    etichetta->setFont(carattere);
    return etichetta;
}

QDialogButtonBox* pulsanti(QDialog* finestra, QPushButton** inserisci) {
    auto* scatola = new QDialogButtonBox(finestra);
    auto* annulla = scatola->addButton(QObject::tr("Annulla"), QDialogButtonBox::RejectRole);
    annulla->setObjectName(QStringLiteral("annulla"));
    *inserisci = scatola->addButton(QObject::tr("Inserisci"), QDialogButtonBox::AcceptRole);
    (*inserisci)->setObjectName(QStringLiteral("inserisci"));
    (*inserisci)->setDefault(true);
    QObject::connect(scatola, &QDialogButtonBox::rejected, finestra, &QDialog::reject);
    return scatola;
}

} // namespace

QIcon campioneColore(const QColor& colore, QSize dimensione) {
    QPixmap quadrato(dimensione);
    quadrato.fill(Qt::transparent);
    QPainter pittore(&quadrato);
    pittore.setRenderHint(QPainter::Antialiasing);
    pittore.setPen(QPen(QColor(0, 0, 0, 90), 1));
    pittore.setBrush(colore);
    pittore.drawRoundedRect(QRectF(0.5, 0.5, dimensione.width() - 1, dimensione.height() - 1), 3, 3);
    return QIcon(quadrato);
}

LinkPopover::LinkPopover(OnInsert onInsert, QWidget* genitore) : QDialog(genitore), m_onInsert(std::move(onInsert)) {
    setObjectName(QStringLiteral("linkPopover"));
    setWindowTitle(tr("Collegamento"));
    setMinimumWidth(360);
    auto* colonna = new QVBoxLayout(this);
    colonna->addWidget(titolo(tr("Collegamento"), this));
    auto* modulo = new QFormLayout;
    m_url = new QLineEdit(QStringLiteral("https://"), this);
    m_url->setObjectName(QStringLiteral("url"));
    m_testo = new QLineEdit(this);
    m_testo->setObjectName(QStringLiteral("testo"));
    modulo->addRow(tr("Indirizzo"), m_url);
    modulo->addRow(tr("Testo visibile (opzionale)"), m_testo);
    colonna->addLayout(modulo);
    colonna->addWidget(pulsanti(this, &m_inserisci));
    connect(m_url, &QLineEdit::textChanged, this, &LinkPopover::aggiornaPulsante);
    connect(m_inserisci, &QPushButton::clicked, this, [this] {
        if (m_onInsert)
            m_onInsert(m_url->text(), m_testo->text());
        accept();
    });
    aggiornaPulsante();
}

void LinkPopover::aggiornaPulsante() {
    m_inserisci->setEnabled(m_url->text().size() >= lunghezzaMinimaIndirizzo);
}

ButtonPopover::ButtonPopover(OnInsert onInsert, QWidget* genitore)
    : QDialog(genitore), m_onInsert(std::move(onInsert)) {
    setObjectName(QStringLiteral("buttonPopover"));
    setWindowTitle(tr("Pulsante"));
    setMinimumWidth(360);
    auto* colonna = new QVBoxLayout(this);
    colonna->addWidget(titolo(tr("Pulsante"), this));
    auto* modulo = new QFormLayout;
    m_url = new QLineEdit(QStringLiteral("https://"), this);
    m_url->setObjectName(QStringLiteral("url"));
    m_etichetta = new QLineEdit(tr("Scopri di più"), this);
    m_etichetta->setObjectName(QStringLiteral("etichetta"));
    m_campione = new QToolButton(this);
    m_campione->setObjectName(QStringLiteral("colore"));
    m_campione->setToolTip(tr("Colore"));
    m_campione->setIconSize(QSize(40, 16));
    modulo->addRow(tr("Indirizzo"), m_url);
    modulo->addRow(tr("Etichetta"), m_etichetta);
    modulo->addRow(tr("Colore"), m_campione);
    colonna->addLayout(modulo);
    colonna->addWidget(pulsanti(this, &m_inserisci));
    connect(m_url, &QLineEdit::textChanged, this, &ButtonPopover::aggiornaPulsante);
    connect(m_etichetta, &QLineEdit::textChanged, this, &ButtonPopover::aggiornaPulsante);
    connect(m_campione, &QToolButton::clicked, this, [this] {
        const QColor scelto = Dialoghi::colore(this, tr("Colore"), m_colore);
        if (scelto.isValid())
            setColore(scelto);
    });
    connect(m_inserisci, &QPushButton::clicked, this, [this] {
        if (m_onInsert)
            m_onInsert(m_url->text(), m_etichetta->text(), hexString(m_colore));
        accept();
    });
    setColore(m_colore);
    aggiornaPulsante();
}

void ButtonPopover::setColore(const QColor& colore) {
    m_colore = colore;
    m_campione->setIcon(campioneColore(colore, QSize(40, 16)));
}

void ButtonPopover::aggiornaPulsante() {
    m_inserisci->setEnabled(m_url->text().size() >= lunghezzaMinimaIndirizzo && !m_etichetta->text().isEmpty());
}
