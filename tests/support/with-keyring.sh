#!/bin/sh
# Runs a test inside a private D-Bus session with a real gnome-keyring, unlocked with a throw-away
# password, in a home of its own. Nothing outlives the test: the session bus ends with it.
set -eu
HOME=$(mktemp -d)
XDG_RUNTIME_DIR=$HOME/run
export HOME XDG_RUNTIME_DIR
mkdir -m700 "$XDG_RUNTIME_DIR"
trap 'rm -rf "$HOME"' EXIT
dbus-run-session -- sh -c 'eval "$(printf %s pw | gnome-keyring-daemon --unlock --components=secrets)"; export GNOME_KEYRING_CONTROL; "$@"; status=$?; kill "$GNOME_KEYRING_PID" 2>/dev/null || true; exit $status' sh "$@"
