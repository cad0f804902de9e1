#include "screens/templates/TemplateEditorPane.h"

#include "screens/editor/EditorController.h"
#include "screens/editor/EditorToolbar.h"
#include "screens/editor/RichTextEditor.h"
#include "screens/templates/PannelloLaterale.h"
#include "screens/templates/Stile.h"
#include "screens/templates/TemplatesModel.h"
#include "ui/OrdineTab.h"
#include "ui/Palette.h"
#include "ui/Riquadri.h"
#include "ui/Symbols.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollArea>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

TemplateEditorPane::TemplateEditorPane(EditorController* editor, const QString& initialHTML, RecordId proprietario,
                                       QWidget* genitore, const QString& radiceRisorse)
    : QWidget(genitore), m_editor(editor) {
    setObjectName(QStringLiteral("templateEditorPane"));
    auto* riga = new QHBoxLayout(this);
    riga->setContentsMargins(0, 0, 0, 0);
    riga->setSpacing(0);

    auto* principale = new QWidget(this);
    auto* colonna = new QVBoxLayout(principale);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->setSpacing(0);
    colonna->addWidget(creaIntestazione());
    m_toolbar = new EditorToolbar(editor, principale);
    colonna->addWidget(m_toolbar);
    colonna->addWidget(Stile::linea(Qt::Horizontal, principale));
    m_vista = new RichTextEditor(editor, initialHTML, proprietario, principale, radiceRisorse);
    m_vista->setOnChange([this](const QString& html, RecordId id) { Q_EMIT corpoCambiato(id, html); });
    m_vista->setMinimumHeight(240);
    colonna->addWidget(m_vista, 1);
    OrdineTab::subitoDopo(m_campo, m_vista);
    principale->setMinimumWidth(460);
    riga->addWidget(principale, 1);

    auto* scorrimento = new QScrollArea(this);
    scorrimento->setObjectName(QStringLiteral("scorrimentoLaterale"));
    scorrimento->setWidgetResizable(true);
    scorrimento->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scorrimento->setFrameShape(QFrame::NoFrame);
    // Tab goes to the fields in the panel, which the area keeps in sight; the area itself is no stop.
    scorrimento->setFocusPolicy(Qt::NoFocus);
    scorrimento->setFixedWidth(270);
    m_pannello = new PannelloLaterale(scorrimento);
    scorrimento->setWidget(m_pannello);
    riga->addWidget(Stile::linea(Qt::Vertical, this));
    riga->addWidget(scorrimento);

    connect(m_pannello, &PannelloLaterale::campoScelto, this,
            [this](const QString& nome) { m_editor->insertField(nome); });
}

QWidget* TemplateEditorPane::creaIntestazione() {
    auto* testa = new QWidget(this);
    testa->setObjectName(QStringLiteral("intestazione"));
    auto* colonna = new QVBoxLayout(testa);
    colonna->setContentsMargins(16, 12, 16, 10);
    colonna->setSpacing(8);
    m_nome = new QLineEdit(testa);
    m_nome->setObjectName(QStringLiteral("nomeModello"));
    m_nome->setPlaceholderText(tr("Nome modello"));
    m_nome->setFrame(false);
    m_nome->setFont(carattereScalato(m_nome->font(), 1.35, QFont::DemiBold));
    colonna->addWidget(m_nome);

    auto* riga = new QHBoxLayout;
    riga->addWidget(new QLabel(tr("Oggetto"), testa));
    m_oggetto = new QLineEdit(testa);
    m_oggetto->setObjectName(QStringLiteral("oggetto"));
    m_oggetto->setPlaceholderText(tr("Oggetto del messaggio (può contenere i campi)"));
    riga->addWidget(m_oggetto, 1);
    m_campo = new QToolButton(testa);
    m_campo->setObjectName(QStringLiteral("campo"));
    m_campo->setText(tr("Campo"));
    m_campo->setIcon(Symbols::icona(QStringLiteral("curlybraces")));
    m_campo->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_campo->setPopupMode(QToolButton::InstantPopup);
    m_campo->setMenu(new QMenu(m_campo));
    riga->addWidget(m_campo);
    colonna->addLayout(riga);

    auto salva = [this] { Q_EMIT intestazioneCambiata(m_nome->text(), m_oggetto->text()); };
    connect(m_nome, &QLineEdit::textEdited, this, salva);
    connect(m_oggetto, &QLineEdit::textEdited, this, salva);
    return testa;
}

void TemplateEditorPane::aggiornaMenuCampi(const QStringList& campi) {
    if (m_menuPronto && campi == m_campiMenu)
        return;
    m_menuPronto = true;
    m_campiMenu = campi;
    QMenu* menu = m_campo->menu();
    menu->clear();
    if (campi.isEmpty()) {
        menu->addAction(tr("Nessuna lista di riferimento"))->setEnabled(false);
        return;
    }
    for (const QString& campo : campi)
        connect(menu->addAction(campo), &QAction::triggered, this, [this, campo] {
            // At the end of the subject, wherever the cursor is.
            m_oggetto->setText(m_oggetto->text() + QStringLiteral("{{") + campo + QStringLiteral("}}"));
            Q_EMIT intestazioneCambiata(m_nome->text(), m_oggetto->text());
        });
}

void TemplateEditorPane::mostra(const MessageTemplate& modello, const std::optional<ContactList>& riferimento,
                                const QList<ContactList>& liste, const QList<TemplateAttachment>& allegati,
                                bool nuovaSelezione) {
    // While the user types, the store gives back what they typed: leave the field and its cursor alone.
    if (nuovaSelezione || (!m_nome->hasFocus() && m_nome->text() != modello.name))
        m_nome->setText(modello.name);
    if (nuovaSelezione || (!m_oggetto->hasFocus() && m_oggetto->text() != modello.subject))
        m_oggetto->setText(modello.subject);
    aggiornaMenuCampi(TemplatesModel::campiDisponibili(riferimento));
    m_pannello->mostra(modello, riferimento, liste, allegati);
}
