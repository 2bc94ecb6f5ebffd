# Cross-compiling the project for macOS, for script/check-macos and script/test-macos, which source
# this file with $root set to the checkout and $build to the directory for everything that is made.
# shellcheck shell=bash
# shellcheck disable=SC2154
here=$root/check/macos
# shellcheck source=check/macos/sources.sh
. "$here/sources.sh"

export ZIG_GLOBAL_CACHE_DIR=$build/zig-cache ZIG_LOCAL_CACHE_DIR=$build/zig-cache

# Sets zig to the compiler's path, after installing it if need be.
get_compiler() {
    local wanted=$here/requirements.txt installed=$build/venv/requirements.txt
    if ! cmp -s "$wanted" "$installed"; then
        rm -rf "$build"/{venv,zig-cache,libraries-arm64,libraries-x86_64,arm64,x86_64}
        quietly python3 -m venv "$build/venv"
        quietly "$build/venv/bin/python" -m pip install --disable-pip-version-check --no-cache-dir \
            --require-hashes --only-binary :all: --requirement "$wanted"
        cp "$wanted" "$installed"
    fi
    zig=$("$build/venv/bin/python" -c \
        'import pathlib, ziglang; print(pathlib.Path(ziglang.__file__).parent / "zig")')
}

# Sets log4cpp to the directory of its sources. Without them the installed headers and an empty
# library stand in, so that its functions are left undefined.
get_log4cpp() {
    log4cpp=$build/sources/log4cpp
    undefined_log4cpp=()
    link_log4cpp=
    get_source log4cpp && return 0
    echo "$program: no sources of log4cpp to be had; its functions are left undefined" >&2
    log4cpp=$build/sources/log4cpp-headers
    # shellcheck disable=SC2034
    undefined_log4cpp=(--tolerate 7log4cpp)
    link_log4cpp=-Wl,-undefined,dynamic_lookup
    mkdir -p "$log4cpp/src" "$log4cpp/include"
    cp -r /usr/include/log4cpp "$log4cpp/include/"
    touch "$log4cpp/src/empty.cpp"
}

# Sets boost to a directory with the headers of Boost and nothing else: they are the same on every
# system.
get_boost() {
    boost=$build/sources/boost
    mkdir -p "$boost"
    ln -sfn /usr/include/boost "$boost/boost"
}

# The compiler, and the sources of the libraries that the project uses.
get_everything() {
    get_compiler
    get_source zlib || die "cannot get the sources of zlib, see $log"
    get_source googletest || die "cannot get the sources of GoogleTest, see $log"
    get_log4cpp
    get_boost
}

# Configures in directory $1 for architecture $2 with the arguments that follow.
configure() {
    local directory=$1 arch=$2 fresh=()
    shift 2
    # CMake keeps a toolchain's settings from the first time that it read them.
    [[ $directory/CMakeCache.txt -nt $here/toolchain.cmake ]] || fresh=(--fresh)
    quietly cmake ${fresh[@]+"${fresh[@]}"} -B "$directory" --toolchain "$here/toolchain.cmake" \
        -DMACOS_ZIG="$zig" -DMACOS_ARCH="$arch" \
        -DMACOS_PREFIX="$build/libraries-$arch/installed" "$@"
}

compile() {
    quietly cmake --build "$1" --target "$2" --parallel "$(nproc)" -- --quiet -k 0
}

# The libraries for architecture $1; GoogleTest is among them unless $googletest is empty.
build_libraries() {
    local arch=$1 directory=$build/libraries-$1
    configure "$directory" "$arch" -G Ninja -S "$here/libraries" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$directory/installed" -DZLIB_SOURCE="$build/sources/zlib" \
        -DLOG4CPP_SOURCE="$log4cpp" -DGOOGLETEST_SOURCE="${googletest-$build/sources/googletest}"
    compile "$directory" install
}

# As configure, for the project itself: with what CMake cannot find, or try, on another system.
configure_project() {
    configure "$1" "$2" -DCORVANE_EVENT_QUEUE=ON -DCORVANE_BOOST_HEADERS="$boost" "${@:3}"
}

# Everything that a user's build makes, with the tests unless $tests is OFF, configured as
# script/server does it, but optimised less, which saves half of the time. Functions that nothing uses
# stay in: what they call must exist on macOS like the rest. Arguments behind the architecture go to
# CMake.
build_project() {
    local arch=$1
    shift
    (cd "$root" && configure_project "$build/$arch" "$arch" --preset release \
        -DCORVANE_TESTS="${tests:-ON}" -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
        -DCMAKE_EXE_LINKER_FLAGS="-Wl,--no-gc-sections $link_log4cpp" "$@")
    compile "$build/$arch" all
}
