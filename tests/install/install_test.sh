#!/usr/bin/env bash
# Installs the build into a scratch prefix and uses it as a person would:
# builds a C program through pkg-config and through find_package(ZIVOR),
# checks what the shared library exports, and runs the installed zivor from
# another directory on a read-only data directory.
#   install_test.sh BUILD_DIR SOURCE_DIR
set -euo pipefail
build=$1
here=$2/tests/install
scratch=$(mktemp -d)
trap 'chmod -R u+w "$scratch"; rm -rf "$scratch"' EXIT
prefix=$scratch/prefix
fail() { echo "install_test: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null

# The shared library: versioned, exporting the C interface and nothing else.
lib=$prefix/lib/libZIVOR.so
[[ $(readlink "$lib") == libZIVOR.so.0 && $(readlink "$lib.0") == libZIVOR.so.0.1 ]] ||
  fail "libZIVOR.so links: $(ls -l "$prefix/lib")"
readelf -d "$lib" | grep -q 'SONAME.*\[libZIVOR\.so\.0\]' || fail "no SONAME libZIVOR.so.0"
stray=$(nm -D --defined-only "$lib" | awk '{print $3}' | grep -Ev '^(ZIVOR_|Java_ostra_palum_ZIVOR_)' || true)
[[ -z $stray ]] || fail "libZIVOR.so exports more than its interface: $stray"
nm -D --defined-only "$lib" | grep -q ' ZIVOR_ParagraphProcessA$' || fail "ZIVOR_ParagraphProcessA not exported"

text=今天北京下雪了
work=$scratch/work
mkdir -p "$work"
cd "$work"

# Through pkg-config, shared and static.
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
datadir=$(pkg-config --variable=datadir zivor)
# shellcheck disable=SC2046
cc -std=c99 -Wall -Wextra -Werror -o pc_shared "$here/consumer.c" $(pkg-config --cflags --libs zivor)
# shellcheck disable=SC2046
cc -std=c99 -Wall -Wextra -Werror -o pc_static "$here/consumer.c" \
  $(pkg-config --cflags --libs --static zivor | sed 's/-lZIVOR/-l:libZIVOR.a/')
LD_LIBRARY_PATH=$prefix/lib ./pc_shared "$datadir" "$text" >pc_shared.out
./pc_static "$datadir" "$text" >pc_static.out

# Through find_package(ZIVOR).
cmake -S "$here" -B consumer -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build consumer >/dev/null
cmake_datadir=$(cat consumer/data_dir.txt)
[[ $(realpath "$cmake_datadir") == $(realpath "$datadir") ]] ||
  fail "ZIVOR_DATA_DIR $cmake_datadir is not pkg-config's $datadir"
LD_LIBRARY_PATH= consumer/consumer_shared "$cmake_datadir" "$text" >cmake_shared.out
consumer/consumer_static "$cmake_datadir" "$text" >cmake_static.out
for out in pc_static cmake_shared cmake_static; do
  cmp -s pc_shared.out $out.out || fail "$out differs from pc_shared: $(cat $out.out)"
done
[[ $(wc -l <pc_shared.out) -gt 2 ]] || fail "no records: $(cat pc_shared.out)"

# The installed command, from another directory, on read-only data: it finds
# the data by itself and writes only under its state directory.
chmod -R a-w "$prefix/share/zivor"
touch "$scratch/before"
export XDG_STATE_HOME=$scratch/state
mkdir -p "$scratch/elsewhere"
cd "$scratch/elsewhere"
zivor=$prefix/bin/zivor
[[ $(echo "$text" | "$zivor") == "$(head -1 "$work/pc_shared.out")" ]] ||
  fail "zivor and the library disagree: $(echo "$text" | "$zivor" 2>&1)"
"$zivor" --version | grep -q '^zivor 0\.1' || fail "zivor --version: $("$zivor" --version)"
"$zivor" --add-user-word "下雪了 vn" --save-user-dict 2>err.txt </dev/null ||
  fail "saving a user word: $(cat err.txt)"
[[ $(echo "$text" | "$zivor") == *"下雪了/vn"* ]] ||
  fail "a later run does not load the saved dictionary: $(echo "$text" | "$zivor" 2>&1)"
echo "$text$text" | "$zivor" --new-words >/dev/null
[[ -z $(ls -A) || $(ls -A) == err.txt ]] || fail "zivor wrote into the working directory: $(ls -A)"
changed=$(find "$prefix/share/zivor" -newer "$scratch/before")
[[ -z $changed ]] || fail "zivor wrote into the data directory: $changed"
state=$XDG_STATE_HOME/zivor
[[ -n $(find "$state" -name UserDict.pdat) ]] || fail "no saved dictionary under $state"
[[ -n $(find "$state" -name NewWord.lst) ]] || fail "no new-word log under $state"
echo "install_test: passed"
