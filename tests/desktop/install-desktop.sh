#!/bin/bash
# Installs the build into a scratch prefix as a user does, and checks that the desktop's
# pieces are where the README says, with the caches of file types and of the applications
# that open them renewed by the install, and no CMake warning. An install on a machine
# without the desktop's cache tools must succeed all the same, and a staged one (DESTDIR, as
# packages are built) leaves the caches to the packages' triggers.
#
# Usage: install-desktop.sh <cmake> <build-dir> <prefix> <datadir> <bindir>
set -euo pipefail

cmake=$1 build=$2 prefix=$3 datadir=$4 bindir=$5
bare=$prefix-without-tools

rm -rf "$prefix" "$bare"
# No update-mime-database on the PATH: the install succeeds and leaves the cache to a later run.
if ! PATH=/nonexistent "$cmake" --install "$build" --prefix "$bare" >"$bare.log" 2>&1; then
    echo "the install failed without the desktop's cache tools:" >&2
    cat "$bare.log" >&2
    exit 1
fi
if [[ -e $bare/$datadir/mime/mime.cache ]] || ! grep -q "update-mime-database is not installed" "$bare.log"; then
    echo "without update-mime-database, the install should say so and make no cache:" >&2
    cat "$bare.log" >&2
    exit 1
fi
rm -rf "$bare" "$bare.log"

staged=$prefix-staged
rm -rf "$staged"
DESTDIR=$staged "$cmake" --install "$build" --prefix /usr >"$staged.log" 2>&1
if [[ -n $(find "$staged" -name mime.cache -o -name mimeinfo.cache) ]] || grep -q "CMake Warning" "$staged.log"; then
    echo "a staged install should leave the caches alone, quietly:" >&2
    cat "$staged.log" >&2
    exit 1
fi
rm -rf "$staged" "$staged.log"

"$cmake" --install "$build" --prefix "$prefix" >"$prefix.log" 2>&1
if grep -q "CMake Warning" "$prefix.log"; then
    echo "the install warned:" >&2
    cat "$prefix.log" >&2
    exit 1
fi
rm "$prefix.log"
missing=0
for piece in "$bindir/notetool" "$bindir/notetool-to-pdf" \
    "$datadir/thumbnailers/notetool.thumbnailer" \
    "$datadir/mime/packages/notetool.xml" "$datadir/mime/mime.cache" \
    "$datadir/applications/notetool-to-pdf.desktop" "$datadir/applications/mimeinfo.cache" \
    "$datadir/bash-completion/completions/notetool"; do
    if [[ ! -s $prefix/$piece ]]; then
        echo "not installed: $prefix/$piece" >&2
        missing=1
    fi
done
exit "$missing"
