#pragma once

#include "import/CSVParser.h"
#include "records/ContactList.h"
#include "records/Store.h"

#include <QSet>
#include <QUuid>

#include <optional>

// A file read once and parked while the user decides how it becomes a list. The path is kept for names
// only; the file is never read again.
struct PendingImport {
    QUuid id = QUuid::createUuid();
    QString url;
    CSVParser::RawTable raw;
};

// What reading a file gave: the parked file, or the Italian text of why it can't be imported.
struct LetturaFile {
    std::optional<PendingImport> pending;
    QString errore;
};

// Reads and parses the whole file. Safe to run off the main thread: it touches nothing shared.
LetturaFile leggiFile(const QString& percorso);

// The file's name without its last extension: "clienti.2026.csv" gives "clienti.2026".
QString nomePredefinito(const QString& percorso);
// The words for a delimiter, as the sheet shows them.
QString descrizioneDelimitatore(QChar delimitatore);

// The state of the import sheet and everything it derives, without any widget. Every derived value comes
// from the parked file and the header row alone; only importa() writes.
class ImportSheetState {
public:
    explicit ImportSheetState(PendingImport pending);

    const PendingImport& pending() const { return m_pending; }

    QString nome;
    QString tag;
    QString note;
    QString colonnaEmail;
    bool scartaSenzaEmail = true;
    bool rimuoviDuplicati = true;

    qsizetype rigaIntestazione() const { return m_rigaIntestazione; }
    // Moving the header row chooses the address column again, throwing away a choice made by hand.
    void setRigaIntestazione(qsizetype riga);
    // The stepper's upper bound: the last raw row, but never past row 30 once the file has 32 rows.
    qsizetype massimaRigaIntestazione() const;

    const CSVParser::Table& tabellaCorrente() const;
    // The data rows shown in the preview: all of them up to 8, the first 8 beyond.
    QList<QStringList> righeAnteprima() const;
    qsizetype conteggioValide() const;
    QString descrizioneDelimitatore() const;
    void aggiornaColonnaEmail();
    bool importabile() const;

    // The data rows from `inizio` up to `fine` that go into the list, in file order, with the addresses already
    // taken before them and normalised. Their values, encoded as the store keeps them, are written into
    // `valori`, which the rows look into.
    QList<Store::RigaCodificata> righeCodificate(qsizetype inizio, qsizetype fine, QSet<QString>& visti,
                                                 QByteArray& valori) const;
    // The list as it is about to be stored, without its identity.
    ContactList listaDaImportare() const;
    // Stores the list and its rows and saves once. A failing save is ignored; the list is given back.
    ContactList importa(Store& store) const;

private:
    qsizetype indiceColonnaEmail() const;
    // Whether a data row goes into the list, with its address normalised.
    bool prendi(const CSVParser::Row& riga, qsizetype colonna, QSet<QString>& visti, QString* indirizzo) const;

    PendingImport m_pending;
    qsizetype m_rigaIntestazione = 0;
    mutable std::optional<CSVParser::Table> m_tabella;
};

// An import carried out a slice of rows at a time, so that a screen can show its progress between slices. All
// slices go into the one transaction that the last one saves.
class Importazione {
public:
    // Inserts the list itself; the state must outlive the import.
    Importazione(const ImportSheetState& stato, Store& store);

    // Inserts the next slice of rows; after the last one, saves once (a failing save is ignored) and says so.
    bool prossimaFetta();
    bool finita() const { return m_finita; }
    // Data rows gone through so far, out of all.
    qsizetype fatte() const { return m_inizio; }
    qsizetype totale() const;
    const ContactList& lista() const { return m_lista; }

private:
    const ImportSheetState& m_stato;
    Store& m_store;
    ContactList m_lista;
    QSet<QString> m_visti;
    qsizetype m_inizio = 0;
    bool m_finita = false;
};
