#!/usr/bin/env bash
# Starts and stops the servers network tests talk to, all on 127.0.0.1:
# nginx over HTTPS (https_host.sh) and the fault-injection server
# (tools/fault_server), both serving <dir>/www, which start empties.
#
#   test_servers.sh start <dir> [lifetime-seconds]
#   test_servers.sh stop <dir>
#
# start writes <dir>/servers.txt ("https_port=N" and "fault_port=N" lines);
# the CA that signed nginx's certificate is <dir>/https/ca.pem (ca.der for
# Windows stores). Both servers stop by themselves after the lifetime
# (default 1800 s) should stop never be called.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
fault_server="$here/../../tools/fault_server/fault_server.py"

usage() { echo "usage: $0 start <dir> [lifetime-seconds] | stop <dir>" >&2; exit 2; }

stop_servers() {
  local dir=$1
  if [ -f "$dir/fault.pid" ]; then
    # It closes its socket and exits within half a second of the signal.
    kill "$(cat "$dir/fault.pid")" 2>/dev/null || true
    rm -f "$dir/fault.pid"
  fi
  "$here/https_host.sh" stop "$dir/https"
  rm -f "$dir/servers.txt"
}

start_servers() {
  local dir lifetime https_port fault_port=""
  dir=$(mkdir -p "$1" && cd "$1" && pwd)
  lifetime=${2:-1800}
  stop_servers "$dir"
  rm -rf "$dir/www"
  mkdir -p "$dir/www"

  https_port=$("$here/https_host.sh" start "$dir/https" "$dir/www" "$lifetime")

  : >"$dir/fault.out"
  setsid python3 "$fault_server" --root "$dir/www" --lifetime "$lifetime" \
    </dev/null >"$dir/fault.out" 2>"$dir/fault.err" &
  echo $! >"$dir/fault.pid"
  for _ in $(seq 100); do
    fault_port=$(head -n 1 "$dir/fault.out")
    [ -n "$fault_port" ] && break
    sleep 0.1
  done
  if [ -z "$fault_port" ]; then
    echo "test_servers: the fault server did not start" >&2
    cat "$dir/fault.err" >&2
    stop_servers "$dir"
    return 1
  fi
  printf 'https_port=%s\nfault_port=%s\n' "$https_port" "$fault_port" >"$dir/servers.txt"
  cat "$dir/servers.txt"
}

case "${1:-}" in
  start) [ $# -ge 2 ] || usage; start_servers "$2" "${3:-}" ;;
  stop) [ $# -eq 2 ] || usage; stop_servers "$2" ;;
  *) usage ;;
esac
