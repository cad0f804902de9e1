#!/usr/bin/python3
"""A real SMTP server for the tests, built on Debian's aiosmtpd.

Started and stopped by AiosmtpdServer (AiosmtpdServer.h), which documents the options. It prints
"READY" on stdout once it accepts connections and stops when its stdin closes, so it never outlives
the test that started it.

Each accepted message is saved in the spool folder as NNNN.json: the envelope, the bytes of the message
(base64, dot-stuffing undone) and the user that authenticated, if any. Each AUTH attempt adds a line to
auth.jsonl with the mechanism, the login, whether it succeeded and whether the connection was encrypted at
that moment; never the password. conversation.log gets one line per EHLO, AUTH and accepted message, with
" tls" when the connection was encrypted.

With --starttls the certificate isn't used from the first byte: the server speaks plain TCP, offers
STARTTLS, and offers AUTH only once the connection is encrypted, as public servers on port 587 do.
"""

import argparse
import base64
import json
import logging
import os
import re
import ssl
import sys
import threading

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult


def rule(text):
    pattern, _, reply = text.partition("=")
    if not reply:
        raise argparse.ArgumentTypeError("a rule is PATTERN=REPLY")
    return re.compile(pattern, re.IGNORECASE), reply


def encrypted(server):
    return server.transport is not None and server.transport.get_extra_info("ssl_object") is not None


NOTE_LOCK = threading.Lock()


def note(folder, line):
    with NOTE_LOCK:
        with open(os.path.join(folder, "conversation.log"), "a", encoding="utf-8") as log:
            log.write(line + "\n")


def write_json(folder, name, value):
    temporary = os.path.join(folder, name + ".tmp")
    with open(temporary, "w", encoding="utf-8") as out:
        json.dump(value, out)
    os.replace(temporary, os.path.join(folder, name))


class Handler:
    def __init__(self, options):
        self.options = options
        self.count = 0
        self.lock = threading.Lock()

    @staticmethod
    def first_match(rules, address):
        for pattern, reply in rules:
            if pattern.search(address):
                return reply
        return None

    async def handle_EHLO(self, server, session, envelope, hostname, responses):
        session.host_name = hostname
        note(self.options.spool, "EHLO" + (" tls" if encrypted(server) else ""))
        return responses

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        reply = self.first_match(self.options.reject_rcpt, address)
        if reply:
            return reply
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        for address in envelope.rcpt_tos:
            reply = self.first_match(self.options.reject_data, address)
            if reply:
                return reply
        with self.lock:
            self.count += 1
            number = self.count
        note(self.options.spool, "DATA" + (" tls" if encrypted(server) else ""))
        login = session.auth_data.decode("utf-8", "replace") if session.authenticated else None
        write_json(self.options.spool, "%04d.json" % number, {
            "mail_from": envelope.mail_from,
            "rcpt_tos": envelope.rcpt_tos,
            "data": base64.b64encode(envelope.original_content).decode("ascii"),
            "authenticated_as": login,
        })
        return "250 2.0.0 Messaggio %d accettato" % number


class Authenticator:
    def __init__(self, options):
        self.options = options
        self.lock = threading.Lock()

    def __call__(self, server, session, envelope, mechanism, auth_data):
        login = auth_data.login.decode("utf-8", "replace")
        success = login == self.options.user and auth_data.password.decode("utf-8", "replace") == self.options.password
        tls = encrypted(server)
        with self.lock:
            with open(os.path.join(self.options.spool, "auth.jsonl"), "a", encoding="utf-8") as log:
                log.write(json.dumps({"mechanism": mechanism, "login": login, "success": success, "tls": tls}) + "\n")
        note(self.options.spool, "AUTH " + mechanism + (" tls" if tls else ""))
        if success:
            return AuthResult(success=True, auth_data=auth_data.login)
        return AuthResult(success=False, handled=False)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--host", required=True)
    parser.add_argument("--port", type=int, required=True)
    parser.add_argument("--spool", required=True)
    parser.add_argument("--cert", help="certificate for implicit TLS; plain TCP without it")
    parser.add_argument("--key")
    parser.add_argument("--starttls", action="store_true", help="offer STARTTLS with the certificate instead")
    parser.add_argument("--user", help="offer AUTH and accept this user; no AUTH without it")
    parser.add_argument("--password", default="")
    parser.add_argument("--mechanisms", default="LOGIN,PLAIN")
    parser.add_argument("--auth-required", action="store_true")
    parser.add_argument("--reject-rcpt", type=rule, action="append", default=[])
    parser.add_argument("--reject-data", type=rule, action="append", default=[])
    options = parser.parse_args()

    arguments = {"hostname": options.host, "port": options.port, "server_hostname": "smtp.prova.example"}
    if options.cert:
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(options.cert, options.key)
        arguments["tls_context" if options.starttls else "ssl_context"] = context
    if options.user is not None:
        offered = {m.strip().upper() for m in options.mechanisms.split(",") if m.strip()}
        arguments["authenticator"] = Authenticator(options)
        # With TLS from the first byte aiosmtpd doesn't see a TLS session of its own and would hide AUTH.
        arguments["auth_require_tls"] = options.starttls
        arguments["auth_exclude_mechanism"] = [m for m in ("LOGIN", "PLAIN") if m not in offered]
        arguments["auth_required"] = options.auth_required

    # aiosmtpd warns about its own use of a deprecated attribute at every AUTH.
    logging.getLogger("mail.log").setLevel(logging.ERROR)
    # Its own readiness wait is 5 s by default: too short on a machine busy with builds.
    controller = Controller(Handler(options), ready_timeout=15, **arguments)
    controller.start()
    print("READY", flush=True)
    try:
        sys.stdin.read()
    finally:
        controller.stop()


if __name__ == "__main__":
    main()
