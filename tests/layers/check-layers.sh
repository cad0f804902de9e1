#!/usr/bin/env bash
# The layers point one way: app -> screens -> ui -> core. A file that includes a layer above its own, or a
# core file that includes a widget or a web view, fails this test with its name.
set -uo pipefail
src="$1"
status=0
fail() { echo "$1"; status=1; }

for area in records settings import composition smtp engine checks; do
    while IFS= read -r line; do
        fail "core includes the interface: $line"
    done < <(grep -HnE '#include [<"](ui/|screens/|app/|QtWidgets|QtWebEngine|QWidget|QWebEngine|QApplication|QMainWindow|QDialog)' "$src/$area"/*.{h,cpp} 2>/dev/null)
done
while IFS= read -r line; do
    fail "ui includes a screen or the shell: $line"
done < <(grep -HnE '#include "(screens|app)/' "$src"/ui/*.{h,cpp} 2>/dev/null)
while IFS= read -r line; do
    fail "a screen includes the shell: $line"
done < <(grep -rHnE '#include "app/' "$src"/screens 2>/dev/null)
[ $status -eq 0 ] && echo "layers: every include points down"
exit $status
