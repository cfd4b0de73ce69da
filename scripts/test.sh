#!/usr/bin/env bash
# Builds and runs every test: a normal build, the same tests under
# AddressSanitizer + UndefinedBehaviorSanitizer, the concurrency tests under
# ThreadSanitizer, a 32-bit (-m32) build, and a short run of every fuzz
# harness (scripts/fuzz.sh) that replays fuzz/regressions/.
#   scripts/test.sh            all of them
#   scripts/test.sh normal     only some variants (normal, asan, tsan, m32, fuzz)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
jobs=$(nproc)

# The concurrency test programs, the only ones the ThreadSanitizer build needs.
concurrency_targets() {
  for f in "$root"/tests/*Concurrency*_test.cpp; do basename "$f" .cpp; done
}

# run_variant NAME CTEST_ARGS BUILD_TARGETS CMAKE_ARGS...
run_variant() {
  local name=$1 ctest_args=$2 targets=$3; shift 3
  local dir="$root/build-ci-$name"
  echo "=== $name build ==="
  cmake -S "$root" -B "$dir" -DZIVOR_BUILD_BENCH=OFF "$@" >/dev/null
  local target_args=()
  for t in $targets; do target_args+=(--target "$t"); done
  cmake --build "$dir" -j"$jobs" "${target_args[@]}" 2>&1 | grep -E "warning|error" || true
  cmake --build "$dir" -j"$jobs" "${target_args[@]}" >/dev/null
  echo "=== $name tests ==="
  # shellcheck disable=SC2086
  (cd "$dir" && ctest --output-on-failure -j"$jobs" $ctest_args)
}

variants=${*:-normal asan tsan m32 fuzz}
for v in $variants; do
  started=$SECONDS
  case $v in
    normal) run_variant normal "" "" -DCMAKE_BUILD_TYPE=Release ;;
    asan)   ASAN_OPTIONS=detect_leaks=1 run_variant asan "" "" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
              -DZIVOR_SANITIZE=address,undefined ;;
    tsan)   run_variant tsan "-L concurrency" "$(concurrency_targets)" \
              -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZIVOR_SANITIZE=thread ;;
    m32)    run_variant m32 "" "" -DCMAKE_BUILD_TYPE=Release -DZIVOR_M32=ON ;;
    fuzz)   ZIVOR_FUZZ_BUILD="$root/build-ci-fuzz" "$root/scripts/fuzz.sh" --ci ;;
    *) echo "unknown variant $v" >&2; exit 2 ;;
  esac
  echo "=== $v done in $((SECONDS - started)) s ==="
done
echo "all test variants passed"
