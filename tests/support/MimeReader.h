#pragma once

#include <QByteArray>
#include <QJsonObject>

namespace TestSupport {

// What Python's standard email package makes of a message (see mime_reader.py for the fields). An
// empty object, with the reason printed, when the reader could not run or produced no JSON.
QJsonObject readWithPython(const QByteArray& message);

} // namespace TestSupport
