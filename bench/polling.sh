#!/usr/bin/env bash
# What the polls cost, and how many processes a gateway cycle starts. Usage: bench/polling.sh BUILD-DIRECTORY
set -euo pipefail
build=$(realpath "${1:?the build directory}")

home=$(mktemp -d)
trap 'kill "$gateway" 2>/dev/null || true; rm -rf "$home"' EXIT
mkdir -m 700 "$home/run"
export HOME="$home" XDG_RUNTIME_DIR="$home/run"

cat > "$home/tailscale" <<'TOOL'
#!/bin/sh
echo "$*" >> "$HOME/runs"
case $1 in
    ip) echo 100.64.0.1 ;;
    serve) echo "https://desk.tail.ts.net (tailnet only)" ;;
    status) echo '{"Self":{"DNSName":"desk.tail.ts.net."},"Peer":{}}' ;;
esac
TOOL
chmod +x "$home/tailscale"

coproc SERVICE { exec "$build/duskrell" serve --port 0; }
gateway=$SERVICE_PID
read -r -u "${SERVICE[0]}" line
"$build/bench-polling" "http://127.0.0.1:$(grep -oE '[0-9]+$' <<< "$line")" "$home/tailscale"
echo "the tool's runs, by their arguments:"
sort "$home/runs" | uniq -c
