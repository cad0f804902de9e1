#include "screens/suppressions/ImportaEsclusi.h"

#include "import/CSVParser.h"
#include "records/EmailSyntax.h"
#include "records/Text.h"
#include "screens/suppressions/SuppressionModel.h"

#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QThreadPool>

namespace {
// Inserts per turn of the event loop: a few milliseconds each.
constexpr qsizetype perPasso = 2000;
} // namespace

ImportaEsclusi::ImportaEsclusi(Store& store, SuppressionModel& modello, QObject* genitore)
    : QObject(genitore), m_store(store), m_modello(modello) {
    m_passo.setInterval(0);
    connect(&m_passo, &QTimer::timeout, this, &ImportaEsclusi::inserisciParte);
}

std::optional<QStringList> ImportaEsclusi::candidati(const QByteArray& dati) {
    CSVParser::RawTable grezza;
    try {
        grezza = CSVParser::parseRaw(dati);
    } catch (const CSVParser::ParseError&) {
        return std::nullopt;
    }
    // Columns don't matter, and the first line counts like any other: a file may hold no header at all.
    QStringList trovati;
    for (const CSVParser::Row riga : grezza.rows)
        for (const QString& cella : riga)
            if (isValidEmailSyntax(cella))
                trovati.append(Text::normalizedAddress(cella));
    return trovati;
}

void ImportaEsclusi::avvia(const QString& percorso) {
    if (m_inCorso)
        return;
    m_inCorso = true;
    const QString nomeFile = QFileInfo(percorso).fileName();
    QPointer<ImportaEsclusi> io(this);
    QThreadPool::globalInstance()->start([io, percorso, nomeFile] {
        std::optional<QStringList> risultato;
        QFile file(percorso);
        if (file.open(QIODevice::ReadOnly))
            risultato = candidati(file.readAll());
        if (io)
            QMetaObject::invokeMethod(
                io,
                [io, risultato = std::move(risultato), nomeFile]() mutable {
                    if (io)
                        io->letti(std::move(risultato), nomeFile);
                },
                Qt::QueuedConnection);
    });
}

void ImportaEsclusi::letti(std::optional<QStringList> candidati, const QString& nomeFile) {
    if (!candidati) {
        m_inCorso = false;
        Q_EMIT finito(0);
        return;
    }
    m_candidati = std::move(*candidati);
    m_prossimo = 0;
    m_inseriti.clear();
    m_presenti = m_modello.indirizzi();
    m_motivo = QStringLiteral("importato da ") + nomeFile;
    // The list follows the store once, at the end, not after every slice.
    m_modello.sospendi(true);
    m_passo.start();
}

void ImportaEsclusi::inserisciParte() {
    const qsizetype fine = qMin(m_candidati.size(), m_prossimo + perPasso);
    for (; m_prossimo < fine; ++m_prossimo) {
        const QString& candidato = m_candidati.at(m_prossimo);
        if (m_presenti.contains(candidato))
            continue;
        m_presenti.insert(candidato);
        Suppression nuova(candidato, m_motivo);
        if (m_store.insert(nuova))
            m_inseriti.append(std::move(nuova));
    }
    if (m_prossimo >= m_candidati.size())
        concludi();
}

void ImportaEsclusi::concludi() {
    m_passo.stop();
    m_store.save();
    m_candidati.clear();
    m_presenti.clear();
    m_inCorso = false;
    const int aggiunti = int(m_inseriti.size());
    m_modello.accogli(std::exchange(m_inseriti, {}));
    m_modello.sospendi(false);
    Q_EMIT finito(aggiunti);
}
