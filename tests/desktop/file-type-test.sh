#!/bin/bash
# The installed file type of notes: its description is valid against the shared-mime-info
# schema, and with it a desktop knows a note by its name and, renamed, by its content; the
# thumbnailer and "Convert to PDF" name the type the desktop then gives notes.
#
# Usage: file-type-test.sh <share-dir> <schema.rng> <sample.note>
set -euo pipefail

share=$1 schema=$2 sample=$3
description=$share/mime/packages/notetool.xml
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0
fail() {
    echo "$*" >&2
    failed=1
}

xmllint --noout --relaxng "$schema" "$description"
type=$(xmllint --xpath 'string(//*[local-name()="mime-type"]/@type)' "$description")

# xdg-mime asks shared-mime-info's database (through File::MimeInfo) on a desktop it does not
# know, and that database is the one of a scratch XDG_DATA_HOME.
query() {
    env -u XDG_CURRENT_DESKTOP -u DESKTOP_SESSION -u KDE_FULL_SESSION -u GNOME_DESKTOP_SESSION_ID \
        XDG_DATA_HOME="$scratch/data" xdg-mime query filetype "$1"
}
cp "$sample" "$scratch/sample.note"
cp "$sample" "$scratch/renamed.bin"
echo "plain text" >"$scratch/words.note"
mkdir -p "$scratch/data/mime/packages"
[[ $(query "$scratch/renamed.bin") != "$type" ]] || fail "a renamed note is $type before the description is installed"

cp "$description" "$scratch/data/mime/packages/"
update-mime-database "$scratch/data/mime"
for file in sample.note renamed.bin words.note; do
    got=$(query "$scratch/$file")
    [[ $got == "$type" ]] || fail "$file is $got, not $type"
done

for entry in thumbnailers/notetool.thumbnailer applications/notetool-to-pdf.desktop; do
    grep -qx "MimeType=\(.*;\)\?$type;.*" "$share/$entry" || fail "$entry does not name $type"
done
exit "$failed"
