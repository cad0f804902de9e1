#!/usr/bin/env bash
# The Debian package as a user gets it: built by CPack from this build tree, unpacked into a temporary root and
# started from there on a display of its own, with a home of its own. It must find its editor page and pictures
# beside itself and open on the lists; its menu entry, its AppStream data and the package itself must pass
# Debian's own checks.
# Usage: check-package.sh <build dir> <artifacts dir>
set -euo pipefail
build=$1
artifacts=$2
mkdir -p "$artifacts"
work=$(mktemp -d)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

echo "== package"
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/pkg" >"$work/cpack.log" 2>&1 || {
    cat "$work/cpack.log"
    fail "cpack"
}
deb=$(ls "$work"/pkg/brezzario_*.deb)
echo "$(basename "$deb"): $(du -h "$deb" | cut -f1)"
depends=$(dpkg-deb -f "$deb" Depends)
echo "Depends: $depends"
# Computed from the binary: Qt's libraries and the C++ runtime appear without being named anywhere by hand.
for library in libqt6core6 libqt6widgets6 libqt6webenginewidgets6 libstdc++6 libc6; do
    grep -q "$library" <<<"$depends" || fail "Depends lacks $library"
done

root="$work/root"
dpkg-deb -x "$deb" "$root"
share="$root/usr/share"
for file in usr/bin/brezzario usr/share/brezzario/Editor/editor.html usr/share/brezzario/Media/brezzario.svg \
    usr/share/icons/hicolor/scalable/apps/com.velarmo.Brezzario.svg \
    usr/share/icons/hicolor/48x48/apps/com.velarmo.Brezzario.png usr/share/doc/brezzario/copyright; do
    [ -e "$root/$file" ] || fail "$file is not in the package"
done

echo "== desktop-file-validate"
desktop-file-validate "$share/applications/com.velarmo.Brezzario.desktop"
echo "== appstreamcli validate"
appstreamcli validate --no-net "$share/metainfo/com.velarmo.Brezzario.metainfo.xml"
echo "== lintian"
lintian --tag-display-limit 0 --info "$deb" >"$work/lintian.txt" 2>&1 || true
cat "$work/lintian.txt"
! grep -q '^E: ' "$work/lintian.txt" || fail "lintian reports errors"

echo "== start"
home="$work/home"
mkdir -p "$home/run"
chmod 700 "$home/run"
exec 3>"$work/display"
Xvfb -displayfd 3 -screen 0 1600x1000x24 -nolisten tcp >"$work/xvfb.log" 2>&1 &
pids+=($!)
for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.1; done
display=":$(head -1 "$work/display")"
port=$((20000 + RANDOM % 20000))
# Nothing of the build tree is reachable: the unpacked program runs from its own folder.
(cd "$work" && env -i PATH=/usr/bin:/bin HOME="$home" XDG_RUNTIME_DIR="$home/run" DISPLAY="$display" \
    LANG=C.UTF-8 QTWEBENGINE_DISABLE_SANDBOX=1 QTWEBENGINE_REMOTE_DEBUGGING="127.0.0.1:$port" \
    strace -qq -e trace=openat -o "$work/aperti.txt" "$root/usr/bin/brezzario" >"$work/brezzario.log" 2>&1) &
pids+=($!)
export DISPLAY="$display"
window=""
for _ in $(seq 300); do
    window=$(xdotool search --name '^Liste CSV' 2>/dev/null | head -1) && [ -n "$window" ] && break
    sleep 0.1
done
[ -n "$window" ] || { cat "$work/brezzario.log"; fail "no window titled Liste CSV"; }
echo "window: $(xdotool getwindowname "$window")"
sleep 1
import -window root "$artifacts/pacchetto-liste.png"

# The templates' editor is the program's own page, read from the package's folder.
xdotool windowfocus --sync "$window"
xdotool key --clearmodifiers ctrl+2
sleep 1
xdotool key --clearmodifiers ctrl+n
pagina="file://$share/brezzario/Editor/editor.html"
trovata=""
for _ in $(seq 300); do
    trovata=$(/usr/bin/python3 - "$port" "$pagina" <<'PY' || true
import json, sys, urllib.request
port, pagina = sys.argv[1], sys.argv[2]
try:
    pagine = json.load(urllib.request.urlopen(f"http://127.0.0.1:{port}/json", timeout=2))
except Exception:
    sys.exit(1)
print("\n".join(p["url"] for p in pagine if p.get("url") == pagina))
PY
)
    [ -n "$trovata" ] && break
    sleep 0.1
done
[ -n "$trovata" ] || { cat "$work/brezzario.log"; fail "the editor page did not load from $pagina"; }
echo "editor page: $trovata"
sleep 1
import -window root "$artifacts/pacchetto-modello.png"
xdotool search --name '^Modelli' >/dev/null || fail "Ctrl+2 did not reach Modelli"

# The pictures of its own came from the package too: the window's icon and the symbols it draws itself.
grep -q "\"$share/brezzario/Media/brezzario.svg\"" "$work/aperti.txt" || fail "the icon was not read from the package"
grep -q "\"$share/brezzario/Media/icons/" "$work/aperti.txt" || fail "no symbol was read from the package"
echo "package: every check passed"
