#pragma once

#include "records/Store.h"

#include <QTemporaryDir>

#include <memory>

// A real store file in a folder of its own, removed with the object.
struct TempStore {
    TempStore();
    QString path() const { return dir.filePath(QStringLiteral("brezzario.sqlite")); }
    // Closes the store and opens the same file again, as a restart would.
    void reopen();

    QTemporaryDir dir;
    std::unique_ptr<Store> store;
};

namespace TestSupport {

// A list "Clienti" with one row for each address (columns "email" and "nome", the name "Cliente N"), the
// template "Saldi" using the name, and the draft campaign "Primavera" joining them, saved; gives the campaign.
Campaign campagnaSuLista(Store& store, const QStringList& indirizzi);

} // namespace TestSupport
