#include "ui/PresentazioneMotivo.h"

#include <QCoreApplication>

namespace PresentazioneMotivo {

namespace {
QString tr(const char* testo) {
    return QCoreApplication::translate("PresentazioneMotivo", testo);
}
} // namespace

QString etichetta(MotivoEsclusione motivo) {
    switch (motivo) {
    case MotivoEsclusione::casellaInesistente:
        return tr("Casella inesistente");
    case MotivoEsclusione::casellaPiena:
        return tr("Casella piena");
    case MotivoEsclusione::dominioInesistente:
        return tr("Dominio inesistente");
    case MotivoEsclusione::dominioSenzaPosta:
        return tr("Dominio senza posta");
    case MotivoEsclusione::rifiutatoDalServer:
        return tr("Rifiutato dal server");
    case MotivoEsclusione::disiscritto:
        return tr("Ha chiesto di non essere contattato");
    case MotivoEsclusione::aggiuntoAMano:
        return tr("Escluso a mano");
    case MotivoEsclusione::importato:
        return tr("Importato da un elenco");
    }
    return {};
}

QString simbolo(MotivoEsclusione motivo) {
    switch (motivo) {
    case MotivoEsclusione::casellaInesistente:
        return QStringLiteral("person.crop.circle.badge.xmark");
    case MotivoEsclusione::casellaPiena:
        return QStringLiteral("tray.full");
    case MotivoEsclusione::dominioInesistente:
        return QStringLiteral("globe.badge.chevron.backward");
    case MotivoEsclusione::dominioSenzaPosta:
        return QStringLiteral("questionmark.circle");
    case MotivoEsclusione::rifiutatoDalServer:
        return QStringLiteral("hand.raised.slash");
    case MotivoEsclusione::disiscritto:
        return QStringLiteral("envelope.badge.shield.half.filled");
    case MotivoEsclusione::aggiuntoAMano:
        return QStringLiteral("hand.point.up.left");
    case MotivoEsclusione::importato:
        return QStringLiteral("square.and.arrow.down");
    }
    return {};
}

Colore colore(MotivoEsclusione motivo) {
    switch (motivo) {
    case MotivoEsclusione::casellaInesistente:
    case MotivoEsclusione::dominioInesistente:
        return Colore::red;
    case MotivoEsclusione::casellaPiena:
    case MotivoEsclusione::dominioSenzaPosta:
        return Colore::yellow;
    case MotivoEsclusione::rifiutatoDalServer:
        return Colore::orange;
    case MotivoEsclusione::disiscritto:
        return Colore::purple;
    case MotivoEsclusione::aggiuntoAMano:
    case MotivoEsclusione::importato:
        return Colore::secondary;
    }
    return Colore::secondary;
}

QString spiegazione(MotivoEsclusione motivo) {
    switch (motivo) {
    case MotivoEsclusione::casellaInesistente:
        return tr("Il server del destinatario ha risposto che questa casella non esiste (o non esiste più). I messaggi "
                  "non arriveranno mai: continuare a scrivergli fa salire il tasso di rimbalzo e danneggia la "
                  "reputazione del mittente.");
    case MotivoEsclusione::casellaPiena:
        return tr("La casella esiste ma era piena o momentaneamente non disponibile. È un problema temporaneo: se vuoi "
                  "riprovare fra qualche settimana, puoi riabilitare l'indirizzo.");
    case MotivoEsclusione::dominioInesistente:
        return tr("Il dominio non risulta più registrato o non risponde: di solito l'azienda ha chiuso o ha cambiato "
                  "nome. Nessun indirizzo su quel dominio può ricevere posta.");
    case MotivoEsclusione::dominioSenzaPosta:
        return tr("Il dominio esiste ma non dichiara nel DNS dove ricevere la posta. Spesso è un sito senza casella; "
                  "l'esclusione è stata una scelta prudente e può essere annullata.");
    case MotivoEsclusione::rifiutatoDalServer:
        return tr("Il server del destinatario ha rifiutato il messaggio in modo definitivo, per esempio perché non "
                  "accetta posta da mittenti esterni o ha regole restrittive.");
    case MotivoEsclusione::disiscritto:
        return tr("Ha chiesto di non ricevere più messaggi. Va rispettato sempre: è anche l'obbligo di legge più "
                  "importante nelle comunicazioni commerciali.");
    case MotivoEsclusione::aggiuntoAMano:
        return tr("Aggiunto da te alla lista degli esclusi.");
    case MotivoEsclusione::importato:
        return tr("Arriva da un elenco di indirizzi da non contattare che hai importato.");
    }
    return {};
}

bool sconsigliaRiabilitare(MotivoEsclusione motivo) {
    switch (motivo) {
    case MotivoEsclusione::casellaInesistente:
    case MotivoEsclusione::dominioInesistente:
    case MotivoEsclusione::rifiutatoDalServer:
    case MotivoEsclusione::disiscritto:
        return true;
    default:
        return false;
    }
}

QString avvisoRiabilitazione() {
    return tr("Riabilitarlo non conviene: l'indirizzo non è recapitabile e ogni tentativo fa salire il tasso di "
              "rimbalzo.");
}

} // namespace PresentazioneMotivo
