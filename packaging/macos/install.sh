#!/bin/sh
# Installs Corvane under /usr/local, or under the directory that is given.
# Usage: sudo ./install.sh [PREFIX]
#
# It copies what is in the directory "files" beside it, and changes nothing else. An installed
# configuration, PREFIX/etc/corvane/corvane.conf, is kept. Nothing is started. lib/corvane/uninstall.sh
# under the same directory takes all of it away again.
#
# The copies are written anew, and so do not carry the mark of a downloaded file ("quarantine").
set -eu

die() {
    echo "install.sh: $*" >&2
    exit 1
}

prefix=${1:-/usr/local}
case $prefix in
    /*) ;;
    *) die "give the directory by its full path, or nothing for /usr/local" ;;
esac
[ $# -le 1 ] || die "only one directory, please"
case $prefix in
    *[[:cntrl:]]*) die "a directory whose name has a line end in it is not possible" ;;
esac
files=$(CDPATH='' cd -P -- "$(dirname -- "$0")/files" && pwd -P)
list=lib/corvane/installed-files.txt
agent=share/doc/corvane/examples/example.corvane.plist
config=$prefix/etc/corvane/corvane.conf

# put FILE PLACE: a copy that takes the place of what is there in one step. What cannot be written, for
# want of room or because it is interrupted, leaves it as it was. A program that runs goes on, and macOS
# remembers what it has found out about the signature of a file.
put() {
    mode=644
    if [ -x "$1" ]; then mode=755; fi
    rm -f -- "$2.new"
    if ! { cat "$1" > "$2.new" && chmod "$mode" "$2.new" && mv -f -- "$2.new" "$2"; }; then
        rm -f -- "$2.new"
        die "cannot write $2"
    fi
}

install_file() {
    mkdir -p "$(dirname -- "$prefix/$1")"
    # What is moved onto a directory, or a link to one, would end up in it.
    [ ! -L "$prefix/$1" ] || rm -f -- "$prefix/$1"
    [ ! -d "$prefix/$1" ] || die "$prefix/$1 is a directory"
    if [ -L "$files/$1" ]; then
        rm -f -- "$prefix/$1"
        ln -s "$(readlink "$files/$1")" "$prefix/$1"
    else
        put "$files/$1" "$prefix/$1"
    fi
}

# The agent for launchd names the launcher by its full path.
name_prefix_in_agent() {
    as_xml=$(printf '%s\n' "$prefix" | sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/[\\&|]/\\&/g')
    sed "s|<string>/usr/local/bin/|<string>$as_xml/bin/|" "$files/$agent" > "$prefix/$agent"
}

[ -f "$files/$list" ] || die "the directory 'files' beside this script is not complete"
mkdir -p "$prefix" || die "no permission to make $prefix: start it with sudo"
[ -w "$prefix" ] || die "no permission for $prefix: start it with sudo"
# Of an earlier version, what this one does not have.
if [ -f "$prefix/$list" ]; then
    while IFS= read -r name; do
        [ -e "$files/$name" ] || [ -L "$files/$name" ] || rm -f -- "$prefix/$name"
    done < "$prefix/$list"
fi
while IFS= read -r name; do
    install_file "$name"
done < "$files/$list"
[ "$prefix" = /usr/local ] || name_prefix_in_agent

if [ -e "$config" ] || [ -L "$config" ]; then
    echo "Kept: $config"
else
    mkdir -p "$prefix/etc/corvane"
    put "$files/share/doc/corvane/examples/corvane.conf" "$config"
fi
echo "Installed under $prefix. To start the server by hand: $prefix/bin/corvane"
echo "To start it at every log-in: see $prefix/share/doc/corvane/macos.md"
