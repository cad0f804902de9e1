#!/usr/bin/python3
"""The same two tasks as bench_composition, done with Python's standard library: re for the
placeholders and the plain-text version, email for the MIME message. Prints key=value lines."""
import os
import re
import time
from email.message import EmailMessage
from email.policy import SMTP
from email.utils import formatdate, make_msgid

PAGE = """<h1>Novità di primavera per {{azienda}}</h1>
<p>Gentile {{nome}} {{cognome}},</p>
<p>siamo lieti di presentarle il nuovo listino. Per i clienti di {{città}} la consegna è gratuita fino al 30 aprile, e per chi ordina entro la fine del mese c'è uno sconto del 10% su tutto il catalogo.</p>
<ul><li>Consegna in 48 ore</li><li>Reso gratuito entro 30 giorni</li><li>Assistenza dedicata</li></ul>
<p>Trova tutti i dettagli sul <a href="https://www.nembrosa.example/listino">nostro sito</a>.</p>
<p>Un cordiale saluto,<br/>l'ufficio commerciale</p>
"""
FRAME_HEAD = (
    '<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Transitional//EN" '
    '"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd">\n<html xmlns="http://www.w3.org/1999/xhtml">\n'
    '<head>\n<meta http-equiv="Content-Type" content="text/html; charset=UTF-8" />\n'
    '<meta name="viewport" content="width=device-width, initial-scale=1" />\n<title></title>\n</head>\n'
    '<body style="margin:0;padding:0;background-color:#f4f4f5;">\n'
    '\n<table role="presentation" width="100%" cellpadding="0" cellspacing="0" border="0" '
    'style="background-color:#f4f4f5;">\n<tr>\n<td align="center" style="padding:24px 12px;">\n'
    '<table role="presentation" width="640" cellpadding="0" cellspacing="0" border="0" '
    'style="width:640px;max-width:100%;background-color:#ffffff;border-radius:8px;">\n<tr>\n'
    '<td style="padding:28px 32px;font-family:Arial,Helvetica,sans-serif;font-size:14px;line-height:1.5;'
    'color:#222222;">\n')
FRAME_TAIL = (
    '\n</td>\n</tr>\n<tr>\n<td style="padding:0 32px 26px;font-family:Arial,Helvetica,sans-serif;font-size:11px;'
    'line-height:1.6;color:#6b7280;border-top:1px solid #e5e7eb;padding-top:16px;">\n{footer}\n</td>\n</tr>'
    '\n</table>\n</td>\n</tr>\n</table>\n</body>\n</html>')
PLACEHOLDER = re.compile(r"\{\{\s*([^{}]+?)\s*\}\}")
STEPS = [(re.compile(r"<%s[^>]*>[\s\S]*?</%s>" % (t, t), re.I), "") for t in ("script", "style", "head")] + [
    (re.compile(r"""<a\b[^>]*href=["']([^"']+)["'][^>]*>([\s\S]*?)</a>""", re.I), r"\2 (\1)"),
    (re.compile(r"<br\s*/?>", re.I), "\n"),
    (re.compile(r"</(p|div|tr|h[1-6]|li)>", re.I), "\n"),
    (re.compile(r"<li[^>]*>", re.I), "• "),
    (re.compile(r"<[^>]+>"), ""),
]


def escape(v):
    return v.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;").replace('"', "&quot;").replace("'", "&#39;")


MOTIVO = "Ricevi questo messaggio perché il tuo indirizzo è tra i contatti della nostra attività."
FOOTER_HTML = (escape(MOTIVO) + '<br />Non vuoi più ricevere questi messaggi? <a href="mailto:commerciale@ditta-rossi.it'
               '?subject=Cancellami%20dalla%20lista" style="color:#6b7280;text-decoration:underline;">Cancella la tua '
               'iscrizione</a> (oppure scrivi a commerciale@ditta-rossi.it).<br />Ditta Rossi Srl<br />'
               'Via Garibaldi, 12<br />20100 Milano')
FOOTER_TEXT = MOTIVO + "\nPer non ricevere più questi messaggi scrivi a commerciale@ditta-rossi.it con oggetto \"Cancellami\".\nDitta Rossi Srl\nVia Garibaldi, 12\n20100 Milano"


def substitute(text, values, esc):
    folded = {k.lower(): v for k, v in values.items()}
    def one(m):
        v = folded.get(m.group(1).lower(), "")
        return escape(v) if esc else v
    return PLACEHOLDER.sub(one, text)


def plain(html):
    for pattern, repl in STEPS:
        html = pattern.sub(repl, html)
    for a, b in (("&nbsp;", " "), ("&lt;", "<"), ("&gt;", ">"), ("&quot;", '"'), ("&#39;", "'"), ("&amp;", "&")):
        html = html.replace(a, b)
    html = re.sub(r"[ \t]+\n", "\n", html)
    return re.sub(r"\n{3,}", "\n\n", html).strip()


def message(to, values, subject_template, attachment=None):
    body = substitute(PAGE, values, True)
    msg = EmailMessage()
    msg["Date"] = formatdate(localtime=True)
    msg["From"] = "Ditta Rossi <info@ditta-rossi.it>"
    msg["To"] = to
    msg["Reply-To"] = "commerciale@ditta-rossi.it"
    msg["Subject"] = substitute(subject_template, values, False)
    msg["Message-ID"] = make_msgid(domain="ditta-rossi.it")
    msg["X-Mailer"] = "Brezzario"
    msg["List-Unsubscribe"] = "<mailto:commerciale@ditta-rossi.it?subject=Cancellami>"
    msg.set_content(plain(body) + "\n\n-- \n" + FOOTER_TEXT, cte="quoted-printable")
    msg.add_alternative(FRAME_HEAD + body + FRAME_TAIL.format(footer=FOOTER_HTML),
                        subtype="html", cte="quoted-printable")
    if attachment is not None:
        msg.add_attachment(attachment, maintype="application", subtype="pdf", filename="Listino prezzi è 2026.pdf")
    return msg.as_bytes(policy=SMTP)


def main():
    data = os.urandom(10 * 1024 * 1024)
    row = {"nome": "Mario", "cognome": "Bianchi", "azienda": "Bianchi & C.", "città": "Lecco"}
    rounds = 3
    size = len(message("mario@example.it", row, "Il listino per {{azienda}}", data))
    start = time.perf_counter()
    for _ in range(rounds):
        size += len(message("mario@example.it", row, "Il listino per {{azienda}}", data))
    print("attachment_ms=%.2f" % ((time.perf_counter() - start) * 1000 / rounds))
    print("attachment_bytes=%d" % (size // (rounds + 1)))

    count = 10000
    rows = [{"nome": "Nome%d" % i, "cognome": "Cognome%d" % i, "azienda": "Azienda %d & figli" % i,
             "città": "Forlì" if i % 2 else "Como", "email": "cliente%d@example.it" % i} for i in range(count)]
    start = time.perf_counter()
    total = 0
    for r in rows:
        total += len(message(r["email"], r, "{{nome}}, le novità per {{azienda}}"))
    print("personalised_per_s=%.0f" % (count / (time.perf_counter() - start)))
    print("personalised_bytes=%d" % (total // count))


if __name__ == "__main__":
    main()
