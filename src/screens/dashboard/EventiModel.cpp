#include "screens/dashboard/EventiModel.h"

#include "screens/dashboard/SendDashboardModel.h"
#include "ui/Palette.h"
#include "ui/Symbols.h"

#include <QFontDatabase>

EventiModel::EventiModel(std::shared_ptr<SendEngine> motore, QObject* genitore)
    : QAbstractTableModel(genitore), m_motore(std::move(motore)), m_generazione(m_motore->generazione()),
      m_scartati(m_motore->eventiScartati()), m_righe(int(m_motore->eventi().size())) {}

int EventiModel::rowCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : m_righe;
}

int EventiModel::columnCount(const QModelIndex& genitore) const {
    return genitore.isValid() ? 0 : colonne;
}

QVariant EventiModel::data(const QModelIndex& indice, int ruolo) const {
    const QList<SendEngine::EventoInvio>& eventi = m_motore->eventi();
    // Between a change of the engine and the next sync the list may be shorter than the rows.
    if (!indice.isValid() || indice.row() >= eventi.size())
        return {};
    const SendEngine::EventoInvio& evento = eventi.at(indice.row());
    switch (ruolo) {
    case Qt::DisplayRole:
        switch (indice.column()) {
        case ora:
            return evento.data.toLocalTime().time().toString(QStringLiteral("HH:mm:ss"));
        case destinatario:
            return evento.email;
        case dettaglio:
            return evento.dettaglio;
        }
        return {};
    case Qt::DecorationRole:
        return indice.column() == ora ? QVariant(iconaEsito(evento.esito)) : QVariant();
    case Qt::ToolTipRole:
        return indice.column() == dettaglio && !evento.dettaglio.isEmpty() ? QVariant(evento.dettaglio) : QVariant();
    case Qt::ForegroundRole:
        return indice.column() == destinatario ? QVariant() : QVariant(Palette::colore(Colore::secondary));
    case Qt::FontRole:
        return indice.column() == ora ? QVariant(QFontDatabase::systemFont(QFontDatabase::FixedFont)) : QVariant();
    }
    return {};
}

QIcon EventiModel::iconaEsito(SendStatus esito) const {
    auto trovata = m_icone.constFind(esito);
    if (trovata != m_icone.constEnd())
        return *trovata;
    const QIcon icona = Symbols::iconaColorata(SendDashboardModel::simboloEsito(esito),
                                               Palette::colore(SendDashboardModel::coloreEsito(esito)));
    m_icone.insert(esito, icona);
    return icona;
}

void EventiModel::sincronizza() {
    const int presenti = int(m_motore->eventi().size());
    if (m_generazione != m_motore->generazione()) {
        beginResetModel();
        m_generazione = m_motore->generazione();
        m_scartati = m_motore->eventiScartati();
        m_righe = presenti;
        endResetModel();
        return;
    }
    const qint64 tolti = m_motore->eventiScartati() - m_scartati;
    if (tolti > 0) {
        const int via = int(qMin<qint64>(tolti, m_righe));
        if (via > 0) {
            beginRemoveRows({}, 0, via - 1);
            m_righe -= via;
            endRemoveRows();
        }
        m_scartati = m_motore->eventiScartati();
    }
    if (presenti > m_righe) {
        beginInsertRows({}, m_righe, presenti - 1);
        m_righe = presenti;
        endInsertRows();
    }
}
