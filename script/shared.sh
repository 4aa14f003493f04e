# shellcheck shell=bash
# Sourced by the scripts that start programs and wait for them.

# Ends the script with this message, and with the end of the file that $log names.
give_up() {
    echo "$(basename "$0"): $*" >&2
    [ ! -s "${log:-}" ] || tail -n 40 "$log" | sed 's/^/  /' >&2
    exit 1
}

# Waits up to 30 s for a command to succeed.
wait_for() {
    for _ in {1..300}; do
        ! "$@" >/dev/null 2>&1 || return 0
        sleep 0.1
    done
    give_up "waited in vain for: $*"
}
