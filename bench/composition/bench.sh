#!/usr/bin/env bash
# Message building: our builder and Python's email package on the same tasks, in the same run.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
build="${BUILD_DIR:-$here/../../build}"
exe="$build/bench/composition/bench_composition"
[ -x "$exe" ] || cmake --build "$build" --target bench_composition >/dev/null

ours="$("$exe")"
peer="$(/usr/bin/python3 "$here/peer_email.py")"
value() { printf '%s\n' "$1" | sed -n "s/^$2=//p"; }

printf '%-44s %14s %14s %10s\n' "task" "Brezzario" "Python email" "ratio"
row() { # label key unit higher-is-better
    local a b ratio
    a="$(value "$ours" "$2")"
    b="$(value "$peer" "$2")"
    if [ "$4" = higher ]; then ratio="$(awk -v a="$a" -v b="$b" 'BEGIN { printf "%.1fx", a / b }')"
    else ratio="$(awk -v a="$a" -v b="$b" 'BEGIN { printf "%.1fx", b / a }')"; fi
    printf '%-44s %11s %-2s %11s %-2s %10s\n' "$1" "$a" "$3" "$b" "$3" "$ratio"
}
row "one message, 10 MB attachment (per message)" attachment_ms ms lower
row "10,000 personalised messages" personalised_per_s /s higher
printf '%-44s %11s %-2s %11s %-2s\n' "  size of the attachment message" "$(value "$ours" attachment_bytes)" B \
    "$(value "$peer" attachment_bytes)" B
printf '%-44s %11s %-2s %11s %-2s\n' "  size of a personalised message" "$(value "$ours" personalised_bytes)" B \
    "$(value "$peer" personalised_bytes)" B
echo "(ratio: how many times faster Brezzario is)"
