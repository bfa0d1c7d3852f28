#!/bin/bash
# "Convert to PDF" as a file manager runs it: the installed desktop entry is valid, and its
# command, given notes in two folders, writes each note's pages as a PDF of the same name
# beside it; a note that cannot be read fails the run without stopping the others.
#
# Usage: desktop-entry-test.sh <share-dir> <bin-dir> <sample.note>
set -euo pipefail

share=$1 bin=$2 sample=$3
entry=$share/applications/notetool-to-pdf.desktop
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Errors fail the validation, and warnings and hints are faults here too.
if ! report=$(desktop-file-validate "$entry" 2>&1) || [[ -n $report ]]; then
    echo "desktop-file-validate $entry:" >&2
    echo "$report" >&2
    exit 1
fi

mkdir -p "$scratch/my notes" "$scratch/b"
cp "$sample" "$scratch/my notes/Week 1.note"
cp "$sample" "$scratch/b/SECOND.NOTE"
echo "not a note" >"$scratch/b/broken.note"
notes=("$scratch/my notes/Week 1.note" "$scratch/b/broken.note" "$scratch/b/SECOND.NOTE")

# %F: the files, each a word of its own.
exec_line=$(sed -n 's/^Exec=//p' "$entry")
quoted=$(printf "'%s' " "${notes[@]}")
eval "set -- ${exec_line//%F/$quoted}"
status=0
PATH=$bin:$PATH "$@" 2>"$scratch/errors" || status=$?

failed=0
[[ $status != 0 ]] || { echo "a broken note did not fail the run" >&2; failed=1; }
[[ $(wc -l <"$scratch/errors") == 1 ]] || { echo "expected one error line:" >&2; cat "$scratch/errors" >&2; failed=1; }
for pdf in "my notes/Week 1.pdf" "b/SECOND.pdf"; do
    if ! pdfinfo "$scratch/$pdf" | grep -qx 'Pages: *4'; then
        echo "$pdf is not the sample's four pages" >&2
        failed=1
    fi
done
listing=$(cd "$scratch" && find . -type f | LC_ALL=C sort | tr '\n' ' ')
expected="./b/SECOND.NOTE ./b/SECOND.pdf ./b/broken.note ./errors ./my notes/Week 1.note ./my notes/Week 1.pdf "
[[ $listing == "$expected" ]] || { echo "files after the run: $listing" >&2; failed=1; }
exit "$failed"
