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
