# Cross-compiling the project for macOS, for script/check-macos and script/test-macos, which source
# this file with $root set to the checkout and $build to the directory for everything that is made.
# shellcheck shell=bash
# shellcheck disable=SC2154
here=$root/check/macos
program=$(basename "$0")
mkdir -p "$build/sources"
build=$(cd "$build" && pwd)
log=$build/$program.log

# A Debian release that serves when the one in use does not offer a source package.
other_release=trixie

export ZIG_GLOBAL_CACHE_DIR=$build/zig-cache ZIG_LOCAL_CACHE_DIR=$build/zig-cache

die() {
    echo "$program: $*" >&2
    exit 1
}

# Runs a command whose output matters only when it fails; the log keeps that of the last one.
quietly() {
    "$@" > "$log" 2>&1 || {
        cat "$log" >&2
        die "failed: $*"
    }
}

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

# Runs apt-get on the source packages of release $1, with lists of its own: the system's list of
# sources and its caches stay as they are.
apt_sources() {
    local release=$1 state=$build/apt/$1 current file
    shift
    if [[ ! -d $state/sources ]]; then
        mkdir -p "$state/sources" "$state/lists/partial" "$state/archives/partial"
        # shellcheck source=/dev/null
        current=$(. /etc/os-release && echo "$VERSION_CODENAME")
        for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
            [[ -r $file ]] || continue
            sed -e 's/^Types:.*/Types: deb-src/' -e '/^deb-src /d' -e 's/^deb /deb-src /' \
                -e "s/\\b$current\\b/$release/g" "$file" > "$state/sources/${file##*/}"
        done
        mv "$state/sources/sources.list" "$state/sources/main.list" 2> /dev/null || true
    fi
    apt-get -q -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$state/sources" \
        -o Dir::State::lists="$state/lists" -o Dir::Cache="$state" -o APT::Sandbox::User=root \
        "$@" > "$log" 2>&1
}

# Unpacks the upstream sources of Debian's source package $1 in sources/$1.
get_source() {
    local name=$1 to=$build/sources/$1 release current
    [[ -d $to ]] && return 0
    # shellcheck source=/dev/null
    current=$(. /etc/os-release && echo "$VERSION_CODENAME")
    for release in "$current" "$other_release"; do
        rm -rf "$to.new"
        mkdir -p "$to.new/unpacked"
        apt_sources "$release" update || true # a list that fails does not matter if another has it
        (cd "$to.new" && apt_sources "$release" source --download-only --tar-only "$name") ||
            continue
        quietly tar -x --no-same-owner -f "$to.new/$name"_*.orig.tar.* -C "$to.new/unpacked"
        mv "$to.new/unpacked/"* "$to"
        rm -rf "$to.new"
        return 0
    done
    rm -rf "$to.new"
    return 1
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
    undefined_log4cpp=(--tolerate 7log4cpp)
    link_log4cpp=-Wl,-undefined,dynamic_lookup
    mkdir -p "$log4cpp/src" "$log4cpp/include"
    cp -r /usr/include/log4cpp "$log4cpp/include/"
    touch "$log4cpp/src/empty.cpp"
}

# The compiler, and the sources of the libraries that the project uses.
get_everything() {
    get_compiler
    get_source zlib || die "cannot get the sources of zlib, see $log"
    get_source googletest || die "cannot get the sources of GoogleTest, see $log"
    get_log4cpp
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

build_libraries() {
    local arch=$1 directory=$build/libraries-$1
    configure "$directory" "$arch" -G Ninja -S "$here/libraries" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_INSTALL_PREFIX="$directory/installed" -DZLIB_SOURCE="$build/sources/zlib" \
        -DLOG4CPP_SOURCE="$log4cpp" -DGOOGLETEST_SOURCE="$build/sources/googletest"
    compile "$directory" install
}

# Everything that a user's build makes, tests included, configured as script/server does it, but
# optimised less, which saves half of the time. Functions that nothing uses stay in: what they call
# must exist on macOS like the rest.
build_project() {
    local arch=$1
    (cd "$root" && configure "$build/$arch" "$arch" --preset release \
        -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
        -DCMAKE_EXE_LINKER_FLAGS="-Wl,--no-gc-sections $link_log4cpp")
    compile "$build/$arch" all
}
