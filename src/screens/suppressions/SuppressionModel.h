#pragma once

#include "records/Store.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QMap>

#include <optional>

// The global list of excluded addresses, newest first, with the category of each derived from its reason,
// filtered by category and by a text in address or reason. A run's new entries are read alone instead of
// the whole list.
class SuppressionModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Colonna { indirizzo, perche, significato, dal, colonne };

    struct Voce {
        Suppression esclusione;
        MotivoEsclusione motivo; // deduced at each reading of the store, never stored
    };
    struct Conteggio {
        MotivoEsclusione motivo;
        int quanti;
    };

    explicit SuppressionModel(Store& store, QObject* genitore = nullptr);

    int rowCount(const QModelIndex& genitore = {}) const override;
    int columnCount(const QModelIndex& genitore = {}) const override;
    QVariant data(const QModelIndex& indice, int ruolo = Qt::DisplayRole) const override;
    QVariant headerData(int sezione, Qt::Orientation orientamento, int ruolo = Qt::DisplayRole) const override;

    std::optional<MotivoEsclusione> filtro() const { return m_filtro; }
    void setFiltro(std::optional<MotivoEsclusione> filtro);
    const QString& ricerca() const { return m_ricerca; }
    void setRicerca(const QString& ricerca);

    int tutti() const { return int(m_esclusi.size()); }
    int filtrati() const { return int(m_filtrati.size()); }
    // The categories present, most entries first; filter and search don't touch it.
    QList<Conteggio> conteggi() const;

    const Voce* voce(int riga) const;
    // The row of an entry among the filtered ones, or -1.
    int rigaDi(RecordId id) const;
    const Voce* trova(RecordId id) const;

    // Reads the whole list again.
    void ricarica();
    // Follows a change of the store: entries added after the last one known are read alone.
    void segui();

    // Adds one address typed by the user; false when it isn't an address or is already there.
    bool aggiungi(const QString& indirizzo, const QString& motivo);
    // The addresses of every entry, as stored (normalised).
    QSet<QString> indirizzi() const;
    void togli(RecordId id);
    // The CSV text of the filtered entries.
    QString testoCSV() const;

    // While an import inserts, changes of the store wait for its end.
    void sospendi(bool sospeso);
    // Entries this screen has just inserted and saved, oldest first: they go on top without reading the
    // store again.
    void accogli(QList<Suppression> nuove);

Q_SIGNALS:
    // Entries, filter or search changed: tiles, counter and detail follow.
    void cambiato();

private:
    void rifiltra();
    // Newest first.
    void mettiInCima(const QList<Suppression>& nuove);
    bool passa(const Voce& voce) const;
    QIcon iconaMotivo(MotivoEsclusione motivo) const;

    Store& m_store;
    QList<Voce> m_esclusi;
    QList<int> m_filtrati;
    std::optional<MotivoEsclusione> m_filtro;
    QString m_ricerca;
    RecordId m_ultimoId = 0;
    bool m_sospeso = false;
    mutable QMap<MotivoEsclusione, QIcon> m_icone;
};
