#!/usr/bin/env bash
# Builds the libFuzzer harnesses of fuzz/ (clang, AddressSanitizer with
# LeakSanitizer, UndefinedBehaviorSanitizer) in build-fuzz/ (or
# $ZIVOR_FUZZ_BUILD) and runs them.
#   scripts/fuzz.sh [SECONDS] [HARNESS...]   fuzz each harness for SECONDS
#                                            (default 60), one after another
#   scripts/fuzz.sh --runs N [HARNESS...]    N runs of each harness from the
#                                            seeds alone (fixed random seed)
#   scripts/fuzz.sh --ci [HARNESS...]        the same with the runs of each
#                                            harness that take about ten
#                                            seconds, as continuous
#                                            integration does
# Harnesses: analysis keywords userdict datafiles codetran (default: all).
# Each first replays its inputs in fuzz/regressions/<harness>/, then fuzzes
# from fuzz/corpus/<harness>/ and a working corpus outside the tree:
# $ZIVOR_FUZZ_WORK/<harness>/corpus (default ZIVOR_FUZZ_WORK:
# ${TMPDIR:-/tmp}/zivor-fuzz), which keeps growing from run to run; the
# library's log goes to <harness>/run and what a harness finds to
# <harness>/findings/<date-time>. ZIVOR_FUZZ_OPTIONS adds libFuzzer options
# (for example -len_control=0 to try long inputs at once). With --runs a fresh working directory is
# used, and removed unless something was found. The exit status is 1 when any
# harness found anything.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
all_harnesses=(analysis keywords userdict datafiles codetran)

# Runs of a harness for --ci: about ten seconds each on one core of a small
# machine (the data-file harness initialises the library on every input).
ci_runs() {
  case $1 in
    analysis) echo 800 ;;
    keywords | userdict) echo 400 ;;
    datafiles) echo 300 ;;
    codetran) echo 100000 ;;
  esac
}

seconds=60
runs=""
if [[ ${1:-} == --runs ]]; then
  runs=${2:?"--runs needs a number"}
  shift 2
elif [[ ${1:-} == --ci ]]; then
  runs=ci
  shift
elif [[ ${1:-} =~ ^[0-9]+$ ]]; then
  seconds=$1
  shift
fi
harnesses=("$@")
((${#harnesses[@]})) || harnesses=("${all_harnesses[@]}")
for h in "${harnesses[@]}"; do
  [[ -f $root/fuzz/${h}_fuzzer.cpp ]] || { echo "unknown harness $h" >&2; exit 2; }
done

"$root/scripts/deps.sh"
build=${ZIVOR_FUZZ_BUILD:-$root/build-fuzz}
targets=()
for h in "${harnesses[@]}"; do targets+=(--target "${h}_fuzzer"); done
echo "=== fuzz build ==="
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 -DZIVOR_FUZZ=ON \
  -DZIVOR_BUILD_TESTS=OFF -DZIVOR_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" "${targets[@]}" 2>&1 | grep -E "warning|error" || true
cmake --build "$build" -j"$(nproc)" "${targets[@]}" >/dev/null

if [[ -n $runs ]]; then
  work=$(mktemp -d "${TMPDIR:-/tmp}/zivor-fuzz-ci-XXXXXX")
  what=$([[ $runs == ci ]] && echo "a few seconds" || echo "$runs runs")
else
  work=${ZIVOR_FUZZ_WORK:-${TMPDIR:-/tmp}/zivor-fuzz}
  what="$seconds s"
fi
stamp=$(date +%Y%m%d-%H%M%S)

# The options of one harness beyond the common ones. The data-file harness
# initialises the library on every input: short inputs, a few edits each.
harness_options() {
  case $1 in
    datafiles) echo "-max_len=1024" ;;
    *) echo "-max_len=4096" ;;
  esac
}

# Prints what the harness log shows: executions, coverage, what was found,
# and the seconds the run took.
summarise() {
  local h=$1 log=$2 findings=$3 took=$4
  local execs cov
  execs=$(grep -a -o 'stat::number_of_executed_units: *[0-9]*' "$log" | grep -o '[0-9]*$' | tail -1)
  cov=$(grep -a -o 'cov: [0-9]* ft: [0-9]*' "$log" | tail -1)
  local found
  found=$(find "$findings" -type f | wc -l)
  printf '%-10s %10s executions  %-22s %s finding(s)  %4d s\n' "$h" "${execs:-?}" \
    "${cov:-cov: ?}" "$found" "$took"
  if ((found)); then
    local report='^==zivor-fuzz==|^SUMMARY:|ERROR: (Address|Leak)Sanitizer|ERROR: libFuzzer'
    grep -a -E "$report|runtime error" "$log" | head -5 | sed 's/^/    /'
    find "$findings" -type f | sed 's/^/    input: /'
  fi
}

# fuzz_one HARNESS: replays the regressions, then fuzzes; 1 when anything
# was found.
fuzz_one() {
  local h=$1
  local binary="$build/fuzz/${h}_fuzzer"
  local dir="$work/$h"
  local findings="$dir/findings/$stamp"
  mkdir -p "$dir/corpus" "$findings" "$dir/run"
  local common=(-timeout=25 -print_final_stats=1 "-artifact_prefix=$findings/")
  # shellcheck disable=SC2206
  common+=(${ZIVOR_FUZZ_OPTIONS:-})
  local status=0
  local regressions=("$root/fuzz/regressions/$h"/*)
  if [[ -e ${regressions[0]} ]]; then
    (cd "$dir/run" && "$binary" "${common[@]}" "${regressions[@]}") >"$dir/regressions.log" 2>&1 ||
      status=1
    echo "$h: ${#regressions[@]} regression input(s) $( ((status)) && echo FAIL || echo ok)"
    ((status)) && grep -a -E '^==zivor-fuzz==|^SUMMARY:|^Running:' "$dir/regressions.log" |
      tail -4 | sed 's/^/    /'
  fi
  local budget=(-max_total_time="$seconds")
  if [[ $runs == ci ]]; then
    budget=(-runs="$(ci_runs "$h")" -seed=1)
  elif [[ -n $runs ]]; then
    budget=(-runs="$runs" -seed=1)
  fi
  local start=$SECONDS
  # shellcheck disable=SC2046
  (cd "$dir/run" && "$binary" "${common[@]}" $(harness_options "$h") "${budget[@]}" \
    "$dir/corpus" "$root/fuzz/corpus/$h") >"$dir/fuzz.log" 2>&1 || status=1
  summarise "$h" "$dir/fuzz.log" "$findings" $((SECONDS - start))
  rmdir "$findings" 2>/dev/null || true  # nothing found
  return $status
}

echo "=== fuzzing ($what per harness, work in $work) ==="
failed=()
for h in "${harnesses[@]}"; do
  fuzz_one "$h" || failed+=("$h")
done
if ((${#failed[@]})); then
  echo "findings in: ${failed[*]} (logs and inputs under $work)" >&2
  exit 1
fi
[[ -n $runs ]] && rm -rf "$work"
echo "no findings"
