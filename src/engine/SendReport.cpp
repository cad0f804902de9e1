#include "engine/SendReport.h"

#include "records/CSVText.h"

namespace SendReport {

QString testo(const QList<SendEngine::EventoInvio>& eventi) {
    QString risultato = QStringLiteral("ora,esito,destinatario,dettaglio\n");
    for (const SendEngine::EventoInvio& evento : eventi)
        risultato +=
            CSVText::riga({CSVText::data(evento.data), rawValue(evento.esito), evento.email, evento.dettaglio});
    return risultato;
}

QString nomeProposto(const QString& nomeCampagna) {
    const QString nome = nomeCampagna.isEmpty() ? QStringLiteral("campagna") : nomeCampagna;
    return QStringLiteral("rapporto-") + nome + QStringLiteral(".csv");
}

} // namespace SendReport
