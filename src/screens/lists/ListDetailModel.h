#pragma once

#include "records/Store.h"

#include <QAbstractTableModel>
#include <QPointer>
#include <QSet>

#include <optional>

// The detail of one list without widgets: its head, its rows by address with the search applied, the set of
// selected rows (which survives the search), and the commands on them. The table has the state icon, one
// column per column of the list, then "Ricevute", "Ultimo invio" and "Ultimo esito".
class ListDetailModel : public QAbstractTableModel {
    Q_OBJECT
public:
    ListDetailModel(Store& store, RecordId lista, QObject* genitore = nullptr);
    ~ListDetailModel() override;

    // Reads the list and its rows again; the search and the selection stay. Changes in the store bring this
    // about by themselves, coalesced.
    void ricarica();
    bool esiste() const { return m_lista.has_value(); }
    const ContactList& lista() const { return *m_lista; }

    // Head fields, each saved at once.
    void setNome(const QString& nome);
    void setTag(const QString& tag);
    void setNote(const QString& note);
    void setArchiviata(bool archiviata);
    // Chooses the address column and recomputes every row's address from it.
    void setColonnaEmail(const QString& colonna);

    int validi() const { return m_validi; }
    int totale() const { return int(m_righe.size()); }

    QString ricerca() const { return m_ricerca; }
    // Whether the rows have arrived: on a store file they are read beside the interface.
    bool caricato() const { return m_caricato; }
    void setRicerca(const QString& ricerca);

    // Selection, by row identity; kept for rows that the search hides.
    const QSet<RecordId>& selezioneRighe() const { return m_selezione; }
    void setSelezioneRighe(QSet<RecordId> selezione) { m_selezione = std::move(selezione); }
    // The rows of the list, not only of the search, whose identity is selected.
    QList<RecordId> righeSelezionate() const;
    RecordId idAlla(int riga) const;
    // The shown row of an identity, or -1 when the search hides it or it is gone.
    int rigaDi(RecordId id) const;

    void escludiSelezionate();
    void includiSelezionate();
    // Puts every selected row with a valid address on the global suppression list, keeping earlier reasons.
    void aggiungiAgliEsclusiGlobali();
    // Writes the whole list, whatever the search, with its statistics. A failing write is ignored.
    void esporta(const QString& percorso) const;

    int rowCount(const QModelIndex& genitore = {}) const override;
    int columnCount(const QModelIndex& genitore = {}) const override;
    QVariant data(const QModelIndex& indice, int ruolo) const override;
    QVariant headerData(int sezione, Qt::Orientation orientamento, int ruolo) const override;

    // Column positions around the list's own columns.
    int colonnaRicevute() const { return int(m_colonne.size()) + 1; }
    int colonnaUltimoInvio() const { return colonnaRicevute() + 1; }
    int colonnaUltimoEsito() const { return colonnaRicevute() + 2; }

Q_SIGNALS:
    // After a reload or a new search: the view puts the selection back on the rows it shows.
    void righeCambiate();
    // The list's own fields changed (or the list is gone).
    void testaCambiata();

private:
    struct Caricamento;
    static Caricamento carica(QList<Store::RigaDettaglio> righe);
    void applica(Caricamento caricamento);
    void rileggiTesta();
    void filtra();
    const RowValues& valori(int indice) const;
    void salvaLista();

    Store& m_store;
    RecordId m_id;
    std::optional<ContactList> m_lista;
    QStringList m_colonne;
    QList<Store::RigaDettaglio> m_righe;
    QList<int> m_filtrate; // indices into m_righe
    int m_validi = 0;
    QString m_ricerca;
    QSet<RecordId> m_selezione;
    // The lower-cased values of every row, made with the load; the search reads them.
    QList<QString> m_testi;
    bool m_caricato = false;
    bool m_inLettura = false;
    bool m_daRileggere = false;
    quint64 m_generazione = 0;
    mutable QHash<int, RowValues> m_valori;
};

// The text of a list's export: its columns and the nine statistics, one line per row.
QString testoEsportazione(const ContactList& lista, const QList<ContactRow>& righe);
// Puts one address on the global suppression list, unless it is there already.
void aggiungiEsclusione(Store& store, const QString& email, const QString& nomeLista);
