#pragma once

#include "records/MessageTemplate.h"

#include <QAbstractListModel>
#include <QStyledItemDelegate>

// The templates of the list column, newest change first: the name, and the subject below it.
class ModelliListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Ruolo { OggettoRole = Qt::UserRole + 1, IdRole };

    explicit ModelliListModel(QObject* genitore = nullptr);
    void imposta(QList<MessageTemplate> modelli);
    int riga(RecordId id) const;
    RecordId id(int riga) const;

    int rowCount(const QModelIndex& genitore = {}) const override;
    QVariant data(const QModelIndex& indice, int ruolo = Qt::DisplayRole) const override;

private:
    struct Voce {
        RecordId id;
        QString nome;
        QString oggetto;
        bool operator==(const Voce&) const = default;
    };
    QList<Voce> m_voci;
};

// Two lines per template, the subject smaller and dimmer.
class ModelloDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* pittore, const QStyleOptionViewItem& opzione, const QModelIndex& indice) const override;
    QSize sizeHint(const QStyleOptionViewItem& opzione, const QModelIndex& indice) const override;
};
