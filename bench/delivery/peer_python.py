#!/usr/bin/python3
"""The peer in Python: email.message.EmailMessage built per recipient (plain text, HTML with the picture as a
related inline part, the same attachment and List-Unsubscribe header) and smtplib over one connection. At its
best: the picture is taken out of the template once, not per message.
Usage: peer_python.py HOST PORT N ASSETS TEMPLATE. Prints "rate <messages/s>" and "cpu_us <CPU per message>"."""
import html as htmlmod
import re
import smtplib
import sys
import time
from email.message import EmailMessage
from email.utils import formataddr

host, port, count, assets, template_path = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4], sys.argv[5]
picture = open(f"{assets}/picture.png", "rb").read()
listino = open(f"{assets}/listino.pdf", "rb").read()
template = open(template_path, encoding="utf-8").read().replace("{{immagine}}", "cid:foto@prova.example")
plain_template = re.sub(r"\n{2,}", "\n\n", re.sub(r"<[^>]+>", "", template))

client = smtplib.SMTP(host, port)
client.ehlo("prova.example")
cpu = time.process_time()
start = time.perf_counter()
for i in range(count):
    nome = f"Cliente {i}"
    fill = lambda t: t.replace("{{nome}}", htmlmod.escape(nome)).replace("{{citta}}", "Bari")
    message = EmailMessage()
    message["From"] = formataddr(("Ferramenta Rossi", "negozio@prova.example"))
    message["To"] = f"cliente{i}@prova.example"
    message["Subject"] = f"Novità di primavera per {nome}"
    message["List-Unsubscribe"] = "<mailto:negozio@prova.example?subject=Cancellami>"
    message.set_content(fill(plain_template))
    message.add_alternative(fill(template), subtype="html")
    message.get_payload()[1].add_related(picture, "image", "png", cid="<foto@prova.example>")
    message.add_attachment(listino, maintype="application", subtype="pdf", filename="listino.pdf")
    client.send_message(message)
seconds = time.perf_counter() - start
used = time.process_time() - cpu
client.quit()
print(f"rate {count / seconds:.1f}")
print(f"cpu_us {used * 1e6 / count:.1f}")
