#include "TempStore.h"

#include <QtTest>

TempStore::TempStore() {
    QString error;
    store = Store::open(path(), &error);
    if (!store)
        qFatal("test store could not be opened: %s", qUtf8Printable(error));
}

void TempStore::reopen() {
    store.reset();
    QString error;
    store = Store::open(path(), &error);
    if (!store)
        qFatal("test store could not be reopened: %s", qUtf8Printable(error));
}

namespace TestSupport {

Campaign campagnaSuLista(Store& store, const QStringList& indirizzi) {
    ContactList lista(QStringLiteral("Clienti"), QStringLiteral("clienti.csv"), {"email", "nome"},
                      QStringLiteral("email"));
    store.insert(lista);
    QList<ContactRow> righe;
    for (qsizetype i = 0; i < indirizzi.size(); ++i)
        righe.append(
            ContactRow({{"email", indirizzi.at(i)}, {"nome", QStringLiteral("Cliente %1").arg(i)}}, indirizzi.at(i)));
    store.insertRows(lista.id, righe);
    MessageTemplate modello(QStringLiteral("Saldi"), QStringLiteral("Saldi per {{nome}}"),
                            QStringLiteral("<p>Gentile {{nome}}</p>"));
    store.insert(modello);
    Campaign campagna(QStringLiteral("Primavera"));
    campagna.listId = lista.id;
    campagna.templateId = modello.id;
    store.insert(campagna);
    store.save();
    return campagna;
}

} // namespace TestSupport
