// The templates screen as a user feels it: from opening to the page's "ready", from a keystroke in a
// 200 KB template with pictures to its save in the store, and the longest stall of the event loop while
// typing, beside the same loop idle.
#include "records/Store.h"
#include "screens/editor/EditorController.h"
#include "screens/editor/RichTextEditor.h"
#include "screens/templates/TemplateEditorPane.h"
#include "screens/templates/TemplatesView.h"
#include "settings/SettingsStore.h"
#include "ui/Ambiente.h"

#include <QApplication>
#include <QBuffer>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEnginePage>

#include <algorithm>
#include <cstdio>

namespace {

QString immagine(int lato, int seme) {
    QImage figura(lato, lato, QImage::Format_RGB32);
    QPainter pittore(&figura);
    for (int y = 0; y < lato; y += 4)
        for (int x = 0; x < lato; x += 4)
            pittore.fillRect(x, y, 4, 4, QColor::fromHsv((x * 3 + y * 7 + seme * 31) % 360, 180, 200));
    pittore.end();
    QByteArray byte;
    QBuffer buffer(&byte);
    buffer.open(QIODevice::WriteOnly);
    figura.save(&buffer, "JPEG", 85);
    return QStringLiteral("data:image/jpeg;base64,") + QString::fromLatin1(byte.toBase64());
}

// About 200 KB: three pictures and paragraphs of text with fields.
QString corpoGrande() {
    QString html;
    for (int i = 0; i < 3; ++i)
        html += QStringLiteral("<div><img src=\"%1\" style=\"max-width:100%;\"></div>").arg(immagine(260, i));
    int paragrafo = 0;
    while (html.size() < 200000)
        html += QStringLiteral("<div>Gentile {{nome}}, paragrafo %1: le condizioni dell'offerta di <b>primavera</b> "
                               "valgono fino al 30 aprile per i clienti di {{citta}}.</div>")
                    .arg(++paragrafo);
    return html;
}

// Runs the event loop as the program does, until the condition holds: QTest's waits sleep between rounds,
// and the web engine, whose browser side runs on this thread, would be measured with those sleeps.
template <typename F> bool aspetta(F condizione, int millisecondi) {
    QEventLoop ciclo;
    QTimer controllo;
    QElapsedTimer tempo;
    tempo.start();
    QObject::connect(&controllo, &QTimer::timeout, [&] {
        if (condizione() || tempo.elapsed() > millisecondi)
            ciclo.quit();
    });
    controllo.start(1);
    if (!condizione())
        ciclo.exec();
    return condizione();
}

void pausa(int millisecondi) {
    aspetta([] { return false; }, millisecondi);
}

double mediana(QList<double> valori) {
    std::sort(valori.begin(), valori.end());
    return valori.isEmpty() ? 0 : valori.at(valori.size() / 2);
}

// The longest gap between two ticks of a 1 ms timer while `lavoro` runs the loop.
template <typename F> double stallo(F lavoro) {
    QElapsedTimer orologio;
    orologio.start();
    qint64 ultimo = 0, massimo = 0;
    QTimer battito;
    battito.setInterval(1);
    QObject::connect(&battito, &QTimer::timeout, [&] {
        const qint64 ora = orologio.nsecsElapsed();
        if (ultimo)
            massimo = std::max(massimo, ora - ultimo);
        ultimo = ora;
    });
    battito.start();
    lavoro();
    return massimo / 1e6;
}

} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    const int giri = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 5;
    QTemporaryDir cartella;
    auto store = Store::open(cartella.filePath(QStringLiteral("bench.sqlite")));
    SettingsStore settings;
    Ambiente ambiente{settings, *store};
    MessageTemplate modello(QStringLiteral("Grande"), QStringLiteral("Offerta per {{nome}}"), corpoGrande());
    store->insert(modello);
    store->save();

    // Opening to ready, a new screen each time.
    QList<double> apertura;
    for (int i = 0; i < giri; ++i) {
        QElapsedTimer tempo;
        tempo.start();
        TemplatesView vista(ambiente);
        vista.resize(1200, 800);
        vista.show();
        if (!aspetta([&] { return vista.editor()->isReady(); }, 60000)) {
            std::fprintf(stderr, "the page never became ready\n");
            return 1;
        }
        apertura.append(tempo.nsecsElapsed() / 1e6);
    }

    TemplatesView vista(ambiente);
    vista.resize(1200, 800);
    vista.show();
    if (!aspetta([&] { return vista.editor()->isReady(); }, 60000))
        return 1;
    RichTextEditor* pagina = vista.pane()->editorView();
    pagina->setFocus();
    pagina->page()->runJavaScript(QStringLiteral(
        "(function(){var c=document.getElementById('contenuto');c.focus();var r=document.createRange();"
        "r.selectNodeContents(c);r.collapse(false);var s=getSelection();s.removeAllRanges();s.addRange(r);})()"));
    pausa(500);

    // Keystroke to save: one key, then wait until the store holds it; keys spaced past the page's interval.
    QList<double> salvataggio;
    const QString lettere = QStringLiteral("abcdefghijklmnopqrst");
    for (QChar lettera : lettere) {
        QElapsedTimer tempo;
        tempo.start();
        const qsizetype prima = store->find<MessageTemplate>(modello.id)->html.size();
        QTest::keyClick(pagina->focusProxy(), lettera.toLatin1());
        if (!aspetta([&] { return store->find<MessageTemplate>(modello.id)->html.size() > prima; }, 10000)) {
            std::fprintf(stderr, "a keystroke was never saved\n");
            return 1;
        }
        salvataggio.append(tempo.nsecsElapsed() / 1e6);
        pausa(300);
    }

    const double fermo = stallo([] { pausa(3000); });
    const double digitando = stallo([&] {
        for (int i = 0; i < 100; ++i) {
            QTest::keyClick(pagina->focusProxy(), 'x');
            pausa(30); // about 33 keys a second, a fast typist
        }
        pausa(500);
    });
    const qsizetype dimensione = store->find<MessageTemplate>(modello.id)->html.toUtf8().size();

    std::printf("template of %lld bytes with 3 pictures, %d openings, 20 keystrokes, 100 keys at 30 ms\n",
                static_cast<long long>(dimensione), giri);
    std::printf("%-46s %10s %10s\n", "what", "median ms", "max ms");
    std::printf("%-46s %10.1f %10.1f\n", "open the screen -> page ready", mediana(apertura),
                *std::max_element(apertura.begin(), apertura.end()));
    std::printf("%-46s %10.1f %10.1f\n", "keystroke -> saved in the store", mediana(salvataggio),
                *std::max_element(salvataggio.begin(), salvataggio.end()));
    std::printf("%-46s %10s %10.1f\n", "longest event-loop stall, idle", "-", fermo);
    std::printf("%-46s %10s %10.1f\n", "longest event-loop stall, typing", "-", digitando);
    std::printf("typing stall / idle stall: %.2f\n", fermo > 0 ? digitando / fermo : 0.0);
    return 0;
}
