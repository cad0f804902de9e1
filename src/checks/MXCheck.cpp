#include "checks/MXCheck.h"

#include "checks/Dig.h"
#include "records/Text.h"

#include <QMutex>
#include <QMutexLocker>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace MXCheck {

namespace {

// One cache for the whole process, never emptied: a domain is asked once per start of the program.
// The lock covers single look-ups and stores, never a query.
struct Cache {
    QMutex lock;
    QHash<QString, Esito> esiti;
};

Cache& cache() {
    static Cache instance;
    return instance;
}

std::optional<Esito> inCache(const QString& dominio) {
    QMutexLocker locker(&cache().lock);
    const auto it = cache().esiti.constFind(dominio);
    if (it == cache().esiti.cend())
        return std::nullopt;
    return *it;
}

Esito memorizza(const QString& dominio, Esito esito) {
    QMutexLocker locker(&cache().lock);
    cache().esiti.insert(dominio, esito);
    return esito;
}

// Any non-empty line counts as an answer, whatever it says.
QCoro::Task<QStringList> dig(QString tipo, QString nome) {
    // co_await results go to named variables first: GCC 12 may free temporaries that a full expression
    // around a co_await still uses.
    const QStringList pezzi = co_await Dig::query(std::move(tipo), std::move(nome));
    QStringList righe;
    for (const QString& pezzo : pezzi) {
        const QString riga = Text::trimmedWhitespace(pezzo);
        if (!riga.isEmpty())
            righe.append(riga);
    }
    co_return righe;
}

struct Lavoro {
    QStringList domini;
    qsizetype prossimo = 0;
    int fatti = 0;
    QHash<QString, Esito> esiti;
    Avanzamento avanzamento;
};

// One of the parallel lanes: takes the next domain not yet started until none is left.
QCoro::Task<> corsia(std::shared_ptr<Lavoro> lavoro) {
    while (lavoro->prossimo < lavoro->domini.size()) {
        const QString dominio = lavoro->domini.at(lavoro->prossimo++);
        const Esito risposta = co_await esito(dominio);
        lavoro->esiti.insert(dominio, risposta);
        ++lavoro->fatti;
        if (lavoro->avanzamento)
            lavoro->avanzamento(lavoro->fatti, int(lavoro->domini.size()));
    }
}

} // namespace

QSet<QString> domini(const QStringList& indirizzi) {
    QSet<QString> result;
    for (const QString& indirizzo : indirizzi) {
        const QStringList parti = Text::normalizedAddress(indirizzo).split(u'@');
        if (parti.size() == 2 && !parti.at(1).isEmpty())
            result.insert(parti.at(1));
    }
    return result;
}

bool eDimostrativo(const QString& dominio) {
    const QString nome = Text::lowercased(dominio);
    for (const char* suffisso : {".example", ".test", ".invalid", ".localhost"})
        if (nome.endsWith(QLatin1String(suffisso)))
            return true;
    return false;
}

QCoro::Task<Esito> esito(QString dominio) {
    const QString nome = Text::lowercased(dominio);
    if (eDimostrativo(nome))
        co_return Esito::dimostrativo;
    if (const auto noto = inCache(nome))
        co_return *noto;
    const QStringList scambiatori = co_await dig(QStringLiteral("MX"), nome);
    if (!scambiatori.isEmpty())
        co_return memorizza(nome, Esito::recapitabile);
    const QStringList indirizzi = co_await dig(QStringLiteral("A"), nome);
    co_return memorizza(nome, indirizzi.isEmpty() ? Esito::nonRisolto : Esito::senzaServerDiPosta);
}

QCoro::Task<QHash<QString, Esito>> verifica(QSet<QString> domini, Avanzamento avanzamento) {
    auto lavoro = std::make_shared<Lavoro>();
    lavoro->domini = QStringList(domini.cbegin(), domini.cend());
    std::sort(lavoro->domini.begin(), lavoro->domini.end());
    lavoro->avanzamento = std::move(avanzamento);
    // Tasks start at once, so the first lanes are all at work before the first of them is awaited.
    std::vector<QCoro::Task<>> corsie;
    const qsizetype quante = std::min<qsizetype>(larghezza, lavoro->domini.size());
    for (qsizetype i = 0; i < quante; ++i)
        corsie.push_back(corsia(lavoro));
    for (auto& c : corsie)
        co_await std::move(c);
    co_return std::move(lavoro->esiti);
}

void svuotaCachePerTest() {
    QMutexLocker locker(&cache().lock);
    cache().esiti.clear();
}

} // namespace MXCheck
