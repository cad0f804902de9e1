#include "app/BrezzarioApp.h"
#include "app/MainWindow.h"
#include "app/SingleInstance.h"

#include <QApplication>
#include <QMessageBox>
#include <QStandardPaths>

#include <unistd.h>

int main(int argc, char** argv) {
    // The web engine behind the template editor ends the whole process when started by root with its sandbox
    // on (a container, or the run script under sudo); the page it shows is the program's own.
    if (geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX"))
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("velarmo"));
    QApplication::setApplicationName(QStringLiteral("Brezzario"));
    QApplication::setApplicationVersion(QStringLiteral(BREZZARIO_VERSION));
    BrezzarioApp::preparaApplicazione();

    SingleInstance instance(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    if (!instance.acquired()) {
        QMessageBox::information(nullptr, QStringLiteral("Brezzario"),
                                 QObject::tr("Brezzario è già aperto. Usa la finestra già aperta."));
        return 0;
    }

    BrezzarioApp brezzario;
    brezzario.finestraPrincipale().show();
    return app.exec();
}
