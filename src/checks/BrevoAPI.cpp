#include "checks/BrevoAPI.h"

#include "records/Text.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QMutexLocker>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QSet>
#include <QSslConfiguration>
#include <QStringDecoder>
#include <QTextBoundaryFinder>
#include <QUrlQuery>

#include <QCoro/QCoroNetworkReply>

#include <algorithm>
#include <memory>

namespace BrevoAPI {

namespace {

struct Seams {
    QMutex lock;
    QUrl base;
    QList<QSslCertificate> certificati;
};

Seams& seams() {
    static Seams instance;
    return instance;
}

QUrl indirizzoEventi(const QString& tipo, int giorni) {
    QUrl url;
    {
        QMutexLocker locker(&seams().lock);
        url = seams().base;
    }
    if (url.isEmpty())
        url = QUrl(QStringLiteral("https://api.brevo.com"));
    url.setPath(QLatin1String(percorsoEventi));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("limit"), QStringLiteral("2500"));
    query.addQueryItem(QStringLiteral("offset"), QStringLiteral("0"));
    query.addQueryItem(QStringLiteral("days"), QString::number(std::clamp(giorni, 1, 90)));
    query.addQueryItem(QStringLiteral("event"), tipo);
    query.addQueryItem(QStringLiteral("sort"), QStringLiteral("desc"));
    url.setQuery(query);
    return url;
}

QSslConfiguration configurazioneTLS() {
    QSslConfiguration configurazione = QSslConfiguration::defaultConfiguration();
    QMutexLocker locker(&seams().lock);
    if (!seams().certificati.isEmpty())
        configurazione.addCaCertificates(seams().certificati);
    return configurazione;
}

// The first `quanti` user-perceived characters of UTF-8 bytes; "" when they aren't valid UTF-8.
QString inizioTesto(const QByteArray& byte, int quanti) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString testo = decoder.decode(byte);
    if (decoder.hasError())
        return {};
    QTextBoundaryFinder confini(QTextBoundaryFinder::Grapheme, testo);
    int contati = 0;
    while (contati < quanti && confini.toNextBoundary() != -1)
        ++contati;
    return contati < quanti ? testo : testo.left(confini.position());
}

QString testoDi(const QJsonObject& oggetto, QLatin1String chiave) {
    const QJsonValue valore = oggetto.value(chiave);
    return valore.isString() ? valore.toString() : QString();
}

} // namespace

Errore::Errore(Caso caso, int status, QString corpo, QString testo)
    : m_caso(caso), m_status(status), m_corpo(std::move(corpo)), m_testo(std::move(testo)),
      m_what(errorDescription().toUtf8()) {}

Errore Errore::rispostaNonValidaDi(int status, QString corpo) {
    return Errore(rispostaNonValida, status, std::move(corpo), {});
}

Errore Errore::reteDi(QString testo) {
    return Errore(rete, 0, {}, std::move(testo));
}

Errore Errore::chiaveMancanteDi() {
    return Errore(chiaveMancante, 0, {}, {});
}

QString Errore::errorDescription() const {
    switch (m_caso) {
    case rispostaNonValida:
        if (m_status == 401)
            return QCoreApplication::translate("BrevoAPI", "Chiave API rifiutata da Brevo (401). Verifica di aver "
                                                           "usato la chiave API e non la chiave SMTP.");
        return QCoreApplication::translate("BrevoAPI", "Brevo ha risposto %1: %2")
            .arg(QString::number(m_status), m_corpo);
    case rete:
        return QCoreApplication::translate("BrevoAPI", "Errore di rete: %1").arg(m_testo);
    case chiaveMancante:
        break;
    }
    return QCoreApplication::translate("BrevoAPI", "Manca la chiave API di Brevo.");
}

