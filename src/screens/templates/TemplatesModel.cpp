#include "screens/templates/TemplatesModel.h"

#include "composition/MIMEBuilder.h"
#include "composition/TemplateRenderer.h"
#include "records/Store.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace TemplatesModel {

namespace {
QString tr(const char* testo) {
    return QCoreApplication::translate("TemplatesView", testo);
}
} // namespace

QList<MessageTemplate> modelli(const Store& store) {
    QList<MessageTemplate> tutti = store.all<MessageTemplate>();
    std::stable_sort(tutti.begin(), tutti.end(),
                     [](const MessageTemplate& a, const MessageTemplate& b) { return a.updatedAt > b.updatedAt; });
    return tutti;
}

QList<ContactList> liste(const Store& store) {
    QList<ContactList> tutte = store.all<ContactList>();
    std::stable_sort(tutte.begin(), tutte.end(),
                     [](const ContactList& a, const ContactList& b) { return a.importedAt > b.importedAt; });
    return tutte;
}

RecordId nuovoModello(Store& store) {
    MessageTemplate modello(
        tr("Nuovo modello"), QString(),
        QStringLiteral("<div>Ciao {{nome}},</div><div><br></div><div>scrivi qui il messaggio.</div>"));
    store.insert(modello);
    store.save();
    return modello.id;
}

RecordId duplica(Store& store, RecordId sorgente) {
    const auto originale = store.find<MessageTemplate>(sorgente);
    if (!originale)
        return 0;
    MessageTemplate copia(originale->name + tr(" (copia)"), originale->subject, originale->html);
    copia.plainOverride = originale->plainOverride;
    copia.note = originale->note;
    if (!store.insert(copia))
        return 0;
    for (const TemplateAttachment& allegato : store.attachments(sorgente)) {
        TemplateAttachment doppio(allegato.filename, allegato.mimeType, allegato.data);
        doppio.templateId = copia.id;
        store.insert(doppio);
    }
    store.save();
    return copia.id;
}

void elimina(Store& store, RecordId modello) {
    store.remove<MessageTemplate>(modello);
    store.save();
}

bool applicaCorpo(Store& store, RecordId id, const QString& html) {
    auto modello = store.find<MessageTemplate>(id);
    if (!modello || modello->html == html)
        return false;
    modello->html = html;
    modello->updatedAt = QDateTime::currentDateTimeUtc();
    store.update(*modello);
    store.save();
    return true;
}

void applicaIntestazione(Store& store, RecordId id, const QString& nome, const QString& oggetto) {
    auto modello = store.find<MessageTemplate>(id);
    if (!modello || (modello->name == nome && modello->subject == oggetto))
        return;
    modello->name = nome;
    modello->subject = oggetto;
    store.update(*modello);
    store.save();
}

QStringList campiDisponibili(const std::optional<ContactList>& lista) {
    return lista ? lista->columns : QStringList();
}

QStringList campiMancanti(const MessageTemplate& modello, const std::optional<ContactList>& lista) {
    if (!lista)
        return {};
    return TemplateRenderer::missingFields(modello.subject + u' ' + modello.html, lista->columns);
}

qint64 totaleAllegati(const QList<TemplateAttachment>& allegati) {
    qint64 totale = 0;
    for (const TemplateAttachment& allegato : allegati)
        totale += allegato.data.size();
    return totale;
}

bool allegatiOltreSoglia(const QList<TemplateAttachment>& allegati) {
    return totaleAllegati(allegati) > sogliaAllegati;
}

int aggiungiAllegati(Store& store, RecordId modello, const QStringList& percorsi) {
    int aggiunti = 0;
    for (const QString& percorso : percorsi) {
        QFile file(percorso);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray dati = file.readAll();
        if (file.error() != QFileDevice::NoError)
            continue;
        const QFileInfo info(percorso);
        TemplateAttachment allegato(info.fileName(), MIMEBuilder::mimeType(info.suffix()), dati);
        allegato.templateId = modello;
        if (store.insert(allegato))
            ++aggiunti;
    }
    store.save();
    return aggiunti;
}

void eliminaAllegato(Store& store, RecordId allegato) {
    store.remove<TemplateAttachment>(allegato);
    store.save();
}

QString nomeMostrato(const MessageTemplate& modello) {
    return modello.name.isEmpty() ? tr("Senza nome") : modello.name;
}

QString oggettoMostrato(const MessageTemplate& modello) {
    return modello.subject.isEmpty() ? tr("(nessun oggetto)") : modello.subject;
}

} // namespace TemplatesModel
