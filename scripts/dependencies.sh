#!/usr/bin/env bash
# Installs the Debian 12 packages that are missing, by name; does nothing when all are there.
# Usage: scripts/dependencies.sh build|test
set -euo pipefail

build_packages=(
    build-essential cmake ninja-build ccache pkg-config
    qt6-base-dev qt6-base-dev-tools qt6-webengine-dev qt6-webchannel-dev
    qcoro-qt6-dev qtkeychain-qt6-dev libqt6sql6-sqlite qt6-image-formats-plugins libqt6svg6
    adwaita-icon-theme libsecret-1-0 bind9-dnsutils libheif-dev libsqlite3-dev cmark-gfm
    qt6-translations-l10n
)
# Real servers for the tests (SMTP, DNS, secret service), the test CA, and the benchmarks' peers; Debian's
# checks of the package and what starts the unpacked program on a display of its own.
test_packages=(
    dbus gnome-keyring python3-aiosmtpd nsd openssl xvfb xauth fonts-dejavu-core postfix
    clang libclang-rt-14-dev
    lintian desktop-file-utils appstream xdotool strace imagemagick
)

packages=("${build_packages[@]}")
if [ "${1:-build}" = test ]; then
    packages+=("${test_packages[@]}")
fi

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
echo "Installing: ${missing[*]}"
# Postfix is only there for its smtp-sink and smtp-source: no mail system is configured.
echo "postfix postfix/main_mailer_type select No configuration" | "${sudo[@]}" debconf-set-selections
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -q
"${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
