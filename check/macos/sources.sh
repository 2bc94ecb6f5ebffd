# Sources of libraries that a check builds itself, as Debian has them, for the scripts that source this
# file with $build set to the directory for everything that is made.
# shellcheck shell=bash
# shellcheck disable=SC2154
program=$(basename "$0")
mkdir -p "$build/sources"
build=$(cd "$build" && pwd)
log=$build/$program.log

# A Debian release that serves when the one in use does not offer a source package.
other_release=trixie

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
