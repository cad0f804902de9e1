#include "ui/CampoRicerca.h"

#include "ui/Symbols.h"

#include <QLineEdit>

QLineEdit* campoRicerca(const QString& suggerimento, const char* nome, int larghezzaMinima, QWidget* genitore) {
    auto* campo = new QLineEdit(genitore);
    campo->setObjectName(QLatin1String(nome));
    campo->setPlaceholderText(suggerimento);
    campo->setClearButtonEnabled(true);
    campo->addAction(Symbols::icona(QStringLiteral("magnifyingglass")), QLineEdit::LeadingPosition);
    campo->setMinimumWidth(larghezzaMinima);
    return campo;
}
