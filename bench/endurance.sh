#!/usr/bin/env bash
# Days of the program's life in minutes, written to docs/reliability.md. Usage: bench/endurance.sh BUILD-DIRECTORY [MINUTES]
# With 0 minutes only what changes in the keyring cost is measured. Under script/bench the length is OSTRELLE_ENDURANCE_MINUTES, or ten minutes.
set -euo pipefail
minutes=${2:-${OSTRELLE_ENDURANCE_MINUTES:-10}}
"$(dirname "$0")/../script/bootstrap" run faults
exec /usr/bin/python3 -B "$(dirname "$0")/endurance.py" "$minutes"
