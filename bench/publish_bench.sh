#!/usr/bin/env bash
# Publishing time of vardeni-publish on large game folders.
#
#   publish_bench.sh <vardeni-publish executable> [work folder]
#
# Makes (once; kept in the work folder, default /tmp/vl-publish-bench):
#   wide/  20,000 files of 107,374 bytes in 20 folders (2 GiB in all)
#   big/   2,048 files of 1 MiB in 16 folders (2 GiB in all)
# then times, with the files in the page cache:
#   1. publish of wide/: an update list for 20,000 files cannot stay under the
#      262144 bytes a launcher accepts, so this measures how soon it is refused;
#   2. publish of big/ as release 1 into an empty host folder, next to
#      openssl dgst -sha256 and cp -r over the same folder (the work publish
#      cannot avoid: hash every byte, copy every new blob);
#   3. one file of big/ changed, publish as release 2 (one blob written);
#   4. verify of the host folder.
# Each step prints its wall time and the publisher's own summary lines.
set -euo pipefail

usage() { echo "usage: $0 <vardeni-publish executable> [work folder]" >&2; exit 2; }
[ $# -ge 1 ] || usage
tool=$(realpath "$1")
work=${2:-/tmp/vl-publish-bench}
mkdir -p "$work"
work=$(cd "$work" && pwd)

# folder, count, size, files per subfolder
make_folder() {
  python3 - "$@" <<'EOF'
import os, sys
folder, count, size, per = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4])
for i in range(count):
    sub = os.path.join(folder, f"d{i // per:02d}")
    os.makedirs(sub, exist_ok=True)
    with open(os.path.join(sub, f"f{i:05d}.bin"), "wb") as out:
        out.write(os.urandom(size))
EOF
}

if [ ! -f "$work/wide.done" ]; then
  echo "writing wide/ (20,000 files, 2 GiB)"
  rm -rf "$work/wide"
  make_folder "$work/wide" 20000 107374 1000
  touch "$work/wide.done"
fi
if [ ! -f "$work/big.done" ]; then
  echo "writing big/ (2,048 files, 2 GiB)"
  rm -rf "$work/big"
  make_folder "$work/big" 2048 1048576 128
  touch "$work/big.done"
fi
rm -rf "$work/host" "$work/host-wide" "$work/copy"
[ -f "$work/bench.key" ] || "$tool" keygen --secret "$work/bench.key" >/dev/null
hex=$("$tool" public-key --key "$work/bench.key" | sed -n 's/^public key (hex): *//p')

now() { date +%s.%N; }
# label, command...: runs the command, prints its wall time; its output goes to $work/last.log.
timed() {
  local label=$1 start end status=0
  shift
  start=$(now)
  "$@" >"$work/last.log" 2>&1 || status=$?
  end=$(now)
  printf '%-46s %8.2f s  (exit %d)\n' "$label" "$(echo "$end - $start" | bc)" "$status"
}
summary() { grep -E '^(files|blobs|update list|time|error)' "$work/last.log" | sed 's/^/    /' || true; }

# Warm the page cache so every step reads from memory alike.
cat "$work"/wide/*/* "$work"/big/*/* >/dev/null

echo
timed "publish 20,000 files / 2 GiB (refused)" \
  "$tool" publish --host "$work/host-wide" --game "$work/wide" --channel stable --release 1 --key "$work/bench.key"
summary
timed "openssl dgst -sha256, 2,048 files / 2 GiB" \
  bash -c "find '$work/big' -type f -print0 | xargs -0 -n 256 openssl dgst -sha256"
timed "cp -r, 2,048 files / 2 GiB" cp -r "$work/big" "$work/copy"
rm -rf "$work/copy"
timed "publish 2,048 files / 2 GiB, release 1" \
  "$tool" publish --host "$work/host" --game "$work/big" --channel stable --release 1 --key "$work/bench.key"
summary
python3 -c "import os; open('$work/big/d07/f00900.bin', 'wb').write(os.urandom(1048576))"
timed "re-publish, one file changed, release 2" \
  "$tool" publish --host "$work/host" --game "$work/big" --channel stable --release 2 --key "$work/bench.key"
summary
timed "verify the host folder (release 2)" "$tool" verify --host "$work/host" --key-hex "$hex"
grep -E '^(blobs|host verified|[0-9]+ problem)' "$work/last.log" | sed 's/^/    /' || true
rm -rf "$work/host" "$work/host-wide"
