#include "screens/editor/EditorToolbar.h"

#include "composition/ImageTools.h"
#include "screens/editor/EditorController.h"
#include "screens/editor/FlowLayout.h"
#include "screens/editor/Popovers.h"
#include "ui/Dialoghi.h"
#include "ui/Palette.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>

#include <cmath>

QString hexString(const QColor& colore) {
    QColor rgb = colore.isValid() ? colore.toRgb() : QColor(Qt::black);
    if (!rgb.isValid())
        rgb = Qt::black;
    auto canale = [](float valore) { return int(std::lround(double(valore) * 255.0)); };
    return QString::asprintf("#%02X%02X%02X", canale(rgb.redF()), canale(rgb.greenF()), canale(rgb.blueF()));
}

const QList<int>& EditorToolbar::dimensioni() {
    static const QList<int> valori = {11, 12, 13, 14, 16, 18, 20, 24, 28, 32};
    return valori;
}

const QList<QPair<QString, QString>>& EditorToolbar::caratteri() {
    static const QList<QPair<QString, QString>> valori = {
        {QStringLiteral("Arial"), QStringLiteral("Arial, Helvetica, sans-serif")},
        {QStringLiteral("Helvetica"), QStringLiteral("Helvetica, Arial, sans-serif")},
        {QStringLiteral("Georgia"), QStringLiteral("Georgia, 'Times New Roman', serif")},
        {QStringLiteral("Times New Roman"), QStringLiteral("'Times New Roman', Times, serif")},
        {QStringLiteral("Verdana"), QStringLiteral("Verdana, Geneva, sans-serif")},
        {QStringLiteral("Trebuchet MS"), QStringLiteral("'Trebuchet MS', Helvetica, sans-serif")},
        {QStringLiteral("Courier New"), QStringLiteral("'Courier New', Courier, monospace")},
    };
    return valori;
}

QString EditorToolbar::lineaSeparatrice() {
    return QStringLiteral("<hr style=\"border:none;border-top:1px solid #e0e0e0;margin:18px 0;\" />");
}

EditorToolbar::EditorToolbar(EditorController* editor, QWidget* genitore) : QWidget(genitore), m_editor(editor) {
    setObjectName(QStringLiteral("editorToolbar"));
    auto* flusso = new FlowLayout(this, 6);
    flusso->setContentsMargins(8, 6, 8, 6);

    auto* carattere = new QToolButton(this);
    carattere->setObjectName(QStringLiteral("carattere"));
    carattere->setText(tr("Carattere"));
    carattere->setPopupMode(QToolButton::InstantPopup);
    carattere->setFocusPolicy(Qt::NoFocus);
    auto* menuCaratteri = new QMenu(carattere);
    for (const auto& [nome, pila] : caratteri()) {
        QAction* voce = menuCaratteri->addAction(nome);
        QFont anteprima = voce->font();
        anteprima.setFamily(nome);
        voce->setFont(anteprima);
        connect(voce, &QAction::triggered, this, [this, pila = pila] { m_editor->setFontFamily(pila); });
    }
    carattere->setMenu(menuCaratteri);

    auto* dimensione = new QToolButton(this);
    dimensione->setObjectName(QStringLiteral("dimensione"));
    dimensione->setText(tr("Dimensione"));
    dimensione->setPopupMode(QToolButton::InstantPopup);
    dimensione->setFocusPolicy(Qt::NoFocus);
    auto* menuDimensioni = new QMenu(dimensione);
    for (int px : dimensioni())
        connect(menuDimensioni->addAction(QStringLiteral("%1 px").arg(px)), &QAction::triggered, this,
                [this, px] { m_editor->setFontSize(px); });
    dimensione->setMenu(menuDimensioni);

    m_pulsanteTesto = pulsante(QString(), tr("Colore del testo"), QStringLiteral("coloreTesto"));
    m_pulsanteTesto->setIcon(campioneColore(m_coloreTesto));
    connect(m_pulsanteTesto, &QToolButton::clicked, this, &EditorToolbar::scegliColoreTesto);
    m_pulsanteSfondo = pulsante(QString(), tr("Colore di evidenziazione"), QStringLiteral("coloreSfondo"));
    m_pulsanteSfondo->setIcon(campioneColore(m_coloreSfondo));
    connect(m_pulsanteSfondo, &QToolButton::clicked, this, &EditorToolbar::scegliColoreSfondo);

    auto* link = pulsante(QStringLiteral("link"), tr("Inserisci collegamento"), QStringLiteral("link"));
    connect(link, &QToolButton::clicked, this, &EditorToolbar::mostraLink);
    auto* bottone = pulsante(QStringLiteral("rectangle.and.hand.point.up.left"), tr("Inserisci pulsante"),
                             QStringLiteral("bottone"));
    connect(bottone, &QToolButton::clicked, this, &EditorToolbar::mostraBottone);
    auto* immagine = pulsante(QStringLiteral("photo"), tr("Inserisci immagine"), QStringLiteral("immagine"));
    connect(immagine, &QToolButton::clicked, this, &EditorToolbar::inserisciImmagine);
    auto* linea = pulsante(QStringLiteral("minus"), tr("Linea separatrice"), QStringLiteral("linea"));
    connect(linea, &QToolButton::clicked, this, [this] { m_editor->insertHTML(lineaSeparatrice()); });
    auto* gomma = pulsante(QStringLiteral("eraser"), tr("Rimuovi formattazione"), QStringLiteral("gomma"));
    connect(gomma, &QToolButton::clicked, this, [this] { m_editor->clearFormatting(); });

    flusso->addWidget(gruppo({carattere, dimensione}));
    flusso->addWidget(
        gruppo({comando(QStringLiteral("bold"), tr("Grassetto"), QStringLiteral("bold")),
                comando(QStringLiteral("italic"), tr("Corsivo"), QStringLiteral("italic")),
                comando(QStringLiteral("underline"), tr("Sottolineato"), QStringLiteral("underline")),
                comando(QStringLiteral("strikethrough"), tr("Barrato"), QStringLiteral("strikeThrough"))}));
    flusso->addWidget(gruppo({m_pulsanteTesto, m_pulsanteSfondo}));
    flusso->addWidget(
        gruppo({comando(QStringLiteral("list.bullet"), tr("Elenco puntato"), QStringLiteral("insertUnorderedList")),
                comando(QStringLiteral("list.number"), tr("Elenco numerato"), QStringLiteral("insertOrderedList"))}));
    flusso->addWidget(
        gruppo({comando(QStringLiteral("text.alignleft"), tr("Allinea a sinistra"), QStringLiteral("justifyLeft")),
                comando(QStringLiteral("text.aligncenter"), tr("Centra"), QStringLiteral("justifyCenter")),
                comando(QStringLiteral("text.alignright"), tr("Allinea a destra"), QStringLiteral("justifyRight"))}));
    flusso->addWidget(gruppo({link, bottone, immagine, linea}));
    flusso->addWidget(gruppo({gomma}));
}

