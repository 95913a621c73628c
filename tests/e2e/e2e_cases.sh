#!/usr/bin/env bash
# End-to-end cases: vardeni-publish writes signed releases into a folder that nginx serves
# over HTTPS, and vardeni-client installs them with the launcher's own patch engine.
#
#   e2e_cases.sh <case> <vardeni-client> <vardeni-publish> <servers-dir> <work-dir>
#
# <servers-dir> is a running test_servers.sh folder (servers.txt, https/ca.pem, www/). Each
# case publishes below www/<case>/ and works in <work-dir>/<case>/, so cases run in parallel.
# Exit status 0 when the case holds; otherwise the failed expectation is on standard error.
set -euo pipefail

[ $# -eq 5 ] || { echo "usage: $0 <case> <client> <publisher> <servers-dir> <work-dir>" >&2; exit 2; }
case_name=$1 servers=$4
work=$5/$case_name
here=$(cd "$(dirname "$0")" && pwd)

# A Windows build's tools run under Wine; the Unix paths they are given reach the same
# files through Wine's Z: drive.
as_command() {  # <array name> <executable>
  local -n command=$1
  if [[ $2 == *.exe ]]; then command=("$here/../../scripts/wine-run" "$2"); else command=("$2"); fi
}
as_command client_tool "$2"
as_command publisher_tool "$3"

port=$(sed -n 's/^https_port=//p' "$servers/servers.txt")
[ -n "$port" ] || { echo "no https_port in $servers/servers.txt" >&2; exit 1; }
# The client trusts the throwaway CA only through OpenSSL's own variable.
export SSL_CERT_FILE=$servers/https/ca.pem
www=$servers/www/$case_name
host_url=https://localhost:$port/$case_name/
access_log=$servers/https/logs/access.log

rm -rf "$work" "$www"
mkdir -p "$work" "$www"
game=$work/game        # what the operator publishes
install=$work/install  # what the client keeps identical to it
runtime=$install/.runtime

fail() {
  echo "FAIL [$case_name]: $*" >&2
  for f in out err; do [ -s "$work/$f" ] && { echo "--- client std$f:" >&2; cat "$work/$f" >&2; }; done
  exit 1
}

# ---- operator side -------------------------------------------------------------------------

make_key() {
  "${publisher_tool[@]}" keygen --secret "$work/${1:-release}.key" >"$work/keygen.out"
  tr -d '\r' <"$work/keygen.out" | sed -n 's/^public key (hex): *//p'
}

# A small game with what real ones have: nested folders, two files sharing their bytes,
# non-ASCII names, an empty file, and the game executable the launcher looks for.
make_release_1() {
  mkdir -p "$game/maps/north" "$game/textures/stone" "$game/sound"
  printf 'MZ fake game executable, release 1\n' >"$game/vardeni2.exe"
  printf 'north field, release 1\n' >"$game/maps/north/field.map"
  printf 'city map\n' >"$game/maps/مدينة.map"
  head -c 300000 /dev/urandom >"$game/textures/stone/wall.tga"
  cp "$game/textures/stone/wall.tga" "$game/textures/stone/wall_copy.tga"
  printf 'ambient loop\n' >"$game/sound/café.ogg"
  : >"$game/sound/silence.ogg"
  printf 'to be dropped in release 2\n' >"$game/maps/old_arena.map"
}

# Changed, added and removed files.
make_release_2() {
  printf 'MZ fake game executable, release 2\n' >"$game/vardeni2.exe"
  printf 'north field, release 2 with more bytes\n' >"$game/maps/north/field.map"
  head -c 5000 /dev/urandom >"$game/textures/stone/moss.tga"
  rm "$game/maps/old_arena.map"
}

publish_release() {  # <number> [publisher options]
  local number=$1
  shift
  "${publisher_tool[@]}" publish --host "$www" --game "$game" --channel stable --release "$number" \
    --key "$work/release.key" "$@" >"$work/publish-$number.out" 2>&1 ||
    { cat "$work/publish-$number.out" >&2; fail "publishing release $number failed"; }
}

# ---- player side ---------------------------------------------------------------------------

# Runs the client; its exit status is left in $rc, its output in $work/out and $work/err.
client() {  # <command> [client options]
  local command=$1
  shift
  set +e
  "${client_tool[@]}" "$command" --host "$host_url" --key-hex "$key_hex" --game "$install" "$@" \
    >"$work/out" 2>"$work/err"
  rc=$?
  set -e
}

expect_client() {  # <expected exit status> <command> [client options]
  local expected=$1
  shift
  client "$@"
  [ "$rc" -eq "$expected" ] || fail "'$1' exited with $rc, expected $expected"
}

expect_in() {  # <out|err> <exact text>
  grep -qF -- "$2" "$work/$1" || fail "std$1 lacks: $2"
}

# The installed folder holds exactly the published files (the runtime folder aside).
expect_installed() {
  diff -r --exclude=.runtime "$game" "$install" >"$work/diff" 2>&1 ||
    { cat "$work/diff" >&2; fail "the installed folder differs from the published one"; }
}

# Every file of the installed folder with its digest; the client's own log may grow.
tree_digests() {
  (cd "$install" && find . -type f ! -path ./.runtime/launcher.log -exec sha256sum {} + | sort)
}

installed_build() { sed -n 's/^installed_build=//p' "$runtime/launcher.state"; }

# Marks the access log so that later requests of this case can be counted.
log_mark() { wc -l <"$access_log"; }
blob_requests_since() {  # <mark>
  tail -n "+$(($1 + 1))" "$access_log" | grep -c "^/$case_name/blobs/" || true
}

# ---- cases ---------------------------------------------------------------------------------

case_fresh_install() {
  make_release_1
  publish_release 1
  expect_client 0 patch
  expect_in out "Patch complete. The game is ready to launch."
  expect_installed
  [ "$(installed_build)" = 1 ] || fail "launcher.state does not record build 1"
  expect_client 0 sync
  expect_in out "Up to date"
}

case_up_to_date_hashes_nothing() {
  make_release_1
  publish_release 1
  expect_client 0 patch
  # Every hash the engine computes is stored in integrity.cache and written back; an
  # untouched file therefore proves that the second run read no file's content.
  local before
  before=$(stat -c '%Y.%y' "$runtime/integrity.cache")
  sleep 0.05
  expect_client 0 sync --json
  expect_in out '"status":"Up to date"'
  expect_in out '"patchNeeded":false'
  [ "$(stat -c '%Y.%y' "$runtime/integrity.cache")" = "$before" ] || fail "the up-to-date sync hashed files"

  # The same observation does see hashing: a touched file without the recorded
  # fingerprint is hashed again (and the folder adopted as build 1).
  touch "$install/maps/north/field.map"
  rm "$runtime/launcher.state"
  expect_client 0 sync
  expect_in out "Up to date"
  [ "$(stat -c '%Y.%y' "$runtime/integrity.cache")" != "$before" ] || fail "the adopting sync hashed nothing"
  [ "$(installed_build)" = 1 ] || fail "the folder was not adopted as build 1"
}

case_incremental_patch() {
  make_release_1
  publish_release 1
  expect_client 0 patch
  make_release_2
  publish_release 2
  expect_client 3 sync
  expect_in out "Patch available"
  expect_in out "installed build 1, published build 2"

  local mark
  mark=$(log_mark)
  expect_client 0 patch --json
  expect_in out '"event":"patch","ok":true'
  expect_in out '"appliedCount":3,'
  expect_in out '"orphanFiles":1,'
  # Only the new contents travel: the changed executable and map, and the added texture.
  [ "$(blob_requests_since "$mark")" -eq 3 ] || fail "expected 3 blob requests, saw $(blob_requests_since "$mark")"
  # A patch deletes nothing by itself; the dropped file is now an orphan.
  expect_client 0 orphans
  expect_in out "1 unrecognised file(s)"
  expect_in out "  maps/old_arena.map"
  rm "$install/maps/old_arena.map"
  expect_installed
  [ "$(installed_build)" = 2 ] || fail "launcher.state does not record build 2"
}

# A large archive changed in two places travels as the ranges that hold the changes;
# its chunk index comes from the publisher and the rebuilt file is the published one.
case_delta_update() {
  make_release_1
  head -c $((8 << 20)) /dev/urandom >"$game/textures/pack.vpk"
  publish_release 1
  expect_client 0 patch
  printf 'changed in release 2' | dd of="$game/textures/pack.vpk" bs=1 seek=3000000 conv=notrunc status=none
  { head -c 6000000 "$game/textures/pack.vpk"; head -c 9000 /dev/urandom
    tail -c +6000001 "$game/textures/pack.vpk"; } >"$work/pack.vpk" && mv "$work/pack.vpk" "$game/textures/pack.vpk"
  publish_release 2
  local mark
  mark=$(log_mark)
  expect_client 0 patch
  expect_installed
  local pack sent
  pack=$(sha256sum "$game/textures/pack.vpk" | cut -c1-64)
  tail -n "+$((mark + 1))" "$access_log" | grep "/blobs/${pack:0:2}/$pack |" >"$work/pack.log" || true
  [ -s "$work/pack.log" ] || fail "the archive's blob was not asked for"
  grep -qv "| 206 | .*Range: bytes=[0-9]*-[0-9]" "$work/pack.log" && { cat "$work/pack.log" >&2; fail "a request was not a range"; }
  sent=$(awk -F' [|] Sent: ' '{ total += $2 } END { print total }' "$work/pack.log")
  [ "$sent" -lt $((8 << 20 >> 4)) ] || fail "the delta fetched $sent bytes of the archive"
}

case_repair_after_corruption() {
  make_release_1
  publish_release 1
  expect_client 0 patch
  # Same size, same time stamp: only reading the bytes can tell.
  local target=$install/textures/stone/wall.tga
  cp -p "$target" "$work/stamp"
  printf 'XXXX' | dd of="$target" bs=1 seek=1000 conv=notrunc status=none
  touch -r "$work/stamp" "$target"
  cmp -s "$target" "$game/textures/stone/wall.tga" && fail "the corruption did not take"
  expect_client 0 repair
  expect_in out "Patch complete. The game is ready to launch."
  expect_installed
}

case_rollback_refused() {
  make_release_1
  publish_release 1
  make_release_2
  publish_release 2
  expect_client 0 patch
  [ "$(installed_build)" = 2 ] || fail "release 2 was not installed"
  # The operator points the channel back at release 1.
  publish_release 1 --force
  expect_client 1 sync
  expect_in err "The host offered an older update than one already applied here."
  expect_client 1 patch
  expect_in err "The host offered an older update than one already applied here."
  [ "$(installed_build)" = 2 ] || fail "the refused list changed the installed build"
  cmp -s "$install/vardeni2.exe" "$game/vardeni2.exe" || fail "the refused list changed the folder"
}

case_tampered_list_refused() {
  make_release_1
  publish_release 1
  # Point the wall texture at the executable's bytes, as an attacker on the host might.
  local wall exe
  wall=$(sha256sum "$game/textures/stone/wall.tga" | cut -d' ' -f1)
  exe=$(sha256sum "$game/vardeni2.exe" | cut -d' ' -f1)
  grep -q "$wall" "$www/patchlist.v1.json" || fail "the list does not name the wall texture's digest"
  sed -i "0,/$wall/s//$exe/" "$www/patchlist.v1.json"
  expect_client 1 sync
  expect_in err "The update list is not signed by this launcher's keys."
  expect_client 1 patch
  expect_in err "The update list is not signed by this launcher's keys."
  [ ! -e "$install/vardeni2.exe" ] || fail "a refused list installed files"

  # An intact list signed by a key this client was not given is refused the same way.
  publish_release 1 --force
  key_hex=$(make_key other)
  expect_client 1 sync
  expect_in err "The update list is not signed by this launcher's keys."
}

case_missing_blob_incomplete() {
  make_release_1
  publish_release 1
  local digest
  digest=$(sha256sum "$game/maps/north/field.map" | cut -d' ' -f1)
  rm "$www/blobs/${digest:0:2}/$digest"
  expect_client 1 patch
  expect_in err "1 file could not be updated: maps/north/field.map (the published update is incomplete). The rest of the update was applied."
  [ ! -e "$install/maps/north/field.map" ] || fail "the missing file appeared"
  cmp -s "$install/vardeni2.exe" "$game/vardeni2.exe" || fail "the rest of the update was not applied"
}

case_orphan_removal_spares_protected() {
  make_release_1
  publish_release 1
  expect_client 0 patch
  local orphans=(junk.txt maps/north/old_field.map "old stuff/readme.md")
  local protected=(
    screenshots/shot1.jpg Screenshots/Shot2.JPG syserr.txt logs/chatlog1.txt maps/syslog_2.txt user.cfg
    game.log install.id data/extra.dat config/keys.txt mark/flag.png bin/readme.txt.part cache/x.idx
    userdata/profile.sav errorlog.txt
  )
  local path
  for path in "${orphans[@]}" "${protected[@]}"; do
    mkdir -p "$(dirname "$install/$path")"
    printf 'left here: %s\n' "$path" >"$install/$path"
  done
  tree_digests >"$work/before.sha"

  expect_client 0 orphans --json
  expect_in out '"orphanFiles":3,'
  expect_in out '"orphans":["junk.txt","maps/north/old_field.map","old stuff/readme.md"]'
  expect_client 0 remove-orphans
  expect_in out "3 unrecognised file(s) removed"
  for path in "${orphans[@]}"; do [ ! -e "$install/$path" ] || fail "orphan $path was not removed"; done
  tree_digests >"$work/after.sha"
  # Everything else, protected files and the runtime folder included, is byte for byte as before.
  grep -vF -e './junk.txt' -e './maps/north/old_field.map' -e './old stuff/readme.md' "$work/before.sha" |
    diff - "$work/after.sha" >&2 || fail "removal touched a file it must leave alone"
  expect_installed_with_protected
}

# After orphan removal the folder is the release plus the protected files.
expect_installed_with_protected() {
  diff -r --exclude=.runtime "$game" "$install" | grep -v '^Only in '"$install" >"$work/diff" || true
  [ ! -s "$work/diff" ] || { cat "$work/diff" >&2; fail "release files changed"; }
}

# ---- killed many times ---------------------------------------------------------------------

# A bigger game: a few hundred small and medium files in nested folders, every 25th holding the
# bytes of one written before it. Release 1 has 330; release 2 rewrites seven in ten, removes one
# in ten and adds 40. RANDOM is seeded, so one seed makes one game.
make_large_release() {  # <release>
  local i path size bytes=""
  mkdir -p "$game"/assets/a{0..6}/b{0..2}
  printf 'MZ fake game executable, release %s\n' "$1" >"$game/vardeni2.exe"
  for i in $(seq 1 $(($1 == 1 ? 330 : 370))); do
    path=$game/assets/a$((i % 7))/b$((i % 3))/item$i.pak
    if (($1 == 2 && i <= 330)); then
      case $((RANDOM % 10)) in
        7) rm "$path" && continue ;;
        8 | 9) continue ;;
      esac
    fi
    if ((i % 25)); then
      case $((RANDOM % 20)) in
        0) size=$((RANDOM * 2 + 32768)) ;;    # 32-96 KiB
        [1-6]) size=$((RANDOM / 2 + 4096)) ;;  # 4-20 KiB
        *) size=$((RANDOM % 4096)) ;;
      esac
      printf -v bytes 'item %s of release %s\n%*s' "$i" "$1" "$size" ''
    fi
    printf '%s' "$bytes" >"$path"
  done
}

