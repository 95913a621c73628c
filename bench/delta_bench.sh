#!/usr/bin/env bash
# Delta updates against whole-file downloads, over HTTPS on loopback.
#
#   delta_bench.sh <linux-release build folder> [work folder] [runs]
#
# Makes (once; kept in the work folder, default /tmp/vl-delta-bench)
#   release 1: 40 archive-like files of 4 to 64 MiB, about 1 GiB (random
#     stretches, one in eight a repeat of an earlier one), and
#   release 2: the same, but in every tenth file six regions of 4 to 100 KiB
#     are inserted, overwritten or removed, shifting the bytes after them,
# and publishes both with vardeni-publish into one host folder (content-
# addressed blobs, a chunk index for every file from 4 MiB). It serves that
# folder with tests/support/https_host.sh, over plain loopback and then
# rate-limited (HTTPS_HOST_RATE=10m), and on each host runs, <runs> times
# each (default 3), starting from release 1 in place (copied in afresh, with
# an empty runtime folder, so no integrity cache):
#   whole-file  patch_bench applies release 2 from a list without chunk indexes,
#   delta       the same with each entry's chunk index,
#   curl        curl --parallel --parallel-max 4 fetching the changed files' blobs.
# Each run gives its wall time (of ApplyEntries alone in the patch runs) and the
# bytes nginx sent (the Sent field of its access log); after each patch run the game folder must be release 2 exactly
# (every file's SHA-256, no other file). The least a delta can fetch (from the
# published indexes) is printed first, the goals last. The host stops at the end.
set -euo pipefail

