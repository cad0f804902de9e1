#include "ui/Symbols.h"

#include <QHash>
#include <QPainter>
#include <QStandardPaths>

namespace Symbols {

namespace {

struct Voce {
    const char* simbolo;
    const char* freedesktop;
};

// Symbolic icons only: they are drawn in one colour, which lets the screens tint them.
constexpr Voce tabella[] = {
    {"tablecells", "x-office-spreadsheet-symbolic"},
    {"doc.richtext", "x-office-document-symbolic"},
    {"paperplane.fill", "mail-send-symbolic"},
    {"clock.arrow.circlepath", "document-open-recent-symbolic"},
    {"nosign", "action-unavailable-symbolic"},
    {"gearshape.fill", "emblem-system-symbolic"},
    {"antenna.radiowaves.left.and.right", "network-wireless-hotspot-symbolic"},
    {"checkmark.circle.fill", "emblem-ok-symbolic"},
    {"xmark.octagon.fill", "dialog-error-symbolic"},
    {"minus.circle.fill", "list-remove-symbolic"},
    {"minus.circle", "list-remove-symbolic"},
    {"clock.fill", "preferences-system-time-symbolic"},
    {"calendar.badge.clock", "x-office-calendar-symbolic"},
    {"exclamationmark.triangle.fill", "dialog-warning-symbolic"},
    {"testtube.2", "applications-science-symbolic"},
    {"pause.fill", "media-playback-pause-symbolic"},
    {"play.fill", "media-playback-start-symbolic"},
    {"stop.fill", "media-playback-stop-symbolic"},
    {"square.and.arrow.up", "document-send-symbolic"},
    {"square.and.arrow.down", "folder-download-symbolic"},
    {"person.crop.circle.badge.xmark", "avatar-default-symbolic"},
    {"tray.full", "mail-unread-symbolic"},
    {"globe.badge.chevron.backward", "network-error-symbolic"},
    {"questionmark.circle", "dialog-question-symbolic"},
    {"hand.raised.slash", "mail-mark-junk-symbolic"},
    {"envelope.badge.shield.half.filled", "channel-secure-symbolic"},
    {"hand.point.up.left", "document-edit-symbolic"},
    {"arrow.uturn.backward", "edit-undo-symbolic"},
    {"magnifyingglass", "edit-find-symbolic"},
    {"trash", "user-trash-symbolic"},
};

} // namespace

void preparaTemaIcone() {
    // Platforms without a theme of their own look only inside the program's resources.
    QStringList cartelle = QIcon::themeSearchPaths();
    for (const QString& cartella : QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                                             QStringLiteral("icons"), QStandardPaths::LocateDirectory))
        if (!cartelle.contains(cartella))
            cartelle.append(cartella);
    QIcon::setThemeSearchPaths(cartelle);
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    if (QIcon::fallbackThemeName().isEmpty())
        QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

QString nomeFreedesktop(const QString& simbolo) {
    for (const Voce& voce : tabella)
        if (simbolo == QLatin1String(voce.simbolo))
            return QString::fromLatin1(voce.freedesktop);
    return {};
}

QIcon icona(const QString& simbolo) {
    const QString nome = nomeFreedesktop(simbolo);
    return nome.isEmpty() ? QIcon() : QIcon::fromTheme(nome);
}

QPixmap pixmap(const QString& simbolo, const QColor& colore, int lato, qreal rapporto) {
    const int pixel = qRound(lato * rapporto);
    QPixmap base = icona(simbolo).pixmap(QSize(pixel, pixel));
    QPixmap tinta(pixel, pixel);
    tinta.fill(Qt::transparent);
    if (!base.isNull()) {
        QPainter pittore(&tinta);
        pittore.drawPixmap(tinta.rect(), base);
        pittore.setCompositionMode(QPainter::CompositionMode_SourceIn);
        pittore.fillRect(tinta.rect(), colore);
    }
    tinta.setDevicePixelRatio(rapporto);
    return tinta;
}

QIcon iconaColorata(const QString& simbolo, const QColor& colore) {
    QIcon risultato;
    for (int lato : {16, 24, 32})
        risultato.addPixmap(pixmap(simbolo, colore, lato));
    return risultato;
}

} // namespace Symbols