# "<sha256>  <path>" of every file of a folder, the runtime folder aside.
folder_digests() {  # <folder>
  (cd "$1" && find . -path ./.runtime -prune -o -type f -printf '%P\0' | sort -z | xargs -0 sha256sum)
}

# A killed run may leave each file of the game as release 1 or release 2 had it, and no
# other bytes; only a promotion temporary cut short may lie beside them.
expect_old_or_new() {
  folder_digests "$install" >"$work/now.sha"
  local stray missing
  stray=$(grep -vxF -f "$work/release1.sha" -f "$work/release2.sha" "$work/now.sha" |
    grep -v '\.promote\.tmp$') || true
  [ -z "$stray" ] || fail "after kill $kills ($landed), bytes of neither release: $stray"
  missing=$(cut -c67- "$work/release1.sha" | grep -vxF -f <(cut -c67- "$work/now.sha")) || true
  [ -z "$missing" ] || fail "after kill $kills ($landed), files of release 1 are gone: $missing"
}

# The state names a release (and so a rollback floor) that was really installed, and if it
# says release 2 then all of release 2 is in place; every integrity record is whole and none
# vouches for bytes its file does not hold at that size and time.
expect_runtime_files_sound() {
  local build floor
  build=$(installed_build)
  floor=$(sed -n 's/^seen_version_stable=//p' "$runtime/launcher.state")
  [[ $build =~ ^[12]$ && $floor =~ ^[12]$ ]] ||
    fail "after kill $kills ($landed), launcher.state lost its release: $(tr '\n' ' ' <"$runtime/launcher.state")"
  if [ "$build" = 2 ] && grep -qvxF -f "$work/now.sha" "$work/release2.sha"; then
    fail "after kill $kills ($landed), release 2 is recorded but not in place"
  fi
  # The record each file would get now: its key (the full path, lower-cased), size and time
  # (100 ns units since 1601), and its digest.
  local -A digest actual
  local hash path size time fraction record key
  while read -r hash path; do digest[$path]=$hash; done <"$work/now.sha"
  while IFS='|' read -r path size time; do
    fraction=${time#*.}
    time=$((${time%.*} * 10000000 + 10#${fraction:0:7} + 116444736000000000))
    actual["${install,,}/${path,,}|$size|$time"]=${digest[$path]}
  done < <(cd "$install" && find . -path ./.runtime -prune -o -type f -printf '%P|%s|%T@\n')
  [ -f "$runtime/integrity.cache" ] || fail "after kill $kills ($landed), integrity.cache is gone"
  while IFS= read -r record; do
    [[ $record =~ ^(.+\|[0-9]+\|-?[0-9]+)\|([0-9a-f]{64})$ ]] ||
      fail "after kill $kills ($landed), integrity.cache holds: $record"
    key=${BASH_REMATCH[1]}
    [ -z "${actual[$key]:-}" ] || [ "${actual[$key]}" = "${BASH_REMATCH[2]}" ] ||
      fail "after kill $kills ($landed), integrity.cache vouches for bytes that ${key%%|*} does not hold"
  done <"$runtime/integrity.cache"
}

# Starts the patch to release 2 and kills it at a random moment within the first half of the
# time a whole run takes, or, one run in six, as it first writes or renames the state
# file or the integrity cache (or a temporary beside it). Leaves the exit status in $rc and
# where the kill landed in $landed: the last progress the run had reported, or that step.
run_patch_and_kill() {  # <length of a whole run in ms>
  local -a runner=("${client_tool[@]}")
  local delay_ms=$(((RANDOM * 32768 + RANDOM) % ($1 / 2))) aimed="" step="" pid
  if ((RANDOM % 6 == 0)); then
    local -a steps=(write,writev rename,renameat,renameat2) files=(launcher.state integrity.cache)
    step=${steps[RANDOM % 2]}
    aimed=$runtime/${files[RANDOM % 2]}
    # LeakSanitizer cannot work under a tracer.
    runner=(strace -f -qq -o /dev/null -P "$aimed" -P "$aimed.tmp" -e "trace=$step"
      -e "inject=$step:signal=KILL:when=1" env "ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
      "${runner[@]}")
  fi
  "${runner[@]}" patch --json --host "$host_url" --key-hex "$key_hex" --game "$install" \
    >"$work/out" 2>"$work/err" &
  pid=$!
  if [ -z "$aimed" ]; then
    sleep "$((delay_ms / 1000)).$(printf %03d $((delay_ms % 1000)))"
    kill -KILL "$pid" 2>/dev/null || true
  fi
  rc=0 && wait "$pid" 2>/dev/null || rc=$?
  if [ -n "$aimed" ]; then
    landed="${step%%,*} of ${aimed##*/}"
  else
    landed=$(grep -o '"status":"[^"]*"' "$work/out" | tail -n 1 | cut -d'"' -f4)
    landed=${landed:-fetching the list}
  fi
}

# The patch to release 2 started again and again on release 1's folder and killed with
# SIGKILL, each run going on from what the killed ones left. A run that finishes must leave
# release 2, and the next round starts from release 1 again.
case_killed_many_times() {
  local seed=${VL_KILL_SEED:-14} wanted=50
  echo "seed $seed (VL_KILL_SEED=<n> tries another)"
  RANDOM=$seed
  make_large_release 1
  publish_release 1
  expect_client 0 patch
  folder_digests "$game" >"$work/release1.sha"
  cp -a "$install" "$work/release1"
  make_large_release 2
  publish_release 2
  folder_digests "$game" >"$work/release2.sha"

  # A host slow enough that a run lasts a few seconds.
  slow_host=$work/slow_host
  local port
  port=$(HTTPS_HOST_RATE=512k "$here/../support/https_host.sh" start "$slow_host" "$www" 600)
  host_url=https://localhost:$port/
  trap '"$here/../support/https_host.sh" stop "$slow_host"' EXIT
  export SSL_CERT_FILE=$slow_host/ca.pem
  local started=$EPOCHREALTIME whole_ms
  expect_client 0 patch
  whole_ms=$(((${EPOCHREALTIME/./} - ${started/./}) / 1000))
  echo "one whole run: $whole_ms ms"

  kills=0
  local rounds=0 runs=0
  local -A hits=()
  while ((kills < wanted)); do
    rounds=$((rounds + 1))
    # Set aside rather than deleted: unlinking hundreds of files can take seconds on a busy disk.
    mv "$install" "$work/round$rounds" && cp -a "$work/release1" "$install"
    while runs=$((runs + 1)) && run_patch_and_kill "$whole_ms" && ((rc == 137)); do
      kills=$((kills + 1))
      hits[$landed]=$((${hits[$landed]:-0} + 1))
      expect_old_or_new
      expect_runtime_files_sound
    done
    ((rc == 0)) || fail "a run ended with $rc"
    expect_in out '"event":"patch","ok":true'
    expect_old_or_new
    ! grep -vxF -f "$work/now.sha" "$work/release2.sha" >&2 || fail "round $rounds did not end with release 2"
    [ "$(installed_build)" = 2 ] || fail "round $rounds did not record release 2"
  done
  expect_client 0 sync
  expect_in out "Up to date"
  echo "$kills kills in $rounds rounds of $runs runs, $SECONDS s in all; where they landed:"
  for landed in "${!hits[@]}"; do echo "  $landed: ${hits[$landed]}"; done
}

key_hex=$(make_key)
rc=0
declare -F "case_$case_name" >/dev/null || { echo "unknown case $case_name" >&2; exit 2; }
"case_$case_name"
echo "PASS [$case_name]"
