#!/bin/sh
# Takes away what install.sh or the package has installed.
# Usage: sudo /usr/local/lib/corvane/uninstall.sh [--purge]
#
# A configuration that has been edited and log files stay, unless --purge is given.
set -eu

die() {
    echo "uninstall.sh: $*" >&2
    exit 1
}

# Removes the directory $1 under the prefix, and those above it, as far as they are empty.
remove_empty() {
    rmdir -p -- "$1" 2> /dev/null || true
}

remove_files() {
    while IFS= read -r name; do
        rm -f -- "$name"
    done < "$1"
    while IFS= read -r name; do
        remove_empty "$(dirname -- "$name")"
    done < "$1"
}

main() {
    purge=no
    if [ "${1-}" = --purge ]; then
        purge=yes
    elif [ $# -gt 0 ]; then
        die "the only option is --purge"
    fi
    # By the names that were used for the installation: "lib" may be a link to anywhere.
    home=$(CDPATH='' cd -L -- "$(dirname -- "$0")" && pwd -L)
    [ -f "$home/installed-files.txt" ] || die "start the one that is installed, in lib/corvane"
    CDPATH='' cd -L -- "$home/../.."
    prefix=$(pwd -L)
    [ -w lib/corvane ] || die "no permission for $prefix: start it with sudo"

    config=etc/corvane/corvane.conf
    if [ $purge = yes ] || cmp -s "$config" share/doc/corvane/examples/corvane.conf; then
        rm -f -- "$config"
    fi
    [ $purge = no ] || rm -f lib/corvane/cv*.log
    # The list is among what it lists.
    list=$(mktemp)
    cat lib/corvane/installed-files.txt > "$list"
    remove_files "$list"
    rm -f -- "$list"
    remove_empty etc/corvane

    # Installer's receipt, after an installation from the package.
    if [ "$prefix" = /usr/local ] && command -v pkgutil > /dev/null; then
        pkgutil --forget example.corvane > /dev/null 2>&1 || true
    fi
    if [ -e "$config" ]; then echo "Kept: $prefix/$config"; fi
    agent=${HOME:-}/Library/LaunchAgents/example.corvane.plist
    if [ -e "$agent" ]; then
        echo "Still there: $agent. Unload it with 'launchctl bootout gui/\$(id -u)/example.corvane', then remove it."
    fi
    echo "Removed from $prefix."
}

# In one piece: the shell reads no further while its own file goes away.
main "$@"
