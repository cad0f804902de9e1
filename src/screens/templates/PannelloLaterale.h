#pragma once

#include "records/ContactList.h"
#include "records/MessageTemplate.h"
#include "records/TemplateAttachment.h"

#include <QWidget>

#include <functional>
#include <optional>

class NotaView;
class QComboBox;
class QLabel;
class QPushButton;
class QVBoxLayout;

// The side of the template pane: the fields of the reference list as chips, the attachments, and the
// way to the preview.
class PannelloLaterale : public QWidget {
    Q_OBJECT
public:
    explicit PannelloLaterale(QWidget* genitore = nullptr);

    void mostra(const MessageTemplate& modello, const std::optional<ContactList>& riferimento,
                const QList<ContactList>& liste, const QList<TemplateAttachment>& allegati);

Q_SIGNALS:
    void listaScelta(RecordId lista); // 0 for "Nessuna"
    void campoScelto(const QString& nome);
    void aggiungiAllegati();
    void eliminaAllegato(RecordId allegato);
    void anteprima();

private:
    QWidget* sezioneCampi();
    QWidget* sezioneAllegati();
    QWidget* sezioneProva();
    void mostraCampi(const QStringList& campi);
    void mostraAllegati(const QList<TemplateAttachment>& allegati);

    QComboBox* m_liste = nullptr;
    QList<RecordId> m_idListe;
    QLabel* m_aiutoCampi = nullptr;
    QWidget* m_chip = nullptr;
    QStringList m_campiMostrati;
    bool m_campiPronti = false;
    NotaView* m_mancanti = nullptr;
    QLabel* m_nessunAllegato = nullptr;
    QWidget* m_righeAllegati = nullptr;
    QVBoxLayout* m_colonnaAllegati = nullptr;
    QList<QPair<RecordId, qint64>> m_allegatiMostrati;
    NotaView* m_oltreSoglia = nullptr;
};
