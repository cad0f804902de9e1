#include "ui/Comandi.h"

#include <QAbstractItemView>
#include <QAction>

void eliminaConCanc(QAbstractItemView* elenco, std::function<void()> elimina) {
    auto* azione = new QAction(elenco);
    azione->setObjectName(QStringLiteral("eliminaConCanc"));
    azione->setShortcuts(QKeySequence::Delete);
    azione->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(azione, &QAction::triggered, elenco, std::move(elimina));
    elenco->addAction(azione);
}
