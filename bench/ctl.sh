#!/usr/bin/env bash
# From exec of ostrellectl to its end, against a bare program of Qt Core. Usage: bench/ctl.sh BUILD-DIRECTORY
set -euo pipefail
exec python3 "$(dirname "$0")/ctl.py" "${1:?the build directory}"
