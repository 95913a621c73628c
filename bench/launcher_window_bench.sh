#!/usr/bin/env bash
# The Linux launcher's start-to-interactive time and its memory, on a virtual display:
#   - start to interactive: from starting the process to the page drawn in its window with the
#     launcher's first state (median of several starts of an up-to-date installation);
#   - memory after the first patch: resident set of the launcher and of WebKit's web and network
#     processes once a fresh installation has been patched and the launcher stays open.
#
#   bench/launcher_window_bench.sh [build-dir] [starts]
#
# Uses the release build's launcher under test (its host and key come from the environment),
# vardeni-publish and a throwaway nginx. Rendering is software only (Xvfb, no GPU).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/linux-release}
starts=${2:-7}
work=$(mktemp -d)
host=$root/tests/support/https_host.sh
launcher=$build/tests/launcher_window/vl_test_launcher
publisher=$build/tools/publisher/vardeni-publish
cmake --build "$build" --target vl_test_launcher vardeni-publish >/dev/null

xvfb=""
cleanup() {
  pkill -P $$ vl_test_launcher 2>/dev/null || true
  [ -z "$xvfb" ] || kill "$xvfb" 2>/dev/null || true
  "$host" stop "$work/host" >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT

Xvfb -displayfd 9 -screen 0 1280x800x24 -nolisten tcp -noreset 9>"$work/display" 2>/dev/null &
xvfb=$!
until [ -s "$work/display" ]; do sleep 0.05; done
export DISPLAY=:$(cat "$work/display") HOME=$work/home NO_AT_BRIDGE=1 WEBKIT_DISABLE_COMPOSITING_MODE=1

mkdir -p "$work/game/data" "$work/www" "$work/player/app"
for i in $(seq 40); do head -c 200000 /dev/urandom >"$work/game/data/part_$i.pak"; done
port=$("$host" start "$work/host" "$work/www" 600)
export SSL_CERT_FILE=$work/host/ca.pem VL_TEST_PATCH_HOST=https://localhost:$port/
export VL_TEST_PUBLIC_KEY=$("$publisher" keygen --secret "$work/k" | sed -n 's/^public key (hex): *//p')
"$publisher" publish --host "$work/www" --game "$work/game" --channel stable --release 1 --key "$work/k" >/dev/null
cp "$launcher" "$work/player/vardeni-launcher"
# Present but not a program: the launcher stays open after the patch instead of starting it.
printf 'not a program\n' >"$work/player/app/vardeni2.exe"

# shellcheck source=../tests/support/launcher_window.sh
. "$root/tests/support/launcher_window.sh"
rss_kib() { awk '/^VmRSS:/ {print $2}' "/proc/$1/status" 2>/dev/null || echo 0; }
children_rss_kib() {  # <pid> <process name>
  local total=0 child
  for child in $(pgrep -P "$1" -f "$2" || true); do total=$((total + $(rss_kib "$child"))); done
  echo "$total"
}
start_launcher() { (cd "$work/player" && exec ./vardeni-launcher >>"$work/launcher.out" 2>&1) & pid=$!; }
stop_launcher() { kill -TERM "$pid"; wait "$pid" || true; }

# The first start patches the empty folder; measure once it has settled after the patch.
start_launcher
until grep -q 'Patch complete' "$work/player/launcher.log" 2>/dev/null; do sleep 0.1; done
sleep 2
launcher_kib=$(rss_kib "$pid")
web_kib=$(children_rss_kib "$pid" WebKitWebProcess)
network_kib=$(children_rss_kib "$pid" WebKitNetworkProcess)
stop_launcher

times=()
for _ in $(seq "$starts"); do
  begin=$(date +%s%N)
  start_launcher
  until page_drawn "$pid"; do
    kill -0 "$pid" 2>/dev/null || { echo "the launcher ended before its page was drawn" >&2; exit 1; }
    sleep 0.02
  done
  times+=($((($(date +%s%N) - begin) / 1000000)))
  stop_launcher
done
median=$(printf '%s\n' "${times[@]}" | sort -n | sed -n "$(((${#times[@]} + 1) / 2))p")

echo "start to interactive (page drawn with the first state), $starts starts: median ${median} ms (all: ${times[*]} ms)"
echo "resident after the first patch (8 MB, 40 files): launcher $((launcher_kib / 1024)) MiB," \
  "WebKit web process $((web_kib / 1024)) MiB, network process $((network_kib / 1024)) MiB"
