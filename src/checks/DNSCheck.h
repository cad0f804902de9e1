#pragma once

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

// Whether the sender's domain publishes SPF, DKIM and DMARC, and whether they fit the chosen SMTP
// service. Each verdict is a pure function of the records found; only the queries need the network, and
// a query that can't be made reads as a missing record.
namespace DNSCheck {

struct Esito {
    enum Caso {
        ok,         // present and fitting; the text is the record itself or a sentence
        attenzione, // sending works, but something should be put right
        mancante,   // the protection is missing or void
    };
    Caso caso = mancante;
    QString testo;

    bool operator==(const Esito&) const = default;
};

struct Risultato {
    QString dominio; // trimmed and lower-cased
    QString servizio;
    Esito spf;
    Esito dkim;
    Esito dmarc;
    QDateTime verificatoIl;
};

// The DKIM selectors that are tried, in this order.
const QStringList& selettori();

// Names that the big services publish.
inline constexpr const char* includeSPFAruba = "_spf.aruba.it";
inline constexpr const char* includeSPFGoogle = "_spf.google.com";
inline constexpr const char* dominioDKIMBrevo = ".dkim.brevo.com";

QCoro::Task<Risultato> verifica(QString dominio, QString hostSMTP);

// The queries verifica() is made of.
QCoro::Task<QStringList> dig(QString tipo, QString nome);
// TXT lines, less the names of Brevo's DKIM chain that dig prints before the key.
QCoro::Task<QStringList> txt(QString nome);
QCoro::Task<std::optional<QString>> cname(QString nome);
// The selectors that hold a key, directly or through a CNAME, sorted by name.
QCoro::Task<QStringList> selettoriPresenti(QString dominio);

// How dig's output lines read once the strings of a TXT record are joined.
QStringList righeTXT(const QStringList& pezzi);

QString nomeServizio(const QString& host);
std::optional<QString> includeAtteso(const QString& host);
QStringList selettoriAttesi(const QString& host);

Esito valutaSPF(const std::optional<QString>& record, const QString& host);
Esito valutaDKIM(const QStringList& presenti, const QString& host);
Esito valutaDMARC(const std::optional<QString>& record);
// More than one DMARC record voids them all.
Esito valutaDMARC(const QStringList& records);

} // namespace DNSCheck
