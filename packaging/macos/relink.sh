#!/usr/bin/env bash
# Links the server with another log4cpp than the one that it was released with, on macOS or Linux.
#
# Usage: ./relink.sh [LOG4CPP_DIRECTORY]
#
# LOG4CPP_DIRECTORY holds the sources of log4cpp, with its directories "src" and "include"; those of the
# release are in "log4cpp". Without it the library of the release is linked, which gives the program of
# the release. The outcome is x86_64/corvane and arm64/corvane. Wants Python 3 with venv, from which it
# installs the compiler of the release the first time. On a Mac join and sign them then:
#
#     lipo -create x86_64/corvane arm64/corvane -output corvane && codesign --sign - corvane
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
sources=${1:-}

get_compiler() {
    if [ -n "${ZIG:-}" ]; then # one that is there already
        zig=("$ZIG")
        return
    fi
    if ! [ -x compiler/bin/python ]; then
        python3 -m venv compiler
        compiler/bin/python -m pip install --quiet --disable-pip-version-check "$(cat compiler.txt)"
    fi
    zig=(compiler/bin/python -m ziglang)
}

# Compiles the sources for the target $1 into the objects $2/*.o.
compile_log4cpp() {
    local file
    rm -rf "$2"
    mkdir -p "$2"
    for file in "$sources"/src/*.cpp; do
        "${zig[@]}" c++ -target "$1" -std=c++11 -O2 -DNDEBUG -w -Iconfig -I"$sources/include" -c "$file" \
            -o "$2/$(basename "$file" .cpp).o"
    done
}

# The order of files.txt is that of the linker; "log4cpp" stands for the library.
link_server() {
    local target=$1 directory=$2 inputs=() name
    while IFS= read -r name; do
        if [ "$name" != liblog4cpp.a ] || [ -z "$sources" ]; then
            inputs+=("$directory/$name")
        else
            inputs+=("changed-$directory"/*.o)
        fi
    done < "$directory/files.txt"
    "${zig[@]}" c++ -target "$target" -O2 -Wl,-headerpad_max_install_names -s "${inputs[@]}" \
        -o "$directory/corvane"
}

get_compiler
for directory in x86_64 arm64; do
    target=$(cat "$directory/target.txt")
    [ -z "$sources" ] || compile_log4cpp "$target" "changed-$directory"
    link_server "$target" "$directory"
done
