// Message building as a run does it: one message with a large attachment, and many personalised
// messages from one template. Prints "key=value" lines for bench.sh.
#include "composition/MessageComposer.h"
#include "composition/MIMEBuilder.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>

#include <cstdio>

namespace {
const QString page = QStringLiteral(
    "<h1>Novità di primavera per {{azienda}}</h1>\n"
    "<p>Gentile {{nome}} {{cognome}},</p>\n"
    "<p>siamo lieti di presentarle il nuovo listino. Per i clienti di {{città}} la consegna è gratuita "
    "fino al 30 aprile, e per chi ordina entro la fine del mese c'è uno sconto del 10% su tutto il catalogo.</p>\n"
    "<ul><li>Consegna in 48 ore</li><li>Reso gratuito entro 30 giorni</li><li>Assistenza dedicata</li></ul>\n"
    "<p>Trova tutti i dettagli sul <a href=\"https://www.nembrosa.example/listino\">nostro sito</a>.</p>\n"
    "<p>Un cordiale saluto,<br/>l'ufficio commerciale</p>\n");

SMTPConfig account() {
    SMTPConfig c;
    c.fromName = QStringLiteral("Ditta Rossi");
    c.fromEmail = QStringLiteral("info@ditta-rossi.it");
    c.replyTo = QStringLiteral("commerciale@ditta-rossi.it");
    c.mittentePostale = QStringLiteral("Ditta Rossi Srl\nVia Garibaldi, 12\n20100 Milano");
    return c;
}

MIMEBuilder::Message message(const SMTPConfig& c, const QString& to, const MessageComposer::Rendered& r) {
    MIMEBuilder::Message m;
    m.from = {c.fromName, c.fromEmail};
    m.to = to;
    m.replyTo = c.replyTo;
    m.subject = r.subject;
    m.html = r.html;
    m.plainText = r.plainText;
    m.extraHeaders = {{QStringLiteral("List-Unsubscribe"),
                       QStringLiteral("<mailto:") + c.replyTo + QStringLiteral("?subject=Cancellami>")}};
    return m;
}

void largeAttachment(int rounds) {
    QByteArray data(10 * 1024 * 1024, Qt::Uninitialized);
    QRandomGenerator generator(1);
    generator.fillRange(reinterpret_cast<quint32*>(data.data()), data.size() / 4);
    const SMTPConfig c = account();
    const MessageTemplate t(QStringLiteral("Listino"), QStringLiteral("Il listino per {{azienda}}"), page);
    const RowValues row{{"nome", "Mario"}, {"cognome", "Bianchi"}, {"azienda", "Bianchi & C."}, {"città", "Lecco"}};
    MIMEBuilder::Message m = message(c, QStringLiteral("mario@example.it"), MessageComposer::compose(t, row, c));
    m.attachments = {{QString::fromUtf16(u"Listino prezzi è 2026.pdf"), QStringLiteral("application/pdf"), data}};
    qsizetype size = MIMEBuilder::build(m).size(); // warm-up
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < rounds; ++i)
        size += MIMEBuilder::build(m).size();
    std::printf("attachment_ms=%.2f\nattachment_bytes=%lld\n", double(timer.nsecsElapsed()) / 1e6 / rounds,
                static_cast<long long>(size / (rounds + 1)));
}

void personalised(int count) {
    const SMTPConfig c = account();
    const MessageTemplate t(QStringLiteral("Primavera"), QStringLiteral("{{nome}}, le novità per {{azienda}}"), page);
    QList<RowValues> rows;
    for (int i = 0; i < count; ++i)
        rows.append({{"nome", QStringLiteral("Nome%1").arg(i)},
                     {"cognome", QStringLiteral("Cognome%1").arg(i)},
                     {"azienda", QStringLiteral("Azienda %1 & figli").arg(i)},
                     {"città", i % 2 ? QStringLiteral("Forlì") : QStringLiteral("Como")},
                     {"email", QStringLiteral("cliente%1@example.it").arg(i)}});
    QElapsedTimer timer;
    timer.start();
    qsizetype bytes = 0;
    for (const RowValues& row : rows)
        bytes += MIMEBuilder::build(message(c, row.value("email"), MessageComposer::compose(t, row, c))).size();
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    std::printf("personalised_per_s=%.0f\npersonalised_bytes=%lld\n", count / seconds,
                static_cast<long long>(bytes / count));
}
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    largeAttachment(10);
    personalised(10000);
    return 0;
}
