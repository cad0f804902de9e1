#!/usr/bin/python3
"""Reads one message from stdin with Python's standard email package and prints what it understood as
JSON, so tests can check generated messages against a parser that is not our own."""
import base64
import email
import json
import re
import sys
from email import policy
from email.header import decode_header, make_header


def tree(part):
    if part.is_multipart():
        return part.get_content_type() + "(" + ",".join(tree(p) for p in part.iter_parts()) + ")"
    return part.get_content_type()


def leaf(part):
    data = part.get_payload(decode=True) or b""
    info = {
        "type": part.get_content_type(),
        "disposition": part.get_content_disposition(),
        "filename": part.get_filename(),
        "cid": part.get("Content-ID"),
        "transferEncoding": part.get("Content-Transfer-Encoding"),
        "data": base64.b64encode(data).decode("ascii"),
        "defects": [type(d).__name__ for d in part.defects],
    }
    if part.get_content_maintype() == "text":
        info["text"] = part.get_content().replace("\r\n", "\n")
    return info


def lines(raw):
    body = raw.split(b"\r\n")
    return {
        "maxLineBytes": max(len(line) for line in body),
        "bareLF": sum(line.count(b"\n") for line in body),
        "bareCR": sum(line.count(b"\r") for line in body),
        "endsWithCRLF": raw.endswith(b"\r\n"),
    }


def addresses(header):
    if header is None:
        return []
    return [{"name": a.display_name, "email": a.addr_spec} for a in header.addresses]


def phrase(msg):
    """The display name of the From header decoded as RFC 2047 says, dropping the blanks between adjacent
    encoded words (the modern address parser keeps them)."""
    value = msg.get("From")
    if value is None:
        return None
    raw = dict(msg.raw_items())["From"].replace("\r\n", "")
    name = raw[: raw.rfind("<")].strip() if "<" in raw else ""
    if name.startswith('"') and name.endswith('"'):
        return re.sub(r"\\(.)", r"\1", name[1:-1])
    return str(make_header(decode_header(name)))


def main():
    raw = sys.stdin.buffer.read()
    msg = email.message_from_bytes(raw, policy=policy.default)
    result = {
        "headerNames": list(msg.keys()),
        "subject": str(msg["Subject"]) if msg["Subject"] is not None else None,
        "from": addresses(msg["From"]),
        "fromName": phrase(msg),
        "to": addresses(msg["To"]),
        "replyTo": addresses(msg["Reply-To"]),
        "messageId": msg["Message-ID"],
        "date": msg["Date"].datetime.isoformat() if msg["Date"] is not None and msg["Date"].datetime else None,
        "raw": {k: v for k, v in msg.raw_items()},
        "tree": tree(msg),
        "preamble": msg.preamble,
        "defects": [type(d).__name__ for d in msg.defects],
        "leaves": [leaf(p) for p in msg.walk() if not p.is_multipart()],
        "lines": lines(raw),
    }
    for p in msg.walk():
        if p.is_multipart():
            result["defects"] += [type(d).__name__ for d in p.defects]
    json.dump(result, sys.stdout, ensure_ascii=False)


if __name__ == "__main__":
    main()
