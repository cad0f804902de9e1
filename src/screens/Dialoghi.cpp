#include "screens/Dialoghi.h"

#include <QFileDialog>
#include <QStandardPaths>

namespace Dialoghi {

namespace {
RispostaSalvataggio& rispostaSalvataggio() {
    static RispostaSalvataggio risposta;
    return risposta;
}
} // namespace

void rispondiSalvataggio(RispostaSalvataggio risposta) {
    rispostaSalvataggio() = std::move(risposta);
}

QString fileDaSalvare(QWidget* genitore, const QString& titolo, const QString& nomeProposto, const QString& filtro) {
    if (rispostaSalvataggio())
        return rispostaSalvataggio()(nomeProposto);
    const QString cartella = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QFileDialog::getSaveFileName(genitore, titolo, cartella + u'/' + nomeProposto, filtro);
}

} // namespace Dialoghi
