#!/bin/sh
# Makes the note type known in a scratch data folder, as an install does under share/mime:
# make-mime-database.sh <notetool.xml> <share>
set -eu
rm -rf "$2/mime"
mkdir -p "$2/mime/packages"
cp "$1" "$2/mime/packages/"
update-mime-database "$2/mime"
