#!/usr/bin/env bash
# Delivery of real-shaped campaign messages (about 22 KB: HTML with a picture, a small attachment) over one
# connection at pace 0 to Postfix's smtp-sink on loopback (plain TCP, no pipelining offered), beside
# nodemailer and Python's email + smtplib doing the same work, and Postfix's smtp-source sending ready-made
# messages of the same size (the ceiling: it renders and logs nothing). Three rounds, interleaved; medians.
# Then one long run for memory: resident growth from the first message to the last.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
BUILD_DIR="${BUILD_DIR:-$here/../../build}"
address=127.0.0.64 # bench/delivery's own loopback address (tests/support/Loopback.h)
port=2525
messages="${DELIVERY_MESSAGES:-10000}"
long_run="${DELIVERY_MEMORY_RECIPIENTS:-100000}"
rounds=3
cmake --build "$BUILD_DIR" --target bench_delivery >/dev/null

work=$(mktemp -d)
sink_pid=""
cleanup() {
    [ -n "$sink_pid" ] && kill "$sink_pid" 2>/dev/null && wait "$sink_pid" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/config" XDG_DATA_HOME="$work/home/data"
mkdir -p "$HOME"

# nodemailer from the npm registry, kept in a cache folder between runs.
node_dir="${XDG_CACHE_HOME_BENCH:-/var/tmp/brezzario-bench}/node"
if [ ! -d "$node_dir/node_modules/nodemailer" ]; then
    mkdir -p "$node_dir"
    npm install --silent --no-audit --no-fund --prefix "$node_dir" nodemailer@6 >/dev/null
fi

"$BUILD_DIR/bench/delivery/bench_delivery" assets "$work"
/usr/sbin/smtp-sink -p -u nobody "$address:$port" 256 &
sink_pid=$!
for _ in $(seq 100); do
    (exec 3<>"/dev/tcp/$address/$port") 2>/dev/null && break
    sleep 0.05
done

field() { sed -n "s/^$1 //p"; }
median() { tr ' ' '\n' | grep . | sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
declare -A rate cpu
bytes=""
for _ in $(seq "$rounds"); do
    out=$("$BUILD_DIR/bench/delivery/bench_delivery" run "$address" "$port" "$messages" "$work")
    bytes=$(field bytes <<<"$out")
    rate[ours]+="$(field rate <<<"$out") "
    cpu[ours]+="$(field cpu_us <<<"$out") "
    out=$(NODE_PATH="$node_dir/node_modules" node "$here/peer_nodemailer.js" "$address" "$port" "$messages" "$work" "$here/template.html")
    rate[node]+="$(field rate <<<"$out") "
    cpu[node]+="$(field cpu_us <<<"$out") "
    out=$(/usr/bin/python3 "$here/peer_python.py" "$address" "$port" "$messages" "$work" "$here/template.html")
    rate[python]+="$(field rate <<<"$out") "
    cpu[python]+="$(field cpu_us <<<"$out") "
    start=$(date +%s.%N)
    /usr/sbin/smtp-source -d -s 1 -m "$messages" -l "$bytes" -M prova.example \
        -f negozio@prova.example -t cliente@prova.example "$address:$port"
    end=$(date +%s.%N)
    rate[source]+="$(awk -v n="$messages" -v a="$start" -v b="$end" 'BEGIN { printf "%.1f", n / (b - a) }') "
done

ours=$(median <<<"${rate[ours]}")
node=$(median <<<"${rate[node]}")
python=$(median <<<"${rate[python]}")
source=$(median <<<"${rate[source]}")
printf '%s messages of %s bytes over one connection, median of %s rounds\n' "$messages" "$bytes" "$rounds"
printf '%-46s %12s %14s %12s\n' "client" "messages/s" "CPU/message" "Brezzario is"
ratio() { awk -v a="$ours" -v b="$1" 'BEGIN { printf "%.2fx", a / b }'; }
printf '%-46s %12.1f %11.0f µs %12s\n' "Brezzario (render, MIME, durable log)" "$ours" "$(median <<<"${cpu[ours]}")" "-"
printf '%-46s %12.1f %11.0f µs %12s\n' "nodemailer (pooled, one connection)" "$node" "$(median <<<"${cpu[node]}")" \
    "$(ratio "$node")"
printf '%-46s %12.1f %11.0f µs %12s\n' "Python email + smtplib" "$python" "$(median <<<"${cpu[python]}")" \
    "$(ratio "$python")"
printf '%-46s %12.1f %14s %12s\n' "Postfix smtp-source (ready-made, the ceiling)" "$source" "-" "$(ratio "$source")"
awk -v o="$ours" -v n="$node" -v p="$python" -v s="$source" 'BEGIN {
    printf "goal: at least 1500 messages/s      %8.1f   %s\n", o, (o >= 1500 ? "met" : "not met")
    printf "goal: at least 0.55x smtp-source    %8.2f   %s\n", o / s, (o / s >= 0.55 ? "met" : "not met")
    printf "goal: at least 1.9x nodemailer      %8.2f   %s\n", o / n, (o / n >= 1.9 ? "met" : "not met")
    printf "ratio to Python email + smtplib     %8.2f\n", o / p
}'

if [ "$long_run" -gt 0 ]; then
    out=$("$BUILD_DIR/bench/delivery/bench_delivery" run "$address" "$port" "$long_run" "$work")
    growth=$(field growth_kb <<<"$out")
    awk -v g="$growth" -v n="$long_run" -v p="$(field peak_kb <<<"$out")" 'BEGIN {
        printf "goal: memory growth over a %d-recipient run at most 50 MB   %.1f MB   %s (peak %.1f MB)\n",
            n, g / 1024, (g / 1024 <= 50 ? "met" : "not met"), p / 1024 }'
fi

# Preparing a run of a stored list: heap held per recipient once the first message is out, and the longest
# the event loop waited meanwhile.
prepare_rows="${DELIVERY_PREPARE_ROWS:-100000}"
if [ "$prepare_rows" -gt 0 ]; then
    out=$("$BUILD_DIR/bench/delivery/bench_delivery" prepare "$address" "$port" "$prepare_rows")
    awk -v b="$(field bytes_per_recipient <<<"$out")" -v s="$(field stall_ms <<<"$out")" \
        -v t="$(field prepare_ms <<<"$out")" -v n="$prepare_rows" 'BEGIN {
        printf "goal: preparing %d rows, at most 1 KB per recipient   %d B   %s (to the first message %d ms)\n",
            n, b, (b <= 1024 ? "met" : "not met"), t
        printf "goal: no event-loop stall over 50 ms while preparing   %d ms   %s\n", s, (s <= 50 ? "met" : "not met")
    }'
fi
