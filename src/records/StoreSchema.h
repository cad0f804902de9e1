#pragma once

#include <QStringList>

// The tables and indexes of schema 1.0.0, in the order they are created.
namespace StoreSchema {
const QStringList& statements();
}
