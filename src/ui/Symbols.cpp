#include "ui/Symbols.h"

#include "ui/Risorse.h"

#include <QHash>
#include <QPainter>
#include <QPixmapCache>
#include <QStandardPaths>

namespace Symbols {

namespace {

struct Voce {
    const char* simbolo;
    const char* freedesktop;
};

// Symbolic icons only: they are drawn in one colour, which lets the screens tint them. Where the theme has no
// fitting picture (the theme draws every check alike), a drawing of our own among the resources.
constexpr Voce tabella[] = {
    {"tablecells", "x-office-spreadsheet-symbolic"},
    {"doc.richtext", "x-office-document-symbolic"},
    {"paperplane.fill", "mail-send-symbolic"},
    {"clock.arrow.circlepath", "document-open-recent-symbolic"},
    {"nosign", "action-unavailable-symbolic"},
    {"gearshape.fill", "emblem-system-symbolic"},
    {"antenna.radiowaves.left.and.right", "network-wireless-hotspot-symbolic"},
    {"checkmark.circle.fill", "@Media/icons/checkmark.circle.fill.svg"},
    {"xmark.octagon.fill", "dialog-error-symbolic"},
    {"minus.circle.fill", "list-remove-symbolic"},
    {"minus.circle", "@Media/icons/minus.circle.svg"},
    {"clock.fill", "preferences-system-time-symbolic"},
    {"calendar.badge.clock", "x-office-calendar-symbolic"},
    {"exclamationmark.triangle.fill", "dialog-warning-symbolic"},
    {"testtube.2", "applications-science-symbolic"},
    {"pause.fill", "media-playback-pause-symbolic"},
    {"play.fill", "media-playback-start-symbolic"},
    {"stop.fill", "media-playback-stop-symbolic"},
    {"square.and.arrow.up", "document-send-symbolic"},
    {"square.and.arrow.down", "document-open-symbolic"},
    {"checkmark.circle", "@Media/icons/checkmark.circle.svg"},
    {"circle", "@Media/icons/circle.svg"},
    {"exclamationmark.circle", "emblem-important-symbolic"},
    {"exclamationmark.triangle", "dialog-warning-symbolic"},
    {"trash", "user-trash-symbolic"},
    {"plus", "list-add-symbolic"},
    {"minus", "list-remove-symbolic"},
    {"checkmark.shield", "security-high-symbolic"},
    {"sparkles", "starred-symbolic"},
    {"wand.and.stars", "applications-science-symbolic"},
    {"arrow.down.circle", "folder-download-symbolic"},
    {"gauge.with.dots.needle.50percent", "power-profile-balanced-symbolic"},
    {"bolt.horizontal", "network-transmit-receive-symbolic"},
    {"bold", "format-text-bold-symbolic"},
    {"italic", "format-text-italic-symbolic"},
    {"underline", "format-text-underline-symbolic"},
    {"strikethrough", "format-text-strikethrough-symbolic"},
    {"list.bullet", "view-list-bullet-symbolic"},
    {"list.number", "view-list-ordered-symbolic"},
    {"text.alignleft", "format-justify-left-symbolic"},
    {"text.aligncenter", "format-justify-center-symbolic"},
    {"text.alignright", "format-justify-right-symbolic"},
    {"link", "insert-link-symbolic"},
    {"photo", "insert-image-symbolic"},
    {"eraser", "edit-clear-all-symbolic"},
    {"paperclip", "mail-attachment-symbolic"},
    {"paperplane", "mail-send-symbolic"},
    {"exclamationmark.shield.fill", "security-low-symbolic"},
    {"info.circle", "dialog-information-symbolic"},
    {"person.crop.circle.badge.xmark", "avatar-default-symbolic"},
    {"tray.full", "mail-unread-symbolic"},
    {"globe.badge.chevron.backward", "network-error-symbolic"},
    {"questionmark.circle", "dialog-question-symbolic"},
    {"hand.raised.slash", "mail-mark-junk-symbolic"},
    {"envelope.badge.shield.half.filled", "channel-secure-symbolic"},
    {"hand.point.up.left", "document-edit-symbolic"},
    {"arrow.uturn.backward", "edit-undo-symbolic"},
    {"magnifyingglass", "edit-find-symbolic"},
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
    // Drawings of our own are named by their place among the program's files.
    if (nome.startsWith(u'@')) {
        const QString file = Risorse::percorso(nome.mid(1));
        return file.isEmpty() ? QIcon() : QIcon(file);
    }
    if (!nome.isEmpty())
        return QIcon::fromTheme(nome);
    // Symbols the theme has no picture for are drawn by the program itself.
    const QString proprio = Risorse::percorso(QStringLiteral("Media/icons/%1.svg").arg(simbolo));
    return proprio.isEmpty() ? QIcon() : QIcon(proprio);
}

QPixmap pixmap(const QString& simbolo, const QColor& colore, int lato, qreal rapporto) {
    const int pixel = qRound(lato * rapporto);
    // Lists draw the same few symbols on every row at every paint: each is drawn from its file once.
    const QString chiave =
        QStringLiteral("brezzario-simbolo/%1/%2/%3/%4").arg(simbolo).arg(colore.rgba(), 0, 16).arg(pixel).arg(rapporto);
    QPixmap giaFatta;
    if (QPixmapCache::find(chiave, &giaFatta))
        return giaFatta;
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
    QPixmapCache::insert(chiave, tinta);
    return tinta;
}

QIcon iconaColorata(const QString& simbolo, const QColor& colore) {
    QIcon risultato;
    for (int lato : {16, 24, 32})
        risultato.addPixmap(pixmap(simbolo, colore, lato));
    return risultato;
}

} // namespace Symbols
