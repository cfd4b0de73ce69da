#!/usr/bin/env bash
# Builds and runs every test: a normal build, the same tests under
# AddressSanitizer + UndefinedBehaviorSanitizer, the concurrency tests under
# ThreadSanitizer, and a 32-bit (-m32) build.
#   scripts/test.sh            all of them
#   scripts/test.sh normal     only one variant (normal, asan, tsan, m32)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
jobs=$(nproc)

run_variant() {
  local name=$1; shift
  local dir="$root/build-ci-$name"
  echo "=== $name build ==="
  cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZIVOR_BUILD_BENCH=OFF "$@" >/dev/null
  cmake --build "$dir" -j"$jobs" 2>&1 | grep -E "warning|error" || true
  cmake --build "$dir" -j"$jobs" >/dev/null
  echo "=== $name tests ==="
  (cd "$dir" && ctest --output-on-failure -j"$jobs" ${CTEST_ARGS:-})
}

variants=("${@:-normal asan tsan m32}")
for v in ${variants[*]}; do
  case $v in
    normal) run_variant normal ;;
    asan)   ASAN_OPTIONS=detect_leaks=1 run_variant asan -DZIVOR_SANITIZE=address,undefined ;;
    tsan)   CTEST_ARGS="-L concurrency --no-tests=ignore" run_variant tsan -DZIVOR_SANITIZE=thread ;;
    m32)    run_variant m32 -DZIVOR_M32=ON ;;
    *) echo "unknown variant $v" >&2; exit 2 ;;
  esac
done
echo "all test variants passed"
