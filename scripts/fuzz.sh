#!/usr/bin/env bash
# Builds the libFuzzer harnesses with clang in build-fuzz (RYN_FUZZ=ON) and
# runs each built *_fuzzer for SECONDS (default 60) on a scratch copy of its
# seed inputs (fuzz/corpus/<name>/, never written to). What a fuzzer finds
# goes to build-fuzz/artifacts/<name>/, its output to build-fuzz/logs/<name>.log.
# Prints one line per harness and exits 1 when any found a crash, a leak or
# a time-out (or did not run to its end).
#   fuzz.sh [SECONDS]
set -eu
seconds=${1:-60}
case "$seconds" in
  '' | *[!0-9]*) echo "usage: $0 [SECONDS]" >&2; exit 2 ;;
esac
root=$(cd "$(dirname "$0")/.." && pwd)
dir=$root/build-fuzz
"$root/scripts/setup-deps.sh" fuzz
CC=clang CXX=clang++ cmake -S "$root" -B "$dir" -G Ninja -DRYN_FUZZ=ON -DRYN_LTO=OFF -DRYN_BUILD_TESTS=OFF \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$dir" -j2 --target ryn_fuzzers

fuzzers=$(find "$dir/bin" -maxdepth 1 -type f -name '*_fuzzer' -perm -u+x | sort)
if [ -z "$fuzzers" ]; then
  echo "no fuzzers in $dir/bin" >&2
  exit 1
fi
mkdir -p "$dir/logs"
failed=0
for fuzzer in $fuzzers; do
  name=$(basename "$fuzzer" _fuzzer)
  artifacts=$dir/artifacts/$name
  scratch=$dir/scratch/$name
  rm -rf "$scratch"
  mkdir -p "$artifacts" "$scratch/corpus" "$scratch/tmp"
  [ -d "$root/fuzz/corpus/$name" ] && cp -R "$root/fuzz/corpus/$name/." "$scratch/corpus/"
  before=$(LC_ALL=C ls "$artifacts")
  log=$dir/logs/$name.log
  status=0
  (cd "$scratch" && TMPDIR=$scratch/tmp ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
    "$fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 -detect_leaks=1 \
    -artifact_prefix="$artifacts/" corpus >"$log" 2>&1) || status=$?
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
  found=$(comm -13 <(echo "$before") <(LC_ALL=C ls "$artifacts") | grep -Ev '^slow-unit-' || true)
  if [ -n "$found" ]; then
    result="FOUND $(echo "$found" | sed 's/-.*//' | sort -u | tr '\n' ' ')in $artifacts: $(echo "$found" | tr '\n' ' ')"
    failed=1
  elif [ "$status" -ne 0 ]; then
    result="FAILED (exit $status, see $log)"
    failed=1
  else
    result=ok
  fi
  printf '%-20s runs %-10s %s\n' "$name" "${runs:-?}" "$result"
  rm -rf "$scratch"
done
rmdir "$dir/scratch" 2>/dev/null || true
exit $failed
