#!/usr/bin/env bash
# Patch throughput and peak memory against curl, over HTTPS on loopback.
#
#   patch_bench.sh <patch_bench executable> [work folder] [runs]
#
# Makes (once; kept in the work folder, default /tmp/vl-patch-bench) a release
# of 200 files, 1 GiB in all, published as content-addressed blobs
# (blobs/<2 hex>/<sha256>), serves it with tests/support/https_host.sh and a
# throwaway CA (trusted by both clients inside a copy of the system bundle),
# then alternately times
#   curl --parallel --parallel-max 4 fetching every blob to disk, and
#   patch_bench: ApplyEntries into an empty game folder, under /usr/bin/time -v,
# <runs> times each (default 3), and prints the best of each, the throughput
# ratio and the peak resident set of our process. The host stops at the end.
set -euo pipefail

usage() { echo "usage: $0 <patch_bench executable> [work folder] [runs]" >&2; exit 2; }
[ $# -ge 1 ] || usage
driver=$(realpath "$1")
work=${2:-/tmp/vl-patch-bench}
runs=${3:-3}
here=$(cd "$(dirname "$0")" && pwd)
host_script="$here/../tests/support/https_host.sh"
mkdir -p "$work"
work=$(cd "$work" && pwd)
www="$work/www"
state="$work/host"
list="$work/release.list"

# 8 files of 64 MiB, 32 of 8 MiB and 160 of 64 KiB to 3 MiB topped up to 1 GiB exactly.
make_release() {
  rm -rf "$www" "$list"
  python3 - "$www" "$list" <<'EOF'
import hashlib, os, random, sys
www, listing = sys.argv[1], sys.argv[2]
MiB = 1 << 20
rng = random.Random(1024)
sizes = [64 * MiB] * 8 + [8 * MiB] * 32
small = [rng.randint(64 * 1024, 3 * MiB) for _ in range(160)]
scale = (1024 * MiB - sum(sizes)) / sum(small)
small = [int(s * scale) for s in small]
small[-1] += 1024 * MiB - sum(sizes) - sum(small)
sizes += small
with open(listing, "w") as out:
    for i, size in enumerate(sizes):
        data = os.urandom(size)
        digest = hashlib.sha256(data).hexdigest()
        folder = os.path.join(www, "blobs", digest[:2])
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, digest), "wb") as blob:
            blob.write(data)
        out.write(f"{digest} {size} data/pack{i % 12:02d}/file{i:03d}.pak\n")
EOF
}

now() { date +%s.%N; }

if [ ! -s "$list" ]; then
  echo "writing the release (200 files, 1 GiB) to $www"
  make_release
fi
bytes=$(awk '{ total += $2 } END { print total }' "$list")

port=$("$host_script" start "$state" "$www" 1800 | tail -n 1)
trap '"$host_script" stop "$state"' EXIT
url="https://127.0.0.1:$port"
echo "serving $(wc -l <"$list") files, $bytes bytes at $url (nginx, HTTP/2 offered)"
# Both sides compete with whatever else runs here: the load says how much.
echo "load average at start: $(cut -d' ' -f1-3 /proc/loadavg)"

# Both clients trust the throwaway CA inside a bundle the size of the system's,
# as a real install would load: the cost of reading the store shows up too.
trust="$work/trust.pem"
cat /etc/ssl/certs/ca-certificates.crt "$state/ca.pem" >"$trust" 2>/dev/null || cp "$state/ca.pem" "$trust"
echo "trust store: $(grep -c 'BEGIN CERTIFICATE' "$trust") certificates"

curl_config="$work/curl.config"
awk -v url="$url" -v out="$work/curl-out" \
  '{ printf "url = \"%s/blobs/%s/%s\"\noutput = \"%s/%s\"\n", url, substr($1, 1, 2), $1, out, $1 }' \
  "$list" >"$curl_config"

# Each client starts from the same state: neither one's output is left for the
# other's run to flush or discard, write-back of earlier runs has finished, and
# the served files are in the page cache (this machine pages out memory left
# idle for a few seconds, so nginx would otherwise read some from disk).
settle() {
  rm -rf "$work/curl-out" "$work/patch/game" "$work/patch/runtime"
  sync
  sleep 2
  find "$www" -type f -exec cat {} + >/dev/null
}

best_curl=""
best_ours=""
curl_times=()
ours_times=()
peak_kib=0
for run in $(seq "$runs"); do
  settle && mkdir -p "$work/curl-out"
  start=$(now)
  /usr/bin/time -f '%U %S %M' -o "$work/curl-time.txt" curl --parallel --parallel-max 4 --fail --silent \
    --show-error --no-progress-meter --cacert "$trust" -K "$curl_config"
  seconds=$(echo "$(now) - $start" | bc -l)
  read -r user system kib <"$work/curl-time.txt"
  printf '  run %d curl: %.2f s = %.1f MB/s; cpu %.2f s user + %.2f s system; peak resident set %.1f MiB\n' \
    "$run" "$seconds" "$(echo "$bytes / $seconds / 1000000" | bc -l)" "$user" "$system" "$(echo "$kib / 1024" | bc -l)"
  curl_times+=("$seconds")
  if [ -z "$best_curl" ] || [ "$(echo "$seconds < $best_curl" | bc -l)" = 1 ]; then best_curl=$seconds; fi

  settle
  SSL_CERT_FILE="$trust" /usr/bin/time -v -o "$work/time.txt" \
    "$driver" "$url" "$list" "$work/patch" >"$work/driver.txt"
  sed -n 's/^  /  run '"$run"' ours: /p' "$work/driver.txt"
  seconds=$(sed -n 's/^result seconds=\([0-9.]*\) .*/\1/p' "$work/driver.txt")
  kib=$(sed -n 's/.*Maximum resident set size (kbytes): //p' "$work/time.txt")
  printf '  run %d ours (/usr/bin/time -v): cpu %.2f s user + %.2f s system; maximum resident set %d KiB\n' "$run" \
    "$(sed -n 's/.*User time (seconds): //p' "$work/time.txt")" \
    "$(sed -n 's/.*System time (seconds): //p' "$work/time.txt")" "$kib"
  ours_times+=("$seconds")
  if [ -z "$best_ours" ] || [ "$(echo "$seconds < $best_ours" | bc -l)" = 1 ]; then best_ours=$seconds; fi
  if [ "$kib" -gt "$peak_kib" ]; then peak_kib=$kib; fi
done
rm -rf "$work/patch"

echo "load average at end: $(cut -d' ' -f1-3 /proc/loadavg)"
echo
printf 'best of %d: curl %.1f MB/s, ours %.1f MB/s, ours / curl throughput: %.2f (goal at least 0.9)\n' "$runs" \
  "$(echo "$bytes / $best_curl / 1000000" | bc -l)" "$(echo "$bytes / $best_ours / 1000000" | bc -l)" \
  "$(echo "$best_curl / $best_ours" | bc -l)"
median() { printf '%s\n' "$@" | sort -g | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
median_curl=$(median "${curl_times[@]}")
median_ours=$(median "${ours_times[@]}")
printf 'median of %d: curl %.1f MB/s, ours %.1f MB/s, ours / curl throughput: %.2f\n' "$runs" \
  "$(echo "$bytes / $median_curl / 1000000" | bc -l)" "$(echo "$bytes / $median_ours / 1000000" | bc -l)" \
  "$(echo "$median_curl / $median_ours" | bc -l)"
printf 'peak resident set of our process: %.1f MiB (goal at most 64)\n' "$(echo "$peak_kib / 1024" | bc -l)"
