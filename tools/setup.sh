# Installs what the build needs and this machine lacks. Sourced by run-demo and run-tests from the repository root.
# Debian and Ubuntu packages; elsewhere it names what is missing.

# Whether the compiler finds this header.
has_header() {
    printf '#include <%s>\n' "$1" | "${CXX:-c++}" -x c++ -std=c++20 -fsyntax-only - >/dev/null 2>&1
}

# Names of the packages that are missing, a blank between.
missing_packages() {
    missing=
    command -v cmake >/dev/null || missing="$missing cmake"
    command -v make >/dev/null || missing="$missing make"
    command -v "${CXX:-c++}" >/dev/null || missing="$missing g++" # no header is found then
    has_header ini.h || missing="$missing libinih-dev"
    has_header doctest/doctest.h || missing="$missing doctest-dev"
    # The companion program's.
    has_header CLI/CLI.hpp || missing="$missing libcli11-dev"
    has_header fmt/core.h || missing="$missing libfmt-dev"
    has_header nlohmann/json_fwd.hpp || missing="$missing nlohmann-json3-dev"
    has_header openssl/evp.h || missing="$missing libssl-dev"
    has_header xxhash.h || missing="$missing libxxhash-dev"
    has_header png.h || missing="$missing libpng-dev"
    has_header httplib.h || missing="$missing libcpp-httplib-dev"
    echo "$missing"
}

# Installs packages as root or through sudo without a password; where neither is possible, says what to run and ends
# with 2.
install_packages() {
    root=
    if [ "$(id -u)" != 0 ]; then
        root="sudo -n"
        sudo -n true 2>/dev/null || root=no
    fi
    if [ "$root" = no ] || ! command -v apt-get >/dev/null; then
        echo "Missing packages; run this and start again: sudo apt-get install -y $*" >&2
        exit 2
    fi
    echo "Installing: $*"
    # The lists of packages may be old or absent.
    if ! $root apt-get update -qq >/dev/null ||
        ! $root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$@" >/dev/null; then
        echo "apt-get could not install: $*" >&2
        exit 2
    fi
}

# Installs what the build needs and this machine lacks.
install_missing() {
    missing=$(missing_packages)
    [ -n "$missing" ] || return 0
    # shellcheck disable=SC2086 # words are wanted
    install_packages $missing
    missing=$(missing_packages)
    [ -z "$missing" ] || { echo "Still missing after the installation:$missing" >&2; exit 2; }
}

# Configures a preset and builds the given targets (none: all); what was printed is shown when it fails. A terminal sees
# how far it is.
build_preset() {
    preset=$1
    shift
    echo "Building preset $preset ..."
    mkdir -p "build/$preset"
    log="build/$preset/build.log"
    (cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}) >"$log" 2>&1 </dev/null &
    build=$!
    while [ -t 1 ] && kill -0 "$build" 2>/dev/null; do
        printf '\r%s ' "$(grep -oE '^\[ *[0-9]+%\]' "$log" | tail -n 1)"
        sleep 1
    done
    wait "$build" || {
        cat "$log" >&2
        echo "The build of preset $preset failed." >&2
        exit 2
    }
    [ ! -t 1 ] || printf '\r'
}
