#!/usr/bin/env bash
# Builds the project and runs the main job on the shipped sample: a
# dictionary is built from a sample word list and words are looked up in it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/deps.sh"
cmake -S "$root" -B "$root/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$root/build" -j"$(nproc)" --target zivor-data >/dev/null
tool="$root/build/zivor-data"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
to_gbk() { iconv -f UTF-8 -t GBK; }
to_utf8() { iconv -f GBK -t UTF-8; }

"$tool" pdat "$root/examples/sample-words.txt" "$work/sample.pdat" | tail -n 1 | to_utf8
mapfile -t words < <(printf '%s\n' 中国 中国人民 人民 银行 ZIVOR 北京大学 不是词 | to_gbk)
"$tool" lookup "$work/sample.pdat" "${words[@]}" | to_utf8
