#!/usr/bin/env bash
# Installs the library and builds and runs programs against the installed tree: one in C99 and the
# first program of the README by pkg-config, one in C++ by find_package. The tree is moved after the
# install, so both descriptions must find their prefix by themselves.
set -euo pipefail
sources=$(dirname "$(readlink -f "$0")")
build=$1 libdir=$2 cmake=$3 cc=$4 cxx=$5 flags=$6

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/moved

"$cmake" --install "$build" --prefix "$scratch/installed" >/dev/null
mv "$scratch/installed" "$prefix"
[[ $(readlink -f "$prefix/$libdir/liborba.so") == "$prefix/$libdir"/liborba.so.1* ]]

export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
build_c() {
  # shellcheck disable=SC2046,SC2086  # both are lists of options
  "$cc" -std=c99 -pedantic -Wall -Wextra -Werror $flags "$1" -o "$2" \
    $(pkg-config --cflags --libs orba) -Wl,-rpath,"$(pkg-config --variable=libdir orba)"
}
build_c "$sources/consumer.c" "$scratch/consumer_c"
"$scratch/consumer_c"

# The first program of the README is a promise too.
sed -n '/^```c$/,/^```$/{/^```/d;p}' "$sources/../../README.md" >"$scratch/first.c"
build_c "$scratch/first.c" "$scratch/first"
"$scratch/first" | grep "one element was a singularity"

"$cmake" -G Ninja -S "$sources/cmake_project" -B "$scratch/build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
"$cmake" --build "$scratch/build" >/dev/null
"$scratch/build/consumer_cpp"
