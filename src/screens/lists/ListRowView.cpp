#include "screens/lists/ListRowView.h"

#include "screens/lists/ListeModel.h"
#include "ui/Formati.h"
#include "ui/Palette.h"
#include "ui/Symbols.h"

#include <QApplication>
#include <QPainter>

namespace {

constexpr int margine = 10;
constexpr int latoIcona = 16;
constexpr int latoLegenda = 12;

QFont piccolo(QFont base) {
    base.setPointSizeF(base.pointSizeF() * 0.85);
    return base;
}

} // namespace

QList<VoceLegenda> vociLegenda() {
    return {
        {QStringLiteral("checkmark.circle.fill"), int(Colore::green), ListeModel::tr("fatte")},
        {QStringLiteral("checkmark.circle"), int(Colore::orange), ListeModel::tr("in corso")},
        {QStringLiteral("circle"), int(Colore::blue), ListeModel::tr("da fare")},
    };
}

QSize ListRowView::sizeHint(const QStyleOptionViewItem& opzione, const QModelIndex& indice) const {
    const int riga = opzione.fontMetrics.height();
    if (indice.data(ListeModel::IntestazioneRole).toBool())
        return {200, riga + 14};
    return {200, riga * 2 + 16};
}

void ListRowView::disegnaIntestazione(QPainter* pittore, const QStyleOptionViewItem& opzione,
                                      const QModelIndex& indice) const {
    QRect area = opzione.rect.adjusted(margine, 0, -margine, 0);
    QFont grassetto = piccolo(opzione.font);
    grassetto.setWeight(QFont::DemiBold);
    pittore->setFont(grassetto);
    pittore->setPen(Palette::colore(Colore::secondary));
    pittore->drawText(area, Qt::AlignLeft | Qt::AlignVCenter, indice.data(Qt::DisplayRole).toString());
    if (!indice.data(ListeModel::LegendaRole).toBool())
        return;
    // The legend is laid out from the right edge, last pair first.
    const QFont testo = piccolo(opzione.font);
    const QFontMetrics misure(testo);
    pittore->setFont(testo);
    int destra = area.right();
    const QList<VoceLegenda> voci = vociLegenda();
    for (auto it = voci.crbegin(); it != voci.crend(); ++it) {
        const QColor tinta = Palette::colore(Colore(it->colore));
        const int larghezza = misure.horizontalAdvance(it->parola);
        pittore->setPen(Palette::colore(Colore::secondary));
        pittore->drawText(QRect(destra - larghezza, area.top(), larghezza, area.height()),
                          Qt::AlignRight | Qt::AlignVCenter, it->parola);
        destra -= larghezza + 3 + latoLegenda;
        pittore->drawPixmap(destra, area.center().y() - latoLegenda / 2 + 1,
                            Symbols::pixmap(it->simbolo, tinta, latoLegenda, pittore->device()->devicePixelRatioF()));
        destra -= 9;
    }
}

void ListRowView::paint(QPainter* pittore, const QStyleOptionViewItem& opzione, const QModelIndex& indice) const {
    pittore->save();
    if (indice.data(ListeModel::IntestazioneRole).toBool()) {
        disegnaIntestazione(pittore, opzione, indice);
        pittore->restore();
        return;
    }
    const auto* modello = qobject_cast<const ListeModel*>(indice.model());
    const ListeModel::Voce& voce = modello->voce(indice.row());
    const bool scelta = opzione.state & QStyle::State_Selected;
    if (scelta) {
        QStyleOptionViewItem sfondo = opzione;
        sfondo.text.clear();
        QApplication::style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &sfondo, pittore, opzione.widget);
    }
    const QColor primario =
        scelta ? opzione.palette.color(QPalette::HighlightedText) : Palette::colore(Colore::primary);
    const QColor secondario = scelta ? primario : Palette::colore(Colore::secondary);
    const QRect area = opzione.rect.adjusted(margine, 6, -margine, -6);
    const int alto = opzione.fontMetrics.height();
    const StatoLista stato = voce.stato();

    pittore->drawPixmap(area.left(), area.top() + (alto - latoIcona) / 2,
                        Symbols::pixmap(simbolo(stato), scelta ? primario : Palette::colore(colore(stato)), latoIcona,
                                        pittore->device()->devicePixelRatioF()));
    const int sinistra = area.left() + latoIcona + 8;
    QRect prima(sinistra, area.top(), area.right() - sinistra, alto);

    // Name, then the tag in a lighter face on the same line while room is left.
    QFont grassetto = opzione.font;
    grassetto.setWeight(QFont::DemiBold);
    const QFontMetrics misureNome(grassetto);
    const QString tag = voce.lista.tag.trimmed();
    const int spazioNome = tag.isEmpty() ? prima.width() : prima.width() * 2 / 3;
    const QString nome = misureNome.elidedText(voce.lista.name, Qt::ElideRight, spazioNome);
    pittore->setFont(grassetto);
    pittore->setPen(primario);
    pittore->drawText(prima, Qt::AlignLeft | Qt::AlignVCenter, nome);
    if (!tag.isEmpty()) {
        const QFont testoTag = piccolo(opzione.font);
        const int inizio = misureNome.horizontalAdvance(nome) + 8;
        const QRect zonaTag(prima.left() + inizio, prima.top(), prima.width() - inizio, alto);
        pittore->setFont(testoTag);
        pittore->setPen(secondario);
        pittore->drawText(zonaTag, Qt::AlignLeft | Qt::AlignVCenter,
                          QFontMetrics(testoTag).elidedText(tag, Qt::ElideRight, zonaTag.width()));
    }

    // Rows and day of import; the contacted count on the right while a send is under way.
    const QFont testoPiccolo = piccolo(opzione.font);
    const QFontMetrics misure(testoPiccolo);
    QRect seconda(sinistra, area.top() + alto + 2, area.right() - sinistra, alto);
    pittore->setFont(testoPiccolo);
    if (stato == StatoLista::inCorso) {
        const QString contattati = formato(ListeModel::tr("contattati %lld di %lld"),
                                           qint64(voce.avanzamento.contattati), qint64(voce.avanzamento.validi));
        pittore->setPen(scelta ? primario : Palette::colore(Colore::orange));
        pittore->drawText(seconda, Qt::AlignRight | Qt::AlignVCenter, contattati);
        seconda.setRight(seconda.right() - misure.horizontalAdvance(contattati) - 8);
    }
    const QString righe = formato(ListeModel::tr("%lld righe"), qint64(voce.avanzamento.righe));
    pittore->setPen(secondario);
    pittore->drawText(seconda, Qt::AlignLeft | Qt::AlignVCenter,
                      misure.elidedText(righe + QStringLiteral(" · ") + giornoBreve(voce.lista.importedAt),
                                        Qt::ElideRight, seconda.width()));
    pittore->restore();
}
