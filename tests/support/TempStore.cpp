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
