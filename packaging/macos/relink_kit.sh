# What a user needs to link the server with another log4cpp, as its licence asks for, for
# script/package-macos, which sources this file.
# shellcheck shell=bash
# shellcheck disable=SC2154

# The inputs of the linker for architecture $1, in its order, one a line.
inputs_of_server() {
    local command word
    command=$(ninja -C "$build/release-$1" -t commands corvane | tail -n 1)
    for word in $command; do
        case $word in
            *.o | *.a) (cd "$build/release-$1" && realpath --no-symlinks "$word") ;;
        esac
    done
}

# Copies them to $2, numbered, since names repeat; files.txt there has the order.
copy_inputs() {
    local input name number=10
    mkdir -p "$2"
    inputs_of_server "$1" > "$build/inputs-$1.txt"
    while IFS= read -r input; do
        name=${input##*/}
        if [[ $name != liblog4cpp.a ]]; then
            name=$number-$name
            number=$((number + 1))
        fi
        cp "$input" "$2/$name"
        echo "$name" >> "$2/files.txt"
    done < "$build/inputs-$1.txt"
    # As the toolchain has it: "c++ -target" and the architecture with the oldest system.
    sed -n 's/^set(CMAKE_CXX_COMPILER_ARG1 ".*-target \([^ "]*\).*/\1/p' \
        "$build/release-$1"/CMakeFiles/*/CMakeCXXCompiler.cmake > "$2/target.txt"
}

# make_relink_kit DIRECTORY: everything in one place; fails unless it gives the server that was built.
make_relink_kit() {
    local kit=$build/$1 arch
    note "collecting what is needed to link the server again"
    mkdir -p "$kit/config/log4cpp"
    for arch in arm64 x86_64; do
        copy_inputs "$arch" "$kit/$arch"
    done
    cp -R "$log4cpp" "$kit/log4cpp"
    cp "$here/libraries/include/log4cpp/config.h" "$kit/config/log4cpp/config.h"
    sed -n 's/^\(ziglang==[0-9.]*\).*/\1/p' "$here/requirements.txt" > "$kit/compiler.txt"
    install -m 755 "$macos/relink.sh" "$kit/"
    install -m 644 "$root/LICENSE" "$kit/"
    ZIG=$zig quietly "$kit/relink.sh"
    for arch in arm64 x86_64; do
        cmp "$kit/$arch/corvane" "$build/release-$arch/corvane" || die "the kit gives another server"
    done
    rm "$kit"/{arm64,x86_64}/corvane
}
