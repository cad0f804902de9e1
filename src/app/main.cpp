#include "app/SingleInstance.h"
#include "records/Store.h"
#include "settings/SettingsStore.h"

#include <QApplication>
#include <QMainWindow>
#include <QMessageBox>
#include <QStandardPaths>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("velarmo"));
    QApplication::setApplicationName(QStringLiteral("Brezzario"));
    QApplication::setApplicationVersion(QStringLiteral(BREZZARIO_VERSION));
    Q_INIT_RESOURCE(resources);

    SingleInstance instance(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    if (!instance.acquired()) {
        QMessageBox::information(nullptr, QStringLiteral("Brezzario"),
                                 QObject::tr("Brezzario è già aperto. Usa la finestra già aperta."));
        return 0;
    }

    SettingsStore settings;
    auto store = Store::openDefault();

    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Brezzario"));
    window.setMinimumSize(980, 620);
    window.resize(1340, 880);
    window.show();
    return app.exec();
}
