#pragma once

#include <QWidget>

// The foot of the sidebar: the program's version and who makes it, with a link to the maker's site.
class CreditsView : public QWidget {
    Q_OBJECT
public:
    static inline const QString sitoProduttore = QStringLiteral("https://www.nembrosa.example");

    // "Brezzario " and the version of the application, "1.0" when it has none.
    static QString versione();

    explicit CreditsView(QWidget* genitore = nullptr);
};
