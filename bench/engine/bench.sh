#!/usr/bin/env bash
# The dashboard open on a simulation of 10,000 recipients at pace 0: the longest stall of the event loop.
set -euo pipefail
BUILD_DIR=${BUILD_DIR:-$(cd "$(dirname "$0")/../.." && pwd)/build}
cmake --build "$BUILD_DIR" --target bench_dashboard_stall >/dev/null
HOME=$(mktemp -d)
trap 'rm -rf "$HOME"' EXIT
export HOME XDG_CONFIG_HOME="$HOME/config" XDG_DATA_HOME="$HOME/data" XDG_CACHE_HOME="$HOME/cache"
export QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$HOME/run"
mkdir -m 700 "$XDG_RUNTIME_DIR"
"$BUILD_DIR/bench/engine/bench_dashboard_stall" "${1:-10000}"

# Planning a list of 100,000 rows.
cmake --build "$BUILD_DIR" --target bench_plan bench_run bench_smtp >/dev/null
"$BUILD_DIR/bench/engine/bench_plan" "${PLAN_ROWS:-100000}"

# A whole run of 10,000 recipients at pace 0 to Postfix's smtp-sink (plain TCP, no pipelining), beside the
# bare SMTP session sending ready-made messages of the same size over one connection. Three rounds each,
# interleaved; medians reported.
address=127.0.0.62 # bench/engine's own loopback address (tests/support/Loopback.h)
port=2525
recipients="${RUN_RECIPIENTS:-10000}"
/usr/sbin/smtp-sink -p -u nobody "$address:$port" 256 &
sink_pid=$!
trap 'kill "$sink_pid" 2>/dev/null; wait "$sink_pid" 2>/dev/null; rm -rf "$HOME"' EXIT
for _ in $(seq 100); do
    (exec 3<>"/dev/tcp/$address/$port") 2>/dev/null && break
    sleep 0.05
done
median() { sort -n | awk '{ v[NR] = $1 } END { print v[int((NR + 1) / 2)] }'; }
run_rates="" bare_rates="" peaks=""
for _ in 1 2 3; do
    out=$("$BUILD_DIR/bench/engine/bench_run" "$address" "$port" "$recipients")
    bytes=$(sed -n 's/^bytes //p' <<<"$out")
    run_rates+="$(sed -n 's/^rate //p' <<<"$out") "
    peaks+="$(sed -n 's/^peak_kb //p' <<<"$out") "
    bare_rates+="$("$BUILD_DIR/bench/smtp/bench_smtp" "$address" "$port" "$recipients" "$bytes" | sed -n 's/^rate //p') "
done
run=$(tr ' ' '\n' <<<"$run_rates" | grep . | median)
bare=$(tr ' ' '\n' <<<"$bare_rates" | grep . | median)
peak=$(tr ' ' '\n' <<<"$peaks" | grep . | median)
printf '%s recipients, messages of %s bytes, one connection, median of 3 rounds\n' "$recipients" "$bytes"
printf '%-44s %12s %10s %14s\n' "what" "messages/s" "vs bare" "peak memory"
awk -v r="$run" -v b="$bare" -v p="$peak" 'BEGIN {
    printf "%-44s %12.1f %10.2f %11.1f MB\n", "SendEngine::run (render, MIME, durable log)", r, r / b, p / 1024
    printf "%-44s %12.1f %10.2f %14s\n", "bare SMTPSession (ready-made bytes)", b, 1.0, "-"
    printf "per message: %.3f ms in the run, %.3f ms bare\n", 1000 / r, 1000 / b
}'
