#!/usr/bin/env bash
# From exec to "Listening", and what the idle program costs. Usage: bench/startup.sh BUILD-DIRECTORY
set -euo pipefail
exec python3 "$(dirname "$0")/startup.py" "${1:?the build directory}"
