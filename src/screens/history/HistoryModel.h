#pragma once

#include "records/Store.h"

#include <QAbstractTableModel>
#include <QHash>

// Every log of the store, newest first, filtered by status and by a text in address or subject. Rows are
// read from the store a page at a time when the view asks for them; a run's new logs are added on top
// instead of reading the history again.
class HistoryModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Colonna { quando, stato, destinatario, campagna, servizio, oggetto, dettaglio, colonne };

    explicit HistoryModel(Store& store, QObject* genitore = nullptr);

    int rowCount(const QModelIndex& genitore = {}) const override;
    int columnCount(const QModelIndex& genitore = {}) const override;
    QVariant data(const QModelIndex& indice, int ruolo = Qt::DisplayRole) const override;
    QVariant headerData(int sezione, Qt::Orientation orientamento, int ruolo = Qt::DisplayRole) const override;

    const FiltroRegistri& filtro() const { return m_filtro; }
    void setFiltroStato(std::optional<SendStatus> stato);
    void setRicerca(const QString& ricerca);
    // How many logs pass the filter: the rows of the table.
    qint64 righe() const { return m_totale; }

    // Reads the history again from the store.
    void ricarica();
    // Follows a change of the store: new logs go on top, anything else reads again.
    void segui(Store::Entities cosa);

    // The CSV text of what the table shows, in its order.
    QString testoCSV() const;
    // Deletes every log, not only the filtered ones, and saves.
    void svuota();

Q_SIGNALS:
    void righeCambiate(qint64 righe);

private:
    const RigaStorico* riga(int numero) const;

    Store& m_store;
    FiltroRegistri m_filtro;
    qint64 m_totale = 0;
    // Every log up to m_ultimoId, filtered or not.
    qint64 m_tuttiFinoAUltimo = 0;
    RecordId m_ultimoId = 0;
    QDateTime m_piuRecente;
    // Rows read so far, keyed by their place counted from the oldest, which a new log on top doesn't move.
    mutable QHash<qint64, RigaStorico> m_letti;
};
