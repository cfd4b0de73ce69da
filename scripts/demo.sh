#!/usr/bin/env bash
# Builds the project and runs the main job: the zivor command analyses the
# sample text with the shipped data directory and prints each line's words
# with their part-of-speech tags, then the same text as result records.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$root/build" -j"$(nproc)" --target zivor >/dev/null
# The sample is kept in UTF-8 for reading; the command works in GBK.
iconv -f UTF-8 -t GBK "$root/examples/sample.txt" | "$root/build/zivor" -d "$root" | iconv -f GBK -t UTF-8
echo
head -n 1 "$root/examples/sample.txt" | iconv -f UTF-8 -t GBK |
  "$root/build/zivor" -d "$root" --records | iconv -f GBK -t UTF-8
