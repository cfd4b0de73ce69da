#!/usr/bin/env bash
# The analysis rate of the Java Analyzer beside that of the C interface it
# wraps, on the same UTF-8 text, 1 and 2 threads, the two programs run
# alternately so that the machine's drift hits both alike. Needs a build
# with -DZIVOR_BUILD_BENCH=ON (Release for meaningful figures).
#   java/bench/compare.sh BUILD_DIR DATA_PARENT TEXT [ROUNDS [REPEATS]]
set -euo pipefail
if (($# < 3)); then
  echo "usage: $0 BUILD_DIR DATA_PARENT TEXT [ROUNDS [REPEATS]]" >&2
  exit 2
fi
build=$1 dir=$2 text=$3 rounds=${4:-10} repeats=${5:-3}
classpath=$build/java/zivor.jar:$build/java/zivor-bench.jar
echo "load: $(cut -d' ' -f1-3 /proc/loadavg)"
for ((r = 1; r <= repeats; r++)); do
  for threads in 1 2; do
    "$build/java/capi_throughput" "$dir" "$text" "$threads" "$rounds"
    java -Djava.library.path="$build" -cp "$classpath" ostra.palum.bench.Throughput \
      "$dir" "$text" "$threads" "$rounds"
  done
done
echo "load: $(cut -d' ' -f1-3 /proc/loadavg)"
