#!/bin/sh
# plain_build.sh SOURCE BUILD GOLDEN_TEST: a build without preset or option gives the recorded bytes. Where it would run the
# very commands that BUILD was built with, BUILD's tests have shown so.
set -eu
source=$1 build=$2 golden_test=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
unset CXXFLAGS CFLAGS LDFLAGS CMAKE_BUILD_TYPE CMAKE_GENERATOR MAKEFLAGS || true

# The commands that make cfa_cmodel of the sources, wherever they are built.
commands() {
    grep -E '"command".*-o CMakeFiles/cfa_(common|wide_rows|model|cmodel)\.dir/' "$1/compile_commands.json" |
        sed "s|$1|BUILD|g" | sort
}

cmake -S "$source" -B "$scratch/build" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
commands "$scratch/build" >"$scratch/plain"
commands "$build" >"$scratch/ours"
[ -s "$scratch/plain" ]
if cmp -s "$scratch/plain" "$scratch/ours"; then
    echo "$(wc -l <"$scratch/plain") commands, all the same"
    exit
fi
cmake --build "$scratch/build" --target cfa_cmodel -j 2 >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }
"$golden_test" "$scratch/build/cfa_cmodel" "$source/tests/data/golden" "$source/tests/data/golden2"
