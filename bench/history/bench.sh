#!/usr/bin/env bash
# The History and Esclusi screens on a store of 1,000,000 logs and 100,000 excluded addresses: time to open,
# to filter, one keystroke of search, peak memory; then the event loop's gaps with the history open during a
# run of 10,000 recipients at pace 0 to Postfix's smtp-sink, beside the same run with no screen open.
set -euo pipefail
BUILD_DIR=${BUILD_DIR:-$(cd "$(dirname "$0")/../.." && pwd)/build}
cmake --build "$BUILD_DIR" --target bench_history >/dev/null
bench="$BUILD_DIR/bench/history/bench_history"
HOME=$(mktemp -d)
trap 'rm -rf "$HOME"' EXIT
export HOME XDG_CONFIG_HOME="$HOME/config" XDG_DATA_HOME="$HOME/data" XDG_CACHE_HOME="$HOME/cache"
export QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$HOME/run"
mkdir -m 700 "$XDG_RUNTIME_DIR"
logs="${HISTORY_LOGS:-1000000}"
esclusi="${HISTORY_SUPPRESSIONS:-100000}"
store="$HOME/storico.sqlite"
"$bench" prepara "$store" "$logs" "$esclusi"

median() { sort -n | awk 'NF { v[++n] = $1 } END { print n ? v[int((n + 1) / 2)] : "-" }'; }
# Three rounds per screen, each in a process of its own so that peak memory is the screen's; medians.
measure() {
    local mode=$1 out
    declare -A values=()
    for _ in 1 2 3; do
        out=$("$bench" "$mode" "$store" 2>/dev/null)
        for key in open_ms filter_ms key_ms key_all_ms key_none_ms floor_ms peak_kb; do
            values[$key]+="$(sed -n "s/^$key //p" <<<"$out") "
        done
    done
    for key in open_ms filter_ms key_ms key_all_ms key_none_ms floor_ms peak_kb; do
        printf '%s=%s ' "$key" "$(tr ' ' '\n' <<<"${values[$key]}" | median)"
    done
}
printf '%s logs, %s excluded addresses, median of 3 rounds (goals: open 500 ms, filter or key 300 ms, 400 MB)\n' \
    "$logs" "$esclusi"
printf '%-10s %9s %10s %14s %14s %14s %12s\n' "screen" "open ms" "filter ms" "key+filter ms" "key, all ms" \
    "key, none ms" "peak memory"
floor=""
for mode in storico esclusi; do
    eval "$(measure "$mode")"
    printf '%-10s %9s %10s %14s %14s %14s %9.1f MB\n' "$mode" "$open_ms" "$filter_ms" "$key_ms" "$key_all_ms" \
        "$key_none_ms" "$(awk -v k="$peak_kb" 'BEGIN { print k / 1024 }')"
    if [ "$mode" = storico ]; then floor=$floor_ms; fi
done
printf 'floor: SQLite counting the same no-match search alone (ASCII case rules, no screen): %s ms\n' "$floor"

# A file of a million cells, half of them addresses, imported with the Esclusi screen open.
cells="${IMPORT_CELLS:-1000000}"
out=$("$bench" importa "$HOME/importa.sqlite" "$cells" 2>/dev/null)
rm -f "$HOME/importa.sqlite"*
printf '\nImport of a file of %s cells: %s addresses added in %s s; longest event-loop gap %s ms; peak %s MB\n' \
    "$cells" "$(sed -n 's/^added //p' <<<"$out")" "$(sed -n 's/^seconds //p' <<<"$out")" \
    "$(sed -n 's/^max_gap_ms //p' <<<"$out")" "$(awk -v k="$(sed -n 's/^peak_kb //p' <<<"$out")" 'BEGIN { printf "%.1f", k / 1024 }')"

address=127.0.0.63 # bench/history's own loopback address (tests/support/Loopback.h)
port=2525
recipients="${RUN_RECIPIENTS:-10000}"
/usr/sbin/smtp-sink -p -u nobody "$address:$port" 256 &
sink_pid=$!
trap 'kill "$sink_pid" 2>/dev/null; wait "$sink_pid" 2>/dev/null || true; rm -rf "$HOME"' EXIT
for _ in $(seq 100); do
    (exec 3<>"/dev/tcp/$address/$port") 2>/dev/null && break
    sleep 0.05
done
printf '\nA run of %s recipients at pace 0 to smtp-sink over a store of %s logs; a 1 ms timer (goal: p99 16 ms)\n' \
    "$recipients" "$logs"
printf '%-28s %9s %10s %10s %12s\n' "screen open" "seconds" "p99 ms" "max ms" "rows added"
for screen in storico vuoto; do
    cp "$store" "$HOME/corsa.sqlite"
    out=$("$bench" corsa "$HOME/corsa.sqlite" "$address" "$port" "$recipients" "$screen" 2>/dev/null)
    rm -f "$HOME/corsa.sqlite"*
    label=$([ "$screen" = storico ] && echo "History (1,000,000 logs)" || echo "none")
    printf '%-28s %9s %10s %10s %12s\n' "$label" "$(sed -n 's/^seconds //p' <<<"$out")" \
        "$(sed -n 's/^p99_ms //p' <<<"$out")" "$(sed -n 's/^max_ms //p' <<<"$out")" \
        "$(sed -n 's/^rows_added //p' <<<"$out")"
done