QToolButton* EditorToolbar::pulsante(const QString& simbolo, const QString& aiuto, const QString& nome) {
    auto* pulsante = new QToolButton(this);
    pulsante->setObjectName(nome);
    pulsante->setToolTip(aiuto);
    pulsante->setAutoRaise(true);
    // The page keeps its caret only while the focus stays in it.
    pulsante->setFocusPolicy(Qt::NoFocus);
    pulsante->setIconSize(QSize(16, 16));
    if (!simbolo.isEmpty())
        pulsante->setIcon(Symbols::iconaColorata(simbolo, Palette::colore(Colore::primary)));
    return pulsante;
}

QToolButton* EditorToolbar::comando(const QString& simbolo, const QString& aiuto, const QString& nome) {
    auto* pulsante = this->pulsante(simbolo, aiuto, nome);
    connect(pulsante, &QToolButton::clicked, this, [this, nome] { m_editor->exec(nome); });
    return pulsante;
}

QWidget* EditorToolbar::gruppo(const QList<QWidget*>& controlli) {
    auto* riquadro = new QWidget(this);
    auto* riga = new QHBoxLayout(riquadro);
    riga->setContentsMargins(0, 0, 0, 0);
    riga->setSpacing(1);
    for (QWidget* controllo : controlli)
        riga->addWidget(controllo);
    return riquadro;
}

void EditorToolbar::scegliColoreTesto() {
    scegliColore(tr("Colore del testo"), QStringLiteral("foreColor"), m_coloreTesto, m_pulsanteTesto);
}

void EditorToolbar::scegliColoreSfondo() {
    scegliColore(tr("Colore di evidenziazione"), QStringLiteral("hiliteColor"), m_coloreSfondo, m_pulsanteSfondo);
}

void EditorToolbar::scegliColore(const QString& titolo, const QString& comando, QColor& colore, QToolButton* pulsante) {
    const QColor scelto = Dialoghi::colore(this, titolo, colore);
    if (!scelto.isValid())
        return;
    colore = scelto;
    pulsante->setIcon(campioneColore(scelto));
    m_editor->exec(comando, hexString(scelto));
}

void EditorToolbar::mostraLink() {
    LinkPopover finestra([this](const QString& url, const QString& testo) { m_editor->insertLink(url, testo); }, this);
    finestra.setWindowModality(Qt::WindowModal);
    finestra.exec();
}

void EditorToolbar::mostraBottone() {
    ButtonPopover finestra([this](const QString& url, const QString& etichetta,
                                  const QString& colore) { m_editor->insertButton(url, etichetta, colore); },
                           this);
    finestra.setWindowModality(Qt::WindowModal);
    finestra.exec();
}

void EditorToolbar::inserisciImmagine() {
    const QString percorso = Dialoghi::fileDaAprire(
        this, tr("Inserisci immagine"), tr("Immagini (*.png *.jpg *.jpeg *.gif *.tif *.tiff *.heic *.heif *.webp)"));
    if (percorso.isEmpty())
        return;
    // Scaling and encoding a large photograph takes a moment.
    QApplication::setOverrideCursor(Qt::BusyCursor);
    const auto uri = ImageTools::dataURI(percorso, 1200, 400000);
    QApplication::restoreOverrideCursor();
    if (uri)
        m_editor->insertImage(*uri);
}
