#pragma once

#include "engine/SendEngine.h"

#include <QAbstractTableModel>
#include <QIcon>
#include <QMap>

#include <memory>

// The register of a run: one row per event of the engine, oldest first. It follows the engine's bounded
// list by its ends (rows dropped in front, rows added behind) instead of reading it whole at each change,
// so that thousands of events cost the view nothing between two outcomes.
class EventiModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Colonna { ora, destinatario, dettaglio, colonne };

    explicit EventiModel(std::shared_ptr<SendEngine> motore, QObject* genitore = nullptr);

    int rowCount(const QModelIndex& genitore = {}) const override;
    int columnCount(const QModelIndex& genitore = {}) const override;
    QVariant data(const QModelIndex& indice, int ruolo = Qt::DisplayRole) const override;

    // Brings the rows in line with the engine.
    void sincronizza();

private:
    QIcon iconaEsito(SendStatus esito) const;

    std::shared_ptr<SendEngine> m_motore;
    quint64 m_generazione = 0;
    qint64 m_scartati = 0;
    int m_righe = 0;
    mutable QMap<SendStatus, QIcon> m_icone;
};
