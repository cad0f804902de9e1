#pragma once

#include "TestEnvironment.h"

#include <QPixmap>
#include <QWidget>

namespace TestSupport {

// Saves what a GUI test checked into the artifacts folder, for a person to look at; the name says which
// test and which moment.
inline bool salvaSchermata(QWidget* widget, const QString& nome) {
    QCoreApplication::processEvents();
    return widget->grab().save(artifactsDir() + u'/' + nome + QStringLiteral(".png"));
}

} // namespace TestSupport
