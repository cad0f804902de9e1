#include "app/SettingsWindow.h"

#include "app/SectionScreens.h"

#include <QVBoxLayout>

SettingsWindow::SettingsWindow(Ambiente ambiente, QWidget* genitore) : QWidget(genitore, Qt::Window) {
    setObjectName(QStringLiteral("finestraImpostazioni"));
    setWindowTitle(titolo(Sezione::impostazioni));
    setFixedWidth(larghezza);
    setMinimumHeight(480);
    auto* colonna = new QVBoxLayout(this);
    colonna->setContentsMargins(0, 0, 0, 0);
    colonna->addWidget(creaSchermata(Sezione::impostazioni, ambiente, this));
}
