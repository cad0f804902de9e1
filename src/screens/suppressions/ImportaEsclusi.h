#pragma once

#include "records/Store.h"

#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <optional>

class SuppressionModel;

// Imports a file of addresses not to contact: any cell of the file that looks like an address, the first
// line too, goes on the list with the reason "importato da " and the file's name. Reading and parsing
// happen on a worker thread and the inserts a slice per turn of the event loop, so that a file of a
// million cells never freezes the window; the store is saved once at the end. A file that can't be read
// or parsed ends the import silently.
class ImportaEsclusi : public QObject {
    Q_OBJECT
public:
    ImportaEsclusi(Store& store, SuppressionModel& modello, QObject* genitore = nullptr);

    // The normalised addresses of a file's cells, header row first, in file order; nothing if the bytes
    // aren't a table.
    static std::optional<QStringList> candidati(const QByteArray& dati);

    bool inCorso() const { return m_inCorso; }
    void avvia(const QString& percorso);

Q_SIGNALS:
    void finito(int aggiunti);

private:
    void letti(std::optional<QStringList> candidati, const QString& nomeFile);
    void inserisciParte();
    void concludi();

    Store& m_store;
    SuppressionModel& m_modello;
    bool m_inCorso = false;
    QStringList m_candidati;
    qsizetype m_prossimo = 0;
    QSet<QString> m_presenti;
    QString m_motivo;
    QList<Suppression> m_inseriti;
    QTimer m_passo;
};
