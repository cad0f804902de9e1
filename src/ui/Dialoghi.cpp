#include "ui/Dialoghi.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

namespace Dialoghi {

namespace {
RispostaSalvataggio& rispostaSalvataggio() {
    static RispostaSalvataggio risposta;
    return risposta;
}
RispostaApertura& rispostaApertura() {
    static RispostaApertura risposta;
    return risposta;
}
RispostaDomanda& rispostaDomanda() {
    static RispostaDomanda risposta;
    return risposta;
}
RispostaAperturaMultipla& rispostaAperturaMultipla() {
    static RispostaAperturaMultipla risposta;
    return risposta;
}
RispostaColore& rispostaColore() {
    static RispostaColore risposta;
    return risposta;
}
OsservaAvviso& osservatoreAvvisi() {
    static OsservaAvviso osserva;
    return osserva;
}
QString cartellaDocumenti() {
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}
} // namespace

void rispondiSalvataggio(RispostaSalvataggio risposta) {
    rispostaSalvataggio() = std::move(risposta);
}
void rispondiApertura(RispostaApertura risposta) {
    rispostaApertura() = std::move(risposta);
}
void rispondiDomanda(RispostaDomanda risposta) {
    rispostaDomanda() = std::move(risposta);
}
void osservaAvvisi(OsservaAvviso osserva) {
    osservatoreAvvisi() = std::move(osserva);
}

void rispondiAperturaMultipla(RispostaAperturaMultipla risposta) {
    rispostaAperturaMultipla() = std::move(risposta);
}
void rispondiColore(RispostaColore risposta) {
    rispostaColore() = std::move(risposta);
}

QStringList fileMultipliDaAprire(QWidget* genitore, const QString& titolo) {
    if (rispostaAperturaMultipla())
        return rispostaAperturaMultipla()();
    return QFileDialog::getOpenFileNames(genitore, titolo, cartellaDocumenti());
}

QColor colore(QWidget* genitore, const QString& titolo, const QColor& iniziale) {
    if (rispostaColore())
        return rispostaColore()(iniziale);
    return QColorDialog::getColor(iniziale, genitore, titolo);
}

QString fileDaSalvare(QWidget* genitore, const QString& titolo, const QString& nomeProposto, const QString& filtro) {
    if (rispostaSalvataggio())
        return rispostaSalvataggio()(nomeProposto);
    return QFileDialog::getSaveFileName(genitore, titolo, cartellaDocumenti() + u'/' + nomeProposto, filtro);
}

QString fileDaAprire(QWidget* genitore, const QString& titolo, const QString& filtro) {
    if (rispostaApertura())
        return rispostaApertura()();
    return QFileDialog::getOpenFileName(genitore, titolo, cartellaDocumenti(), filtro);
}

int scelta(QWidget* genitore, const QString& titolo, const QString& testo, const QStringList& pulsanti) {
    if (rispostaDomanda())
        return rispostaDomanda()(titolo, testo);
    // The question stands in the body as well: a window manager may show no title at all.
    QMessageBox box(QMessageBox::Question, titolo, titolo, QMessageBox::NoButton, genitore);
    box.setInformativeText(testo);
    QFont grassetto = box.font();
    grassetto.setBold(true);
    if (auto* etichetta = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label")))
        etichetta->setFont(grassetto);
    box.setWindowModality(Qt::WindowModal);
    QList<QPushButton*> creati;
    for (qsizetype i = 0; i < pulsanti.size(); ++i)
        creati.append(box.addButton(pulsanti.at(i), i == 0 ? QMessageBox::AcceptRole : QMessageBox::RejectRole));
    if (!creati.isEmpty())
        box.setDefaultButton(creati.first());
    box.exec();
    return int(creati.indexOf(qobject_cast<QPushButton*>(box.clickedButton())));
}

void avviso(QWidget* genitore, const QString& titolo, const QString& testo) {
    if (osservatoreAvvisi()) {
        osservatoreAvvisi()(titolo, testo);
        return;
    }
    QMessageBox box(QMessageBox::Warning, titolo, testo, QMessageBox::Ok, genitore);
    box.setWindowModality(Qt::WindowModal);
    box.exec();
}

} // namespace Dialoghi