usage() { echo "usage: $0 <linux-release build folder> [work folder] [runs]" >&2; exit 2; }
[ $# -ge 1 ] || usage
build=$(realpath "$1")
driver="$build/bench/patch_bench"
publisher="$build/tools/publisher/vardeni-publish"
work=${2:-/tmp/vl-delta-bench}
runs=${3:-3}
rate=10m
here=$(cd "$(dirname "$0")" && pwd)
host_script="$here/../tests/support/https_host.sh"
mkdir -p "$work"
work=$(cd "$work" && pwd)
www="$work/www"
state="$work/host"
access_log="$state/logs/access.log"

make_releases() {
  rm -rf "$work/release1" "$work/release2" "$www"
  python3 - "$work" <<'EOF'
import os, random, sys
work = sys.argv[1]
MiB = 1 << 20
rng = random.Random(2048)

def archive(size):
    stretches, data = [], bytearray()
    while len(data) < size:
        if stretches and rng.random() < 0.125:
            data += rng.choice(stretches)
        else:
            stretches.append(os.urandom(rng.randint(4 * 1024, 256 * 1024)))
            data += stretches[-1]
    return bytes(data[:size])

# From the end backwards, so each drawn offset still points where it was drawn.
def edit(data):
    for i, offset in enumerate(sorted((rng.randrange(len(data)) for _ in range(6)), reverse=True)):
        length = rng.randint(4 * 1024, 100 * 1024)
        insert, remove = i % 3 == 0, i % 3 == 2
        data = data[:offset] + (b"" if remove else os.urandom(length)) + data[offset + (0 if insert else length):]
    return data

sizes = [64 * MiB] + [rng.randint(4 * MiB, 48 * MiB) for _ in range(39)]
for i, size in enumerate(sizes):
    old, new = (os.path.join(work, release, f"pack/archive{i:02d}.pak") for release in ("release1", "release2"))
    for path in (old, new):
        os.makedirs(os.path.dirname(path), exist_ok=True)
    data = archive(size)
    with open(old, "wb") as out:
        out.write(data)
    if i % 10 == 0:
        with open(new, "wb") as out:
            out.write(edit(data))
    else:
        os.link(old, new)
EOF
  [ -f "$work/bench.key" ] || "$publisher" keygen --secret "$work/bench.key" >/dev/null
  for release in 1 2; do
    "$publisher" publish --host "$www" --game "$work/release$release" --channel stable --release "$release" \
      --key "$work/bench.key" >"$work/publish$release.log"
  done
}

if [ ! -f "$work/published" ]; then
  echo "writing releases 1 and 2 (40 files, about 1 GiB) and publishing them to $www"
  make_releases
  touch "$work/published"
fi

# From the published lists: release 2 for the driver and its chunk indexes,
# the changed files' blobs, every address of an unchanged file (blob and chunk
# index), which no run may ask for, and the least a delta can fetch: each
# changed file's index and the chunks its old copy lacks.
exact_delta=$(python3 - "$www" "$work" <<'EOF'
import json, sys
www, work = sys.argv[1], sys.argv[2]
def files(release):
    with open(f"{www}/patchlist.v{release}.json") as listing:
        return {entry["path"]: entry for entry in json.load(listing)["files"]}
def address(blob):
    return f"/blobs/{blob['sha256'][:2]}/{blob['sha256']}"
def chunks(entry):  # (length, sha256) of each chunk; the index's first three lines are its head
    with open(www + address(entry["chunks"])) as index:
        return [(int(line.split()[1]), line.split()[2]) for line in index.read().splitlines()[3:]]
old, new = files(1), files(2)
exact = 0
with open(f"{work}/release2.list", "w") as listing, open(f"{work}/release2.chunks", "w") as indexes, \
        open(f"{work}/changed.blobs", "w") as changed, open(f"{work}/unchanged.addresses", "w") as unchanged:
    for path, entry in new.items():
        listing.write(f"{entry['sha256']} {entry['size']} {path}\n")
        if "chunks" in entry:
            indexes.write(f"{entry['sha256']} {entry['chunks']['sha256']} {entry['chunks']['size']}\n")
        if old[path]["sha256"] != entry["sha256"]:
            changed.write(f"{address(entry)} {entry['size']}\n")
            kept = {sha256 for _, sha256 in chunks(old[path])}
            lacking = {sha256: length for length, sha256 in chunks(entry) if sha256 not in kept}
            exact += entry["chunks"]["size"] + sum(lacking.values())
        else:
            unchanged.write("".join(address(blob) + "\n" for blob in (entry, entry.get("chunks")) if blob))
print(exact)
EOF
)
total_bytes=$(awk '{ total += $2 } END { print total }' "$work/release2.list")
changed_bytes=$(awk '{ total += $2 } END { print total }' "$work/changed.blobs")
echo "release 2: $(wc -l <"$work/changed.blobs") of $(wc -l <"$work/release2.list") files changed," \
  "$changed_bytes of $total_bytes bytes; $(wc -l <"$work/release2.chunks") chunk indexes"
printf 'an exact delta fetches %d bytes (%.1f%% of the changed files): their indexes and the chunks release 1 lacks\n' \
  "$exact_delta" "$(echo "100 * $exact_delta / $changed_bytes" | bc -l)"

check_game() {
  python3 - "$work/patch/game" "$work/release2.list" <<'EOF'
import hashlib, os, sys
game, listing = sys.argv[1], sys.argv[2]
wanted = {}
for line in open(listing):
    digest, _, path = line.rstrip("\n").split(" ", 2)
    wanted[path] = digest
found = {os.path.relpath(os.path.join(folder, name), game) for folder, _, names in os.walk(game) for name in names}
if found != set(wanted):
    sys.exit(f"game folder: not in release 2 {sorted(found - set(wanted))}, missing {sorted(set(wanted) - found)}")
for path, digest in wanted.items():
    with open(os.path.join(game, path), "rb") as file:
        if hashlib.file_digest(file, "sha256").hexdigest() != digest:
            sys.exit(f"game folder: {path} is not release 2's")
EOF
}

now() { date +%s.%N; }
# The requests logged since line <mark> of the access log.
requests_since() { tail -n "+$(($1 + 1))" "$access_log"; }

# Every run starts alike: release 1 in place for the patch runs, write-back of
# earlier runs finished, the served blobs in the page cache.
settle() {
  rm -rf "$work/patch" "$work/curl-out"
  mkdir -p "$work/patch" "$work/curl-out"
  [ "$1" = curl ] || cp -r "$work/release1" "$work/patch/game"
  sync
  sleep 2
  find "$www" -type f -exec cat {} + >/dev/null
}

declare -A best_seconds most_sent
unchanged_requests=0
run_mode() {  # <host name> <mode> <run>
  local key="$1/$2" mark start seconds sent unchanged options=(--keep-game)
  [ "$2" = delta ] && options+=(--chunk-indexes "$work/release2.chunks")
  settle "$2"
  mark=$(wc -l <"$access_log")
  start=$(now)
  case $2 in
    curl)
      curl --parallel --parallel-max 4 --fail --silent --show-error --no-progress-meter --cacert "$trust" \
        -K "$work/curl.config"
      seconds=$(echo "$(now) - $start" | bc -l) ;;
    *)
      SSL_CERT_FILE="$trust" "$driver" "$url" "$work/release2.list" "$work/patch" "${options[@]}" \
        >"$work/driver.txt"
      seconds=$(sed -n 's/^result seconds=\([0-9.]*\) .*/\1/p' "$work/driver.txt")
      check_game ;;
  esac
  # nginx may log a request just after the client has its bytes.
  sleep 1
  sent=$(requests_since "$mark" | awk -F' [|] Sent: ' '{ sent += $NF } END { print sent + 0 }')
  unchanged=$(requests_since "$mark" | grep -c -F -f "$work/unchanged.addresses" || true)
  [ "$2" = curl ] || unchanged_requests=$((unchanged_requests + unchanged))
  printf '  run %d %-10s %7.2f s, nginx sent %11d bytes (%5.1f%% of the changed files), %d requests' \
    "$3" "$2" "$seconds" "$sent" "$(echo "100 * $sent / $changed_bytes" | bc -l)" "$unchanged"
  printf ' for unchanged files%s\n' "$([ "$2" = curl ] || echo '; game folder is release 2')"
  if [ -z "${best_seconds[$key]:-}" ] || [ "$(echo "$seconds < ${best_seconds[$key]}" | bc -l)" = 1 ]; then
    best_seconds[$key]=$seconds
  fi
  if [ "$sent" -gt "${most_sent[$key]:-0}" ]; then most_sent[$key]=$sent; fi
}

