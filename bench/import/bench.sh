#!/usr/bin/env bash
# CSV import: reading a 50 MB, 200,000-row list with our reader against Python's csv module, same file,
# same run. BUILD_DIR is set by bench/run.sh.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${BUILD_DIR:-$here/../../build}"
runs="${RUNS:-5}"
python=/usr/bin/python3

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
file="$work/clienti.csv"
"$python" "$here/make_csv.py" "$file" 200000
size_mb=$(awk -v b="$(stat -c %s "$file")" 'BEGIN { printf "%.1f", b / 1048576 }')

ours=$("$build/bench/import/bench_csv" "$file" "$runs")
theirs=$("$python" "$here/python_csv.py" "$file" "$runs")
ours_rate=${ours%% *}
theirs_rate=${theirs%% *}

echo "CSV import, ${size_mb} MB, 200,000 rows, CPU time, median of ${runs} runs (Python is told the delimiter)"
printf '%-34s %10s   %s\n' "reader" "MB/s" "result"
printf '%-34s %10s   %s\n' "CSVParser (parseRaw+header+table)" "$ours_rate" "${ours#* MB/s }"
printf '%-34s %10s   %s\n' "Python csv (decode+rows+header)" "$theirs_rate" "${theirs#* MB/s }"
awk -v a="$ours_rate" -v b="$theirs_rate" 'BEGIN { printf "ratio CSVParser / Python csv: %.2f\n", a / b }'
