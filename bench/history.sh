#!/usr/bin/env bash
# The session digest beside a bare read of the log, and beside jq. Usage: bench/history.sh BUILD-DIRECTORY
set -euo pipefail
exec python3 "$(dirname "$0")/history.py" "${1:?the build directory}"
