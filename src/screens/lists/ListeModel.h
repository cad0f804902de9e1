#pragma once

#include "records/Store.h"
#include "screens/lists/StatoLista.h"

#include <QAbstractListModel>

// The master list: the active lists under "Attive", then the archived ones under "Archiviate" when there
// are any, newest import first. Section headers are rows that can't be selected.
class ListeModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Ruolo { IntestazioneRole = Qt::UserRole + 1, ListaRole, LegendaRole };

    struct Voce {
        bool intestazione = false;
        QString titolo;       // of a header
        bool legenda = false; // the header that also holds the legend of the states
        ContactList lista;
        Store::AvanzamentoLista avanzamento;
        StatoLista stato() const { return statoDa(avanzamento); }
    };

    explicit ListeModel(Store& store, QObject* genitore = nullptr);

    // Reads the lists again, and every list's progress unless told that only the lists changed.
    void ricarica(bool rileggiAvanzamento = true);

    int rowCount(const QModelIndex& genitore = {}) const override;
    QVariant data(const QModelIndex& indice, int ruolo) const override;
    Qt::ItemFlags flags(const QModelIndex& indice) const override;

    const Voce& voce(int riga) const { return m_voci.at(riga); }
    // The row of a list, or -1.
    int rigaDi(RecordId lista) const;
    bool vuoto() const { return m_liste == 0; }
    // Whether every list's progress has been read at least once.
    bool avanzamentoPronto() const { return m_letto; }

Q_SIGNALS:
    void avanzamentoLetto();

private:
    void applica(QHash<RecordId, Store::AvanzamentoLista> avanzamenti);

    Store& m_store;
    QList<Voce> m_voci;
    int m_liste = 0;
    QHash<RecordId, Store::AvanzamentoLista> m_avanzamenti;
    quint64 m_generazione = 0;
    bool m_letto = false;
    bool m_inLettura = false;
    bool m_daRileggere = false;
};

// The help text of the legend of the states.
QString aiutoLegenda();
// A day as the master list shows it: day, abbreviated month and year, in Italian.
QString giornoBreve(const QDateTime& istante);
// The same day with its hour and minute: "23 nov 2026, 09:05".
QString giornoEOra(const QDateTime& istante);
// A numeric date with a short time, as the recipients' table shows a last send: "23/11/26 09:05".
QString dataNumerica(const QDateTime& istante);
