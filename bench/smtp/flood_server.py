#!/usr/bin/python3
"""A hostile SMTP server for bench_replies: it greets with a reply that never ends and sends as fast as the
client takes, until the client closes or the given number of megabytes is out. Then it prints how many
bytes the client took in.
  flood_server.py HOST PORT line|lines MEGABYTES
"line" sends one line without an end; "lines" sends endless continuation lines "220-xxxx".
"""
import socket
import sys

host, port, mode, megabytes = sys.argv[1], int(sys.argv[2]), sys.argv[3], int(sys.argv[4])
block = b"x" * 65536 if mode == "line" else b"220-" + b"x" * 58 + b"\r\n"
block = block * (65536 // len(block))
listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
listener.bind((host, port))
listener.listen(1)
print("READY", flush=True)
connection, _ = listener.accept()
sent = 0
try:
    connection.sendall(b"220-" if mode == "line" else b"")
    while sent < megabytes * 1024 * 1024:
        sent += connection.send(block)
except OSError:
    pass
print("sent %d" % sent, flush=True)
