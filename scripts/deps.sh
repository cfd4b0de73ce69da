#!/usr/bin/env bash
# Installs the Debian packages the build needs, only those that are missing.
set -euo pipefail
# clang-14 and its runtimes (libFuzzer, the sanitizers) build the fuzz harnesses.
packages=(cmake make g++ g++-multilib googletest libgtest-dev libgmock-dev libbenchmark-dev
          clang-14 libclang-rt-14-dev)
# The Java bindings and their JUnit tests.
packages+=(default-jdk-headless junit4)
# The Python package: its install (pip, setuptools, wheel), its tests (pytest)
# and the Dask scale-out, all for Debian's /usr/bin/python3.
packages+=(python3-pip python3-setuptools python3-wheel python3-pytest python3-dask
           python3-distributed python3-pandas)
# The install test builds a C program against the installed library through pkg-config.
packages+=(pkgconf)
# The general word list the data build adds to the dictionary (Data/LEXICON.md).
packages+=(python3-jieba)
missing=()
for p in "${packages[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}" >&2
  sudo_cmd=()
  [[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
  "${sudo_cmd[@]}" apt-get update -qq
  DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq "${missing[@]}" >/dev/null
fi
