#!/usr/bin/env bash
# Runs every libFuzzer executable under build-fuzz/fuzz for a set time each, one after the other, and
# prints per fuzzer how long it ran, how many inputs it tried and whether it found a crash.
#   bench/fuzz.sh [seconds per fuzzer, default 300]
# Build them first: cmake --preset fuzz && cmake --build build-fuzz
# Corpora persist in $FUZZ_WORK (default /tmp/brezzario-fuzz) so a later run goes on from there;
# seeds in fuzz/<area>/seeds/<fuzzer>/ are added to them. The dictionary is fuzz/<area>/<fuzzer>.dict,
# or the area's only .dict file. Crashing inputs are kept in
# $FUZZ_WORK/<fuzzer>/artifacts. Extra libFuzzer flags may be given in FUZZ_FLAGS; FUZZ_FILTER (an
# extended regular expression on the fuzzer's name) picks some of them.
set -uo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-300}"
work="${FUZZ_WORK:-/tmp/brezzario-fuzz}"
build="${FUZZ_BUILD_DIR:-$PWD/build-fuzz}"

mapfile -t fuzzers < <(find "$build/fuzz" -type f -perm -u+x -name 'fuzz_*' 2>/dev/null | sort)
if [ -n "${FUZZ_FILTER:-}" ]; then
    mapfile -t fuzzers < <(for f in "${fuzzers[@]}"; do basename "$f" | grep -qE "$FUZZ_FILTER" && echo "$f"; done)
fi
if [ "${#fuzzers[@]}" -eq 0 ]; then
    echo "No fuzzers under $build/fuzz: run 'cmake --preset fuzz && cmake --build build-fuzz' first." >&2
    exit 1
fi

results=()
status=0
for exe in "${fuzzers[@]}"; do
    name="$(basename "$exe")"
    area="$(basename "$(dirname "$exe")")"
    corpus="$work/$name/corpus"
    artifacts="$work/$name/artifacts"
    log="$work/$name/last-run.log"
    mkdir -p "$corpus" "$artifacts"
    if [ -d "fuzz/$area/seeds/$name" ]; then
        cp -n "fuzz/$area/seeds/$name"/* "$corpus"/ 2>/dev/null || true
    fi
    dict=()
    area_dicts=(fuzz/"$area"/*.dict)
    if [ -f "fuzz/$area/$name.dict" ]; then
        dict=(-dict="fuzz/$area/$name.dict")
    elif [ "${#area_dicts[@]}" -eq 1 ] && [ -f "${area_dicts[0]}" ]; then
        dict=(-dict="${area_dicts[0]}")
    fi
    before="$(find "$artifacts" -type f | wc -l)"
    echo "== $name: ${seconds}s, corpus $corpus"
    start=$(date +%s)
    # -timeout flags any single input that takes over 25 s (a regular expression gone quadratic).
    "$exe" "$corpus" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$artifacts/" "${dict[@]}" ${FUZZ_FLAGS:-} >"$log" 2>&1
    code=$?
    elapsed=$(( $(date +%s) - start ))
    runs="$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' | tail -1)"
    [ -n "$runs" ] || runs="$(grep -o '^#[0-9]*' "$log" | tail -1 | tr -d '#')"
    after="$(find "$artifacts" -type f | wc -l)"
    if [ "$code" -ne 0 ] || [ "$after" -gt "$before" ]; then
        found="yes (exit $code, see $log and $artifacts)"
        status=1
        grep -m3 -E 'ERROR|invariant failed|SUMMARY' "$log" | sed 's/^/    /'
    else
        found="no"
    fi
    results+=("$(printf '%-32s %8ss %14s   %s' "$name" "$elapsed" "${runs:-?}" "$found")")
done

echo
printf '%-32s %9s %14s   %s\n' "fuzzer" "time" "executions" "crash found"
printf '%s\n' "${results[@]}"
exit $status
