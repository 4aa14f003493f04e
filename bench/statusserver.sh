#!/usr/bin/env bash
# The status server beside nginx, on the loopback interface. Usage: bench/statusserver.sh BUILD-DIRECTORY
set -euo pipefail
exec python3 "$(dirname "$0")/statusserver.py" "${1:?the build directory}"
