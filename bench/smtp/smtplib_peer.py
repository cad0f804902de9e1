#!/usr/bin/python3
"""The same work as bench_smtp with Python's smtplib: one connection, one recipient per message."""
import smtplib
import sys
import time

host, port, count, size = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
data = (b"From: Mittente <mittente@prova.example>\r\nTo: destinatario@prova.example\r\n"
        b"Subject: Prova di velocita\r\nMIME-Version: 1.0\r\nContent-Type: text/plain; charset=utf-8\r\n\r\n")
line = b"x" * 74 + b"\r\n"
while len(data) + len(line) <= size:
    data += line

client = smtplib.SMTP(host, port)
client.ehlo("prova.example")
start = time.perf_counter()
for i in range(count):
    client.sendmail("mittente@prova.example", ["destinatario%d@prova.example" % i], data)
seconds = time.perf_counter() - start
client.quit()
print("rate %.1f" % (count / seconds))
