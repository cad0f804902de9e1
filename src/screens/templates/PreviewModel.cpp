#include "screens/templates/PreviewModel.h"

#include "composition/EmailHTML.h"
#include "composition/TemplateRenderer.h"
#include "records/EmailSyntax.h"
#include "records/Store.h"

#include <QCoreApplication>

#include <algorithm>

namespace PreviewModel {

QList<ContactRow> righe(const Store& store, const std::optional<ContactList>& lista) {
    if (!lista)
        return {};
    QList<ContactRow> valide;
    for (ContactRow& riga : store.rows(lista->id))
        if (!riga.isExcluded && isValidEmailSyntax(riga.email))
            valide.append(std::move(riga));
    std::stable_sort(valide.begin(), valide.end(),
                     [](const ContactRow& a, const ContactRow& b) { return a.email < b.email; });
    return valide;
}

int indiceEffettivo(const QList<ContactRow>& righe, int indiceRiga) {
    if (righe.isEmpty())
        return -1;
    return std::clamp(indiceRiga, 0, int(righe.size()) - 1);
}

RowValues valoriCorrenti(const QList<ContactRow>& righe, int indiceRiga) {
    const int indice = indiceEffettivo(righe, indiceRiga);
    return indice < 0 ? RowValues() : righe.at(indice).values;
}

QString oggetto(const MessageTemplate& modello, const RowValues& valori) {
    const QString reso = TemplateRenderer::substitute(modello.subject, valori, false);
    return reso.isEmpty() ? QCoreApplication::translate("PreviewSheet", "(vuoto)") : reso;
}

QString corpoRenderizzato(const MessageTemplate& modello, const RowValues& valori, const SMTPConfig& config) {
    return EmailHTML::wrap(TemplateRenderer::substitute(modello.html, valori, true), QString(),
                           EmailHTML::piePagina(config));
}

bool puoInviare(const QString& indirizzo, bool invioInCorso, bool configurato) {
    return isValidEmailSyntax(indirizzo) && !invioInCorso && configurato;
}

bool esitoPositivo(const QString& esito) {
    return esito.startsWith(QLatin1String("Messaggio"));
}

} // namespace PreviewModel
