#!/usr/bin/env bash
# Lists: a 50 MB, 200,000-row file from bytes to a committed list; a 100,000-row list's detail and search;
# the master list with 20 lists of 100,000 rows. Python's csv module reading the same file is the peer for
# the import, run in the same run. BUILD_DIR is set by bench/run.sh.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${BUILD_DIR:-$here/../../build}"
python=/usr/bin/python3
export QT_QPA_PLATFORM=offscreen

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
file="$work/clienti.csv"
"$python" "$here/../import/make_csv.py" "$file" 200000
size_mb=$(awk -v b="$(stat -c %s "$file")" 'BEGIN { printf "%.1f", b / 1048576 }')

import=$("$build/bench/lists/bench_lists" import "$file" "$work")
peer=$("$python" "$here/../import/python_csv.py" "$file" 1)
screen=$("$build/bench/lists/bench_lists" screen "$work" 2>/dev/null)
value() { printf '%s\n' "$1" | awk -v k="$2" '$1 == k { print $2 }'; }

echo "Lists, wall clock on a shared machine (goals: import <= 3 s; detail open and a keystroke <= 100 ms)"
printf '%-52s %10s\n' "measure" "value"
printf '%-52s %8s s\n' "import ${size_mb} MB: read and parse" "$(value "$import" import_read_parse)"
printf '%-52s %8s s\n' "import: open the sheet (table, column, count)" "$(value "$import" import_sheet_open)"
printf '%-52s %8s s\n' "import: insert 200,000 rows and commit" "$(value "$import" import_insert_commit)"
printf '%-52s %8s s\n' "import: bytes to committed list" "$(value "$import" import_total)"
printf '%-52s %8s MB\n' "import: peak memory" "$(value "$import" import_peak_rss)"
printf '%-52s %10s\n' "peer: Python csv, same file (rate, rows)" "${peer}"
printf '%-52s %8s ms\n' "open the detail of 100,000 rows" "$(value "$screen" detail_open_100k)"
printf '%-52s %8s ms\n' "search texts ready after opening (beside the UI)" "$(value "$screen" detail_search_ready_after_open_100k)"
printf '%-52s %8s ms\n' "one keystroke of search, median" "$(value "$screen" search_keystroke_median_100k)"
printf '%-52s %8s ms\n' "one keystroke of search, worst" "$(value "$screen" search_keystroke_worst_100k)"
printf '%-52s %8s ms\n' "open and type at once (texts made in the keystroke)" "$(value "$screen" detail_open_then_key_at_once_100k)"
printf '%-52s %8s ms\n' "master list: read 20 x 100,000 rows' progress" "$(value "$screen" master_reload_20x100k)"
printf '%-52s %8s ms\n' "master list: read and draw" "$(value "$screen" master_draw_20x100k)"
printf '%-52s %8s MB\n' "screens: peak memory" "$(value "$screen" screen_peak_rss)"
