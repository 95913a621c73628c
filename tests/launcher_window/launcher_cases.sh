#!/usr/bin/env bash
# The Linux launcher as a player meets it: a real window on its own Xvfb display, the page in
# WebKitGTK, releases published with vardeni-publish to the test servers' nginx over HTTPS.
#
#   launcher_cases.sh <case> <launcher> <publisher> <game stand-in> <servers-dir> <work-dir>
#
# Each case installs copies of the launcher in <work-dir>/<case>/ and publishes below
# www/<case>/, so cases run in parallel. Screenshots go to <work-dir>/<case>/shots/.
# Every wait is for a condition (a file, a log line, a window, an exit), bounded.
set -euo pipefail

[ $# -eq 6 ] || { echo "usage: $0 <case> <launcher> <publisher> <game> <servers-dir> <work-dir>" >&2; exit 2; }
case_name=$1 launcher=$2 publisher=$3 game_standin=$4 servers=$5
work=$6/$case_name
port=$(sed -n 's/^https_port=//p' "$servers/servers.txt")
www=$servers/www/$case_name
rm -rf "$work" "$www"
mkdir -p "$work/shots" "$work/home" "$www"
operator_game=$work/game

# The launcher finds its per-user folders below this home, nowhere else.
export HOME=$work/home XDG_DATA_HOME=$work/home/data XDG_CACHE_HOME=$work/home/cache
export SSL_CERT_FILE=$servers/https/ca.pem VL_TEST_PATCH_HOST=https://localhost:$port/$case_name/
# GTK and WebKit keep some allocations for the life of the process.
export ASAN_OPTIONS=detect_leaks=0 NO_AT_BRIDGE=1
# Software rendering under Xvfb paints far sooner without the compositor.
export WEBKIT_DISABLE_COMPOSITING_MODE=1

pids=()
cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
}
trap cleanup EXIT

fail() {
  echo "FAIL [$case_name]: $*" >&2
  for log in "$work"/*/launcher.log "$work"/*/out; do
    [ -s "$log" ] && { echo "--- $log:" >&2; tail -n 20 "$log" >&2; }
  done
  exit 1
}

wait_for() {  # <what> <command...>: up to 60 s
  local what=$1
  shift
  for _ in $(seq 600); do "$@" >/dev/null 2>&1 && return 0; sleep 0.1; done
  fail "gave up waiting for $what"
}

# A display of our own, numbered by the server.
Xvfb -displayfd 9 -screen 0 1280x800x24 -nolisten tcp -noreset 9>"$work/display" 2>/dev/null &
pids+=($!)
wait_for "the X server" test -s "$work/display"
export DISPLAY=:$(cat "$work/display")

# shellcheck source=../support/launcher_window.sh
. "$(dirname "$0")/../support/launcher_window.sh"

shot() { import -window root "$work/shots/$1.png"; }

# ---- the operator -------------------------------------------------------------------------

key_hex=$("$publisher" keygen --secret "$work/release.key" | sed -n 's/^public key (hex): *//p')
export VL_TEST_PUBLIC_KEY=$key_hex

publish() {  # <release> [file size]: the game's data, not its executable (the stand-in is the player's)
  mkdir -p "$operator_game/data" "$operator_game/maps"
  head -c "${2:-300000}" /dev/urandom >"$operator_game/data/world.pak"
  printf 'release %s\n' "$1" >"$operator_game/maps/north.map"
  "$publisher" publish --host "$www" --game "$operator_game" --channel stable --release "$1" \
    --key "$work/release.key" >"$work/publish-$1.out" 2>&1 || fail "publishing release $1: $(cat "$work/publish-$1.out")"
}

# ---- the player ---------------------------------------------------------------------------

install() {  # <folder>: the launcher beside a game folder holding only the game stand-in
  mkdir -p "$work/$1/app"
  cp "$launcher" "$work/$1/vardeni-launcher"
  cp "$game_standin" "$work/$1/app/vardeni2.exe"
}

start() {  # <folder>: runs the launcher there; its pid in $started
  (cd "$work/$1" && exec ./vardeni-launcher >"$work/$1/out" 2>&1) &
  started=$!
  pids+=("$started")
}

expect_exit() {  # <pid> <code> <what it means when it differs>
  local code=0
  wait "$1" || code=$?
  [ "$code" = "$2" ] || fail "$3 (exit code $code)"
}