std::optional<QDateTime> leggiData(const QString& testo) {
    // Full date, time and zone; the fraction is optional.
    static const QRegularExpression forma(
        QStringLiteral(R"(^\d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2}(\.\d+)?(Z|[+-]\d{2}:\d{2})$)"),
        QRegularExpression::CaseInsensitiveOption);
    if (!forma.match(testo).hasMatch())
        return std::nullopt;
    const QDateTime data = QDateTime::fromString(testo, Qt::ISODateWithMs);
    if (!data.isValid())
        return std::nullopt;
    return data.toUTC();
}

QList<Evento> leggiEventi(const QByteArray& corpo, const QString& tipoChiesto) {
    QJsonParseError errore;
    const QJsonDocument documento = QJsonDocument::fromJson(corpo, &errore);
    if (errore.error != QJsonParseError::NoError || !documento.isObject())
        return {};
    const QJsonValue elenco = documento.object().value(QLatin1String("events"));
    if (!elenco.isArray())
        return {};
    const QJsonArray voci = elenco.toArray();
    for (const QJsonValue& voce : voci)
        if (!voce.isObject())
            return {};
    QList<Evento> risultato;
    for (const QJsonValue& voce : voci) {
        const QJsonObject oggetto = voce.toObject();
        const QString email = testoDi(oggetto, QLatin1String("email"));
        if (email.isEmpty())
            continue;
        Evento evento;
        evento.data = leggiData(testoDi(oggetto, QLatin1String("date")));
        evento.email = Text::normalizedAddress(email);
        evento.motivo = testoDi(oggetto, QLatin1String("reason"));
        const QJsonValue tipo = oggetto.value(QLatin1String("event"));
        evento.tipo = tipo.isString() ? tipo.toString() : tipoChiesto;
        risultato.append(std::move(evento));
    }
    return risultato;
}

QCoro::Task<QList<Evento>> eventi(QString tipo, int giorni, QString chiave) {
    const QString chiavePulita = Text::trimmedWhitespaceAndNewlines(chiave);
    if (chiavePulita.isEmpty())
        throw Errore::chiaveMancanteDi();

    QNetworkRequest richiesta(indirizzoEventi(tipo, giorni));
    richiesta.setTransferTimeout(timeoutMs);
    richiesta.setRawHeader("api-key", chiavePulita.toUtf8());
    richiesta.setRawHeader("accept", "application/json");
    richiesta.setSslConfiguration(configurazioneTLS());

    QNetworkAccessManager rete;
    std::unique_ptr<QNetworkReply> risposta(rete.get(richiesta));
    co_await qCoro(risposta.get()).waitForFinished();

    const QVariant status = risposta->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid()) {
        if (risposta->error() != QNetworkReply::NoError)
            throw Errore::reteDi(risposta->errorString());
        throw Errore::reteDi(QCoreApplication::translate("BrevoAPI", "risposta non riconosciuta"));
    }
    const QByteArray corpo = risposta->readAll();
    const int codice = status.toInt();
    if (codice < 200 || codice > 299)
        throw Errore::rispostaNonValidaDi(codice, inizioTesto(corpo, 200));
    co_return leggiEventi(corpo, tipo);
}

QCoro::Task<QList<Evento>> indirizziDaEscludere(int giorni, QString chiave) {
    QList<Evento> tutti = co_await eventi(QStringLiteral("hardBounces"), giorni, chiave);
    try {
        const QList<Evento> bloccati = co_await eventi(QStringLiteral("blocked"), giorni, chiave);
        tutti += bloccati;
    } catch (const Errore&) {
        // Blocked addresses complete the hard bounces; without them the download still stands.
    }
    QList<Evento> unici;
    QSet<QString> visti;
    for (Evento& evento : tutti)
        if (!visti.contains(evento.email)) {
            visti.insert(evento.email);
            unici.append(std::move(evento));
        }
    co_return unici;
}

void setBaseUrlPerTest(const QUrl& base) {
    QMutexLocker locker(&seams().lock);
    seams().base = base;
}

void setCertificatiAggiuntiviPerTest(const QList<QSslCertificate>& certificati) {
    QMutexLocker locker(&seams().lock);
    seams().certificati = certificati;
}

} // namespace BrevoAPI
