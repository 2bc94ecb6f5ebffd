#!/bin/sh
# Makes an installed tree that of the packages for macOS: without a configuration, which is the user's (an
# example of it is among the documents), and with the script that takes everything away and the list
# that it reads.
# Usage: complete_tree.sh TREE
set -eu

here=$(CDPATH='' cd -P -- "$(dirname -- "$0")" && pwd -P)
cd "$1"
rm -r etc
cp "$here/uninstall.sh" lib/corvane/uninstall.sh
chmod 755 lib/corvane/uninstall.sh
list=lib/corvane/installed-files.txt
: > $list
# It is complete, itself included, before it is written.
names=$(find . ! -type d | sed 's,^\./,,' | LC_ALL=C sort)
printf '%s\n' "$names" > $list
