#!/bin/sh
# install_test.sh BUILD SOURCE COMPILER FLAGS: installs into a scratch prefix, moves that, and uses what is there:
# programs, manual pages, completion, and examples/testbench.cpp built against headers and library.
set -eu
build=$1 source=$2 compiler=$3 flags=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
    echo "install_test: $1" >&2
    exit 1
}

cmake --install "$build" --prefix "$scratch/first" >"$scratch/log" || fail "cmake --install: $(cat "$scratch/log")"
mv "$scratch/first" "$scratch/moved"
prefix=$scratch/moved
for file in bin/cfa_cmodel bin/cfatool share/man/man1/cfa_cmodel.1.gz share/man/man1/cfatool.1.gz include/cfa_block.h \
    share/bash-completion/completions/cfatool share/cfa_cmodel/samples/cfa.ini; do
    [ -s "$prefix/$file" ] || fail "$file is not installed"
done
case $flags in
*-fsanitize* | *-g*) ;; # debug information names folders
*) ! grep -r -l -F -e "$source" -e "$build" "$prefix" || fail "a path of the build machine is in these files" ;;
esac

# The pkg-config file, read by pkg-config or, where there is none, by its few lines.
pc=$(find "$prefix" -name cfa_cmodel.pc)
[ -n "$pc" ] || fail "cfa_cmodel.pc is not installed"
libdir=$(dirname "$(dirname "$pc")")
found="-I$prefix/include/cfa_cmodel -fwrapv -L$libdir -lcfa_model -lcfa_common -linih"
! command -v pkg-config >/dev/null || found=$(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs cfa_cmodel)
echo "$found" | grep -q -e '-fwrapv' || fail "-fwrapv is not among the compiler's flags: $found"
cp "$source/examples/testbench.cpp" "$source/examples/block.c" "$scratch"
cd "$scratch" # nothing of the source tree may be found by accident
# shellcheck disable=SC2086 # words are wanted
"$compiler" -std=c++20 -Wall -Wextra -Werror $flags testbench.cpp $found -o testbench || fail "the example does not build"
./testbench "$prefix/share/cfa_cmodel/samples/cfa.ini" || fail "the example ends with status $?"
./testbench none.ini 2>/dev/null && fail "the example accepts a missing INI file"

# The C program: as C99 and as C++, through CMake's package, and with the sources inside another project.
library=$(dirname "$(find "$prefix" -name libcfa_block.so)")
for language in "c -std=c99" "c++ -std=c++11"; do
    # shellcheck disable=SC2086
    "$compiler" -x $language -Wall -Wextra -Werror $flags "-I$prefix/include" block.c -x none "-L$library" -lcfa_block \
        -o block || fail "the C example does not build as $language"
    LD_LIBRARY_PATH=$library ./block "$prefix/share/cfa_cmodel/samples/cfa.ini" || fail "the C example ends with status $?"
done
LD_LIBRARY_PATH=$library ./block none.ini 2>/dev/null && fail "the C example accepts a missing INI file"
for way in "find_package(cfa_cmodel 1.1 REQUIRED)" "add_subdirectory(\"$source\" model)"; do
    rm -rf project && mkdir project
    cat >project/CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.25)
project(user C CXX)
$way
add_executable(block ../block.c)
target_link_libraries(block cfa_cmodel::cfa_block)
if(NOT TARGET cfa_flags) # the includes of the C++ example are those of an installed tree
  add_executable(testbench ../testbench.cpp)
  target_compile_features(testbench PRIVATE cxx_std_20)
  target_link_libraries(testbench cfa_cmodel::cfa_model)
endif()
END
    cmake -S project -B project/build "-DCMAKE_PREFIX_PATH=$prefix" "-DCMAKE_CXX_FLAGS=$flags" "-DCMAKE_C_FLAGS=$flags" >"$scratch/log" &&
        cmake --build project/build -j 2 --target $(case $way in add*) echo help ;; *) echo all ;; esac) >>"$scratch/log" ||
        fail "$way: $(cat "$scratch/log")"
done

# Every installed header stands on its own.
for header in $(cd "$prefix/include/cfa_cmodel" && find . -name '*.h' | sed 's,^\./,,'); do
    # shellcheck disable=SC2086
    echo "#include \"$header\"" | "$compiler" -std=c++20 -fsyntax-only -x c++ $found - || fail "$header does not stand alone"
done
"$prefix/bin/cfatool" conformance || fail "the installed tool does not conform"
