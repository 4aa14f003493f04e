#!/usr/bin/env bash
# The pearl and the panel on an X server of their own. Usage: bench/panel.sh BUILD-DIRECTORY
set -euo pipefail
# Debian's own Python is the one that knows python3-xlib.
exec /usr/bin/python3 "$(dirname "$0")/panel.py" "${1:?the build directory}"