logged() { grep -q -- "$2" "$work/$1/launcher.log"; }
logged_more() { [ "$(grep -c -- "$2" "$work/$1/launcher.log")" -gt "$3" ]; }  # <folder> <text> <count before>

# Positions in the 1000 x 640 window of the Arabic page (the build's default language),
# where the reading side is on the right.
main_button=(156 533)
close_button=(32 26)

click() {  # <pid> <x> <y>: a real click, inside that launcher's window
  xdotool mousemove --window "$(window_of "$1")" "$2" "$3" click 1
}

same_as_release() {  # <folder>: every published file is in its game folder, byte for byte
  (cd "$operator_game" && find . -type f) | while read -r file; do
    cmp -s "$operator_game/$file" "$work/$1/app/$file" || fail "$1/app/$file differs from the release"
  done
}

case $case_name in
patch_then_play)
  publish 1
  install player
  start player
  wait_for "the window" window_of "$started"
  shot first-start
  # An empty game folder is patched without a click, then the game starts and the launcher closes.
  expect_exit "$started" 0 "the launcher did not end after starting the game"
  test -s "$work/player/app/probe.out" || fail "the game was not started"
  same_as_release player
  # Up to date now: the main button plays.
  rm "$work/player/app/probe.out"
  checks=$(grep -c "verified build 1" "$work/player/launcher.log")
  start player
  wait_for "the check of the host" logged_more player "verified build 1" "$checks"
  wait_for "the page" page_drawn "$started"
  shot ready
  for _ in $(seq 20); do
    click "$started" "${main_button[@]}" 2>/dev/null || true
    for _ in $(seq 10); do kill -0 "$started" 2>/dev/null || break; sleep 0.1; done
    kill -0 "$started" 2>/dev/null || break
  done
  expect_exit "$started" 0 "Play did not start the game and close the launcher"
  test -s "$work/player/app/probe.out" || fail "Play did not start the game"
  ;;
close_during_patch)
  # A host of its own, slowed down, so the patch is still running when the player closes.
  host_port=$(HTTPS_HOST_RATE=50k "$(dirname "$0")/../support/https_host.sh" start "$work/host" "$www" 300)
  trap 'cleanup; "$(dirname "$0")/../support/https_host.sh" stop "$work/host"' EXIT
  export SSL_CERT_FILE=$work/host/ca.pem VL_TEST_PATCH_HOST=https://localhost:$host_port/
  mkdir -p "$operator_game/data"
  for i in $(seq 24); do head -c 60000 /dev/urandom >"$operator_game/data/part_$i.pak"; done
  publish 1
  install player
  start player
  wait_for "the patch" logged player "file(s) to fetch"
  wait_for "the page" page_drawn "$started"
  shot patching
  click "$started" "${close_button[@]}"
  expect_exit "$started" 0 "closing during a patch did not end the launcher cleanly"
  logged player "applied" || fail "the patch did not finish its files before the launcher ended"
  [ -z "$(find "$work/player/app" -name '*.part' -o -name '*.tmp')" ] || fail "half-written files were left behind"
  same_as_release player
  [ ! -e "$work/player/app/probe.out" ] || fail "the game was started after the player closed the launcher"
  ;;
one_launcher_per_installation)
  # No release yet: the launchers stay open, showing the lost connection.
  install first
  install other
  start first
  first=$started
  wait_for "the first window" window_of "$first"
  start first
  expect_exit "$started" 0 "a second launcher of the same installation did not end at once"
  wait_for "the first launcher to be brought forward" logged first "brought forward by another launcher"
  start other
  wait_for "the other installation's window" window_of "$started"
  kill -0 "$first" || fail "the first launcher ended"
  shot two-installations
  ;;
http_host_refused)
  export VL_TEST_PATCH_HOST=http://localhost:$port/$case_name/
  install player
  start player
  wait_for "the misconfiguration dialog" window_of "$started"
  shot misconfigured
  xdotool windowfocus --sync "$(window_of "$started")" key Return
  expect_exit "$started" 1 "a build with an http host did not end with 1"
  [ ! -e "$work/home/data" ] || fail "a misconfigured build made its data folder"
  [ "$(grep -c . "$work/player/launcher.log")" = 1 ] || fail "a misconfigured build logged more than its start line"
  ;;
*)
  echo "unknown case $case_name" >&2
  exit 2
  ;;
esac
echo "ok [$case_name]"
