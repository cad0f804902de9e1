#include "screens/lists/StatoLista.h"

#include "records/EmailSyntax.h"
#include "records/Statuses.h"

#include <QCoreApplication>

namespace {
QString tr(const char* testo) {
    return QCoreApplication::translate("ListsView", testo);
}
} // namespace

StatoLista statoDa(const Store::AvanzamentoLista& avanzamento) {
    if (avanzamento.validi == 0)
        return StatoLista::senzaValidi;
    if (avanzamento.contattati == 0)
        return StatoLista::daFare;
    if (avanzamento.contattati < avanzamento.validi)
        return StatoLista::inCorso;
    return StatoLista::completata;
}

QString simbolo(StatoLista stato) {
    switch (stato) {
    case StatoLista::senzaValidi:
        return QStringLiteral("exclamationmark.circle");
    case StatoLista::daFare:
        return QStringLiteral("circle");
    case StatoLista::inCorso:
        return QStringLiteral("checkmark.circle");
    case StatoLista::completata:
        return QStringLiteral("checkmark.circle.fill");
    }
    return {};
}

Colore colore(StatoLista stato) {
    switch (stato) {
    case StatoLista::senzaValidi:
        return Colore::secondary;
    case StatoLista::daFare:
        return Colore::blue;
    case StatoLista::inCorso:
        return Colore::orange;
    case StatoLista::completata:
        return Colore::green;
    }
    return Colore::secondary;
}

QString descrizione(StatoLista stato, const Store::AvanzamentoLista& avanzamento) {
    switch (stato) {
    case StatoLista::senzaValidi:
        return tr("Nessun destinatario valido in questa lista");
    case StatoLista::daFare:
        return tr("Da fare: nessun destinatario è stato ancora contattato");
    case StatoLista::inCorso:
        return tr("In corso: contattati ") + QString::number(avanzamento.contattati) + tr(" di ") +
               QString::number(avanzamento.validi);
    case StatoLista::completata:
        return tr("Completata: tutti i destinatari validi sono stati contattati");
    }
    return {};
}

StatoRiga statoRiga(bool isExcluded, const QString& email) {
    if (isExcluded)
        return StatoRiga::esclusa;
    return isValidEmailSyntax(email) ? StatoRiga::valida : StatoRiga::nonValida;
}

QString simbolo(StatoRiga stato) {
    switch (stato) {
    case StatoRiga::esclusa:
        return QStringLiteral("minus.circle");
    case StatoRiga::valida:
        return QStringLiteral("checkmark.circle");
    case StatoRiga::nonValida:
        return QStringLiteral("exclamationmark.triangle");
    }
    return {};
}

Colore colore(StatoRiga stato) {
    switch (stato) {
    case StatoRiga::esclusa:
        return Colore::secondary;
    case StatoRiga::valida:
        return Colore::green;
    case StatoRiga::nonValida:
        return Colore::orange;
    }
    return Colore::secondary;
}

QString testo(StatoRiga stato) {
    switch (stato) {
    case StatoRiga::esclusa:
        return tr("Esclusa manualmente");
    case StatoRiga::valida:
        return tr("Destinatario valido");
    case StatoRiga::nonValida:
        return tr("Indirizzo mancante o non valido");
    }
    return {};
}

QString parolaEsito(const QString& esitoRaw) {
    const std::optional<SendStatus> esito = sendStatusFromRaw(esitoRaw);
    return esito ? label(*esito) : QStringLiteral("—");
}

Colore coloreEsito(const QString& esitoRaw) {
    const std::optional<SendStatus> esito = sendStatusFromRaw(esitoRaw);
    if (esito == SendStatus::sent)
        return Colore::green;
    if (esito == SendStatus::failed)
        return Colore::red;
    return Colore::secondary;
}

QString aiutoEsito(const QString& dettaglio, const QString& campagna) {
    if (!dettaglio.isEmpty())
        return dettaglio + QStringLiteral(" — ") + campagna;
    return tr("Campagna: ") + campagna;
}
