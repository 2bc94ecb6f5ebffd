# The program that signs for macOS, for script/package-macos, which sources this file.
# shellcheck shell=bash
# shellcheck disable=SC2154

# A version, and the versions of everything that it uses as its authors have tried them ("--locked").
# Without its default features: they upload to Apple, which the packages do not need.
rcodesign_version=0.29.0

# Sets rcodesign to the program's path, after compiling it if need be.
get_rcodesign() {
    local home=${XDG_CACHE_HOME:-$HOME/.cache}/corvane/rcodesign-$rcodesign_version
    rcodesign=$home/bin/rcodesign
    [[ -x $rcodesign ]] && return 0
    echo "$program: compiling the program that signs, once; this takes some minutes"
    CARGO_PROFILE_RELEASE_OPT_LEVEL=1 CARGO_TARGET_DIR=$build/rcodesign quietly nice cargo install \
        apple-codesign --version "$rcodesign_version" --locked --no-default-features --root "$home"
    rm -rf "$build/rcodesign"
}
