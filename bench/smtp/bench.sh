#!/usr/bin/env bash
# Messages per second over one SMTP connection at pace 0, 10 KB messages, to Postfix's smtp-sink on
# loopback (plain TCP), side by side with Postfix's smtp-source (the ceiling) and Python's smtplib.
# Five rounds, interleaved; the median of each is reported. Then how reading replies scales with their
# size, and the memory a server that never ends its greeting can make the client hold.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
BUILD_DIR="${BUILD_DIR:-$here/../../build}"
address=127.0.0.61 # bench/smtp's own loopback address (tests/support/Loopback.h)
port=2525
messages="${SMTP_BENCH_MESSAGES:-2000}"
size=10240
rounds=5

sink_pid=""
start_sink() { # $1: extra smtp-sink options
    # shellcheck disable=SC2086
    /usr/sbin/smtp-sink $1 -u nobody "$address:$port" 256 &
    sink_pid=$!
    for _ in $(seq 100); do
        (exec 3<>"/dev/tcp/$address/$port") 2>/dev/null && return 0
        sleep 0.05
    done
    echo "smtp-sink did not start" >&2
    exit 1
}
stop_sink() {
    [ -n "$sink_pid" ] && kill "$sink_pid" 2>/dev/null && wait "$sink_pid" 2>/dev/null || true
    sink_pid=""
}
trap stop_sink EXIT

rate_of() { sed -n 's/^rate //p'; }
smtp_source_rate() {
    local start end
    start=$(date +%s.%N)
    /usr/sbin/smtp-source -d -s 1 -m "$messages" -l "$size" -M prova.example \
        -f mittente@prova.example -t destinatario@prova.example "$address:$port"
    end=$(date +%s.%N)
    echo "$messages $start $end" | awk '{ printf "%.1f\n", $1 / ($3 - $2) }'
}
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }

declare -A results
for sink in pipelining plain; do
    if [ "$sink" = plain ]; then start_sink "-p"; else start_sink ""; fi
    for _ in $(seq "$rounds"); do
        results[brezzario_$sink]+="$("$BUILD_DIR/bench/smtp/bench_smtp" "$address" "$port" "$messages" "$size" | rate_of) "
        results[smtplib_$sink]+="$(/usr/bin/python3 "$here/smtplib_peer.py" "$address" "$port" "$messages" "$size" | rate_of) "
        results[source_$sink]+="$(smtp_source_rate) "
    done
    stop_sink
done

pick() { tr ' ' '\n' <<<"${results[$1]}" | grep . | median; }
printf '%s messages of %s bytes over one connection, median of %s rounds\n' "$messages" "$size" "$rounds"
printf '%-44s %12s %14s %12s\n' "client (sink)" "messages/s" "vs smtp-source" "vs smtplib"
for sink in pipelining plain; do
    source=$(pick "source_$sink")
    python=$(pick "smtplib_$sink")
    for who in brezzario smtplib source; do
        case $who in
        brezzario) label="Brezzario SMTPSession" ;;
        smtplib) label="Python smtplib" ;;
        source) label="Postfix smtp-source" ;;
        esac
        rate=$(pick "${who}_$sink")
        awk -v l="$label ($sink sink)" -v r="$rate" -v s="$source" -v p="$python" \
            'BEGIN { printf "%-44s %12.1f %14.2f %12.2f\n", l, r, r / s, r / p }'
    done
done

# Replies: time per byte as replies grow, and what a server that never ends its greeting costs.
echo
"$BUILD_DIR/bench/smtp/bench_replies" parse
echo
flood_port=2526
printf '%-44s %10s %16s %14s %14s\n' "server floods the greeting with" "ms" "bytes it got out" "peak KB before" "peak KB after"
for mode in line lines; do
    for megabytes in 3 300 3000; do
        /usr/bin/python3 "$here/flood_server.py" "$address" "$flood_port" "$mode" "$megabytes" >/tmp/bench-flood.$$ &
        flood_pid=$!
        for _ in $(seq 100); do grep -q READY /tmp/bench-flood.$$ 2>/dev/null && break; sleep 0.05; done
        out="$("$BUILD_DIR/bench/smtp/bench_replies" flood "$address" "$flood_port")"
        wait "$flood_pid" || true
        sent="$(sed -n 's/^sent //p' /tmp/bench-flood.$$)"
        case $mode in line) what="one endless line" ;; lines) what="endless 64-byte lines" ;; esac
        printf '%-44s %10s %16s %14s %14s\n' "$what, up to $megabytes MB" "$(sed -n 's/^ms //p' <<<"$out")" "$sent" \
            "$(sed -n 's/^peak_kb_before //p' <<<"$out")" "$(sed -n 's/^peak_kb_after //p' <<<"$out")"
        grep -q '^outcome Risposta inattesa a CONNECT: 220 risposta del server troppo lunga$' <<<"$out" ||
            { echo "unexpected outcome: $out" >&2; exit 1; }
    done
done
rm -f /tmp/bench-flood.$$
