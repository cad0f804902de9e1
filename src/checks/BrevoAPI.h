#pragma once

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QList>
#include <QSslCertificate>
#include <QString>
#include <QUrl>
#include <QUuid>

#include <exception>
#include <optional>

// Brevo's statistics service: the refusals that its relay learnt of after it had accepted a message.
namespace BrevoAPI {

struct Evento {
    QUuid id = QUuid::createUuid();
    QString email; // trimmed and lower-cased
    std::optional<QDateTime> data;
    QString motivo; // "" when Brevo gives none
    QString tipo;
};

// What the user reads when a download can't be done. Thrown through co_await by eventi() and
// indirizziDaEscludere(), and caught where the user started the download.
class Errore : public std::exception {
public:
    enum Caso { rispostaNonValida, rete, chiaveMancante };

    static Errore rispostaNonValidaDi(int status, QString corpo);
    static Errore reteDi(QString testo);
    static Errore chiaveMancanteDi();

    Caso caso() const { return m_caso; }
    int status() const { return m_status; }
    QString corpo() const { return m_corpo; }
    QString testo() const { return m_testo; }

    QString errorDescription() const;
    const char* what() const noexcept override { return m_what.constData(); }

private:
    Errore(Caso caso, int status, QString corpo, QString testo);

    Caso m_caso;
    int m_status = 0;
    QString m_corpo;
    QString m_testo;
    QByteArray m_what;
};

inline constexpr const char* percorsoEventi = "/v3/smtp/statistics/events";
inline constexpr int timeoutMs = 30'000;

// One request for the latest events of one kind (at most 2,500) over the last `giorni` days, held
// between 1 and 90.
QCoro::Task<QList<Evento>> eventi(QString tipo, int giorni, QString chiave);

// Hard bounces, then blocked addresses, one event for each address. Only the first request can fail:
// the second is a complement, and its failure reads as no events.
QCoro::Task<QList<Evento>> indirizziDaEscludere(int giorni, QString chiave);

// The events of a successful answer. A body that isn't the expected shape gives no events.
QList<Evento> leggiEventi(const QByteArray& corpo, const QString& tipoChiesto);
// An ISO 8601 internet date and time, with or without fractional seconds.
std::optional<QDateTime> leggiData(const QString& testo);

// For tests only: another API address, and certificate authorities to trust beside the system's.
void setBaseUrlPerTest(const QUrl& base);
void setCertificatiAggiuntiviPerTest(const QList<QSslCertificate>& certificati);

} // namespace BrevoAPI