trap '"$host_script" stop "$state"' EXIT
for host in loopback limited; do
  [ "$host" = loopback ] && limit="" || limit=$rate
  port=$(HTTPS_HOST_RATE=$limit "$host_script" start "$state" "$www" 1800 | tail -n 1)
  url="https://127.0.0.1:$port"
  trust="$work/trust.pem"
  cat /etc/ssl/certs/ca-certificates.crt "$state/ca.pem" >"$trust" 2>/dev/null || cp "$state/ca.pem" "$trust"
  awk -v url="$url" -v out="$work/curl-out" '{ printf "url = \"%s%s\"\noutput = \"%s/%d\"\n", url, $1, out, NR }' \
    "$work/changed.blobs" >"$work/curl.config"
  echo
  if [ -z "$limit" ]; then
    echo "host: $url, plain loopback; load average $(cut -d' ' -f1-3 /proc/loadavg)"
  else
    echo "host: $url, nginx limit_rate $limit per request (4 transfers at once get 4 times that);" \
      "load average $(cut -d' ' -f1-3 /proc/loadavg)"
  fi
  for run in $(seq "$runs"); do
    for mode in whole-file delta curl; do run_mode "$host" "$mode" "$run"; done
  done
  "$host_script" stop "$state"
done
rm -rf "$work/patch" "$work/curl-out"

echo
echo "best of $runs (wall time; most bytes nginx sent in any run):"
for host in loopback limited; do
  for mode in whole-file delta curl; do
    printf '  %-8s %-10s %7.2f s  %11d bytes\n' "$host" "$mode" "${best_seconds[$host/$mode]}" \
      "${most_sent[$host/$mode]}"
  done
done
verdict() { [ "$(echo "$1" | bc -l)" = 1 ] && echo met || echo "NOT met"; }
delta_sent=$(printf '%s\n' "${most_sent[loopback/delta]}" "${most_sent[limited/delta]}" | sort -n | tail -n 1)
delta_seconds=${best_seconds[limited/delta]}
whole_seconds=${best_seconds[limited/whole-file]}
echo "goals:"
printf '  delta fetches at most 10%% of the changed files'"'"' %d bytes: at most %d (%.1f%%): %s\n' "$changed_bytes" \
  "$delta_sent" "$(echo "100 * $delta_sent / $changed_bytes" | bc -l)" "$(verdict "$delta_sent * 10 <= $changed_bytes")"
printf '  delta at most half the whole-file time, rate-limited host: %.2f s against %.2f s: %s\n' \
  "$delta_seconds" "$whole_seconds" "$(verdict "$delta_seconds * 2 <= $whole_seconds")"
printf '  no request for an unchanged file'"'"'s blob or chunk index: %d in all patch runs: %s\n' \
  "$unchanged_requests" "$(verdict "$unchanged_requests == 0")"
