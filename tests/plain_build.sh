#!/bin/sh
# plain_build.sh SOURCE GOLDEN_TEST: a build without preset or option gives the recorded bytes.
set -eu
source=$1 golden_test=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
unset CXXFLAGS CFLAGS LDFLAGS CMAKE_BUILD_TYPE CMAKE_GENERATOR MAKEFLAGS || true

{
    cmake -S "$source" -B "$scratch/build"
    cmake --build "$scratch/build" --target cfa_cmodel -j 2
} >"$scratch/log" 2>&1 || {
    cat "$scratch/log"
    exit 1
}
"$golden_test" "$scratch/build/cfa_cmodel" "$source/tests/data/golden" "$source/tests/data/golden2"
