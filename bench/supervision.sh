#!/usr/bin/env bash
# What the voice agent's supervisor and the installer's log cost. Usage: bench/supervision.sh BUILD-DIRECTORY
set -euo pipefail
build=$(realpath "${1:?the build directory}")

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
mkdir -m 700 "$home/run"
# No sudo of the machine's is asked.
mkdir "$home/bin"
printf '#!/bin/sh\nexit 0\n' > "$home/bin/sudo"
chmod +x "$home/bin/sudo"
echo "PATH=$home/bin:\$PATH" > "$home/.bash_profile"
HOME="$home" XDG_RUNTIME_DIR="$home/run" "$build/bench-supervision" 2> "$home/errors" | grep -v '^\[' ||
    { tail -5 "$home/errors" >&2; exit 1; }
