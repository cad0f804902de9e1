#!/usr/bin/env bash
# CSV reading: a 50 MB, 200,000-row Windows-1252 spreadsheet export (title row, semicolons, quoted cells with
# semicolons, doubled quotes and line feeds) with our reader against Python's csv module reading the same
# bytes, same run. BUILD_DIR is set by bench/run.sh.
# An import reads a file once in a program that has not read one before, so each figure is one read in a
# fresh process (median of RUNS processes): it pays for the memory it takes from the system, which on a
# virtual machine is a good part of the cost. Repeated reads in one process (warm) are shown beside it.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${BUILD_DIR:-$here/../../build}"
runs="${RUNS:-5}"
python=/usr/bin/python3
cmake --build "$build" --target bench_csv >/dev/null

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
file="$work/clienti.csv"
"$python" "$here/make_csv.py" "$file" 200000
size=$(stat -c %s "$file")
size_mb=$(awk -v b="$size" 'BEGIN { printf "%.1f", b / 1048576 }')

ours() { "$build/bench/import/bench_csv" "$file" "$1"; }
theirs() { "$python" "$here/python_csv.py" "$file" "$1" cp1252 ';'; }
# The median run of the lines on standard input, by rate.
median_run() { grep . | sort -n -k1,1 | awk '{ l[NR] = $0 } END { print l[int((NR + 1) / 2)] }'; }
cold_ours="" cold_theirs=""
for _ in $(seq "$runs"); do
    cold_ours+="$(ours 1)"$'\n'
    cold_theirs+="$(theirs 1)"$'\n'
done
cold_ours=$(median_run <<<"$cold_ours")
cold_theirs=$(median_run <<<"$cold_theirs")
warm_ours=$(ours "$runs")
warm_theirs=$(theirs "$runs")
rate() { awk '{ print $1 }' <<<"$1"; }
peak() { awk '{ print $(NF - 1) }' <<<"$1"; }
rows() { awk '{ print $3 " rows, " $5 " columns" }' <<<"$1"; }

echo "CSV reading, ${size_mb} MB Windows-1252 export, 200,000 rows; CPU time, median of ${runs}"
echo "(Python is told the encoding and the delimiter; CSVParser detects both. Peak: the process's resident"
echo " memory at its highest, the file's bytes included)"
printf '%-34s %12s %10s %12s %10s   %s\n' "reader" "MB/s, fresh" "vs Python" "peak memory" "MB/s, warm" "result"
printf '%-34s %12s %10s %9s MB %10s   %s\n' "CSVParser (parseRaw+header+table)" "$(rate "$cold_ours")" \
    "$(awk -v a="$(rate "$cold_ours")" -v b="$(rate "$cold_theirs")" 'BEGIN { printf "%.2f", a / b }')" \
    "$(peak "$cold_ours")" "$(rate "$warm_ours")" "$(rows "$cold_ours")"
printf '%-34s %12s %10s %9s MB %10s   %s\n' "Python csv (decode+rows+header)" "$(rate "$cold_theirs")" "1.00" \
    "$(peak "$cold_theirs")" "$(rate "$warm_theirs")" "$(rows "$cold_theirs")"
awk -v a="$(rate "$cold_ours")" -v b="$(rate "$cold_theirs")" -v p="$(peak "$cold_ours")" -v s="$size" 'BEGIN {
    f = p * 1048576 / s
    printf "goal: CSV reading at least 250 MB/s            %8.1f   %s\n", a, (a >= 250 ? "met" : "not met")
    printf "goal: CSV reading at least 2x Python csv       %8.2f   %s\n", a / b, (a / b >= 2 ? "met" : "not met")
    printf "goal: CSV peak memory at most 3x the file      %8.2f   %s (%.0f MB)\n", f, (f <= 3 ? "met" : "not met"), p
}'
