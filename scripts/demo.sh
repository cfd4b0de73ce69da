#!/usr/bin/env bash
# Builds the project and runs the main job: the zivor command analyses the
# sample text with the shipped data directory and prints each line's words
# with their part-of-speech tags, then the same text as result records.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$root/build" -j"$(nproc)" --target zivor >/dev/null
# The sample is UTF-8, the command's default encoding.
"$root/build/zivor" -d "$root" "$root/examples/sample.txt"
echo
head -n 1 "$root/examples/sample.txt" | "$root/build/zivor" -d "$root" --records
