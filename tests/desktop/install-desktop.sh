#!/bin/bash
# Installs the build into a scratch prefix as a user does, and checks that the desktop's
# pieces are where the README says, with the file-type cache renewed by the install. An
# install on a machine without the desktop's cache tools must succeed all the same.
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

"$cmake" --install "$build" --prefix "$prefix" >/dev/null
missing=0
for piece in "$bindir/notetool" "$bindir/notetool-to-pdf" \
    "$datadir/thumbnailers/notetool.thumbnailer" \
    "$datadir/mime/packages/notetool.xml" "$datadir/mime/mime.cache" \
    "$datadir/applications/notetool-to-pdf.desktop" \
    "$datadir/bash-completion/completions/notetool"; do
    if [[ ! -s $prefix/$piece ]]; then
        echo "not installed: $prefix/$piece" >&2
        missing=1
    fi
done
exit "$missing"
