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
files=$(CDPATH='' cd -P -- "$(dirname -- "$0")/files" && pwd -P)
list=lib/corvane/installed-files.txt
agent=share/doc/corvane/examples/example.corvane.plist
config=$prefix/etc/corvane/corvane.conf

# A program is not overwritten but replaced: one that runs goes on, and macOS remembers what it has
# found out about the signature of a file.
install_file() {
    mkdir -p "$(dirname -- "$prefix/$1")"
    rm -f -- "$prefix/$1"
    if [ -L "$files/$1" ]; then
        ln -s "$(readlink "$files/$1")" "$prefix/$1"
    else
        cat "$files/$1" > "$prefix/$1"
        if [ -x "$files/$1" ]; then chmod 755 "$prefix/$1"; else chmod 644 "$prefix/$1"; fi
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

if [ -e "$config" ]; then
    echo "Kept: $config"
else
    mkdir -p "$prefix/etc/corvane"
    cat "$files/share/doc/corvane/examples/corvane.conf" > "$config"
    chmod 644 "$config"
fi
echo "Installed under $prefix. To start the server by hand: $prefix/bin/corvane"
echo "To start it at every log-in: see $prefix/share/doc/corvane/macos.md"
