#!/usr/bin/env bash
# Builds the benchmarks in a Release build of their own (build-bench) and runs
# them: the virtual board's (ryn_board_bench), then its receivers against
# spandsp's (ryn_receiver_bench); with RYN_BENCH_LIBRARY=1 the library's
# (ryn_bench) too. Arguments go to every benchmark program, e.g.
#   scripts/bench.sh --benchmark_filter=Dtmf --benchmark_min_time=0.2
# RYN_BENCH_DIR chooses another build folder. bench/README.md says what each
# benchmark measures.
set -eu
cd "$(dirname "$0")/.."
scripts/setup-deps.sh
dir=${RYN_BENCH_DIR:-build-bench}
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DRYN_BUILD_BENCH=ON -DRYN_BUILD_TESTS=OFF >/dev/null
programs=(ryn_board_bench)
# Left out of a build without spandsp (CMake says so).
if cmake --build "$dir" --target help | grep -q '^ryn_receiver_bench:'; then
  programs+=(ryn_receiver_bench)
else
  echo "spandsp not found: the receiver benchmarks are left out" >&2
fi
[ "${RYN_BENCH_LIBRARY:-0}" = 0 ] || programs=(ryn_bench "${programs[@]}")
cmake --build "$dir" -j2 --target "${programs[@]}"
# The programs run from bin/, where the library finds the board's module.
for program in "${programs[@]}"; do
  echo "== $program"
  "$dir/bin/$program" "$@"
done
