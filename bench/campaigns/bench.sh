#!/usr/bin/env bash
# Campaigns screen: the plan of a 100,000-row list and the detail's whole reading; then a run at pace 0 to
# Postfix's smtp-sink of 10,000 messages (the daily limit cuts the list) with the detail of that campaign open,
# against the same run with no screen: the event loop's longest waits of a 1 ms timer, and the rate.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${BUILD_DIR:-$here/../../build}"
bench="$build/bench/campaigns/bench_campaigns"
rows="${CAMPAIGN_ROWS:-100000}"
sent="${CAMPAIGN_SENT:-10000}"
address=127.0.0.65 # bench/campaigns' own loopback address (tests/support/Loopback.h)
port=2525
export QT_QPA_PLATFORM=offscreen
export HOME="$(mktemp -d)" XDG_CONFIG_HOME="" XDG_DATA_HOME=""
/usr/sbin/smtp-sink -p -u nobody "$address:$port" 256 &
sink_pid=$!
trap 'kill "$sink_pid" 2>/dev/null; wait "$sink_pid" 2>/dev/null || true; rm -rf "$HOME"' EXIT
for _ in $(seq 100); do
    (exec 3<>"/dev/tcp/$address/$port") 2>/dev/null && break
    sleep 0.05
done
field() { sed -n "s/^$1 //p"; }

out=$("$bench" piano "$HOME/piano.sqlite" "$rows" 2>/dev/null)
plan_ms=$(field plan_ms <<<"$out")
printf 'Campaign of %s rows (%s to contact), median of 5\n' "$rows" "$(field recipients <<<"$out")"
printf '%-44s %8s ms\n' "plan" "$plan_ms" "the detail's whole reading" "$(field readings_ms <<<"$out")"

declare -A rate p99 max
for screen in dettaglio nessuno; do
    rm -f "$HOME/corsa.sqlite"*
    out=$("$bench" corsa "$HOME/corsa.sqlite" "$address" "$port" "$rows" "$sent" "$screen" 2>/dev/null)
    rate[$screen]=$(field rate <<<"$out")
    p99[$screen]=$(field p99_ms <<<"$out")
    max[$screen]=$(field max_ms <<<"$out")
done
printf '\nA run of %s messages at pace 0 over that list; a 1 ms timer\n' "$sent"
printf '%-28s %12s %10s %10s\n' "screen open" "messages/s" "p99 ms" "max ms"
printf '%-28s %12s %10s %10s\n' "campaign detail" "${rate[dettaglio]}" "${p99[dettaglio]}" "${max[dettaglio]}" \
    "none" "${rate[nessuno]}" "${p99[nessuno]}" "${max[nessuno]}"
awk -v p="$plan_ms" \
    -v s="${p99[dettaglio]}" -v a="${rate[dettaglio]}" -v b="${rate[nessuno]}" 'BEGIN {
    printf "goal: plan of 100,000 rows at most 100 ms   %.1f ms   %s\n", p, (p <= 100 ? "met" : "not met")
    printf "goal: p99 stall with the detail open during a run at most 16 ms   %.2f ms   %s\n", s, (s <= 16 ? "met" : "not met")
    printf "goal: run rate with the detail open at least 80%% of without   %.0f%%   %s\n", 100 * a / b, (a / b >= 0.8 ? "met" : "not met")
}'
