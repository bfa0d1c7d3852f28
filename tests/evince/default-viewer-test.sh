#!/bin/bash
# A double-click on a note opens the Document Viewer: with the build installed into a scratch
# prefix, and no user, administrator or desktop defaults, GLib (what GNOME Files asks) offers
# the installed viewer entry for notes and takes it as their default application.
#
# Usage: default-viewer-test.sh <build folder>
# Exits 77 (skipped) where gio or update-desktop-database is missing.
set -euo pipefail
build=$1
for program in gio update-desktop-database; do
    command -v "$program" > /dev/null || { echo "SKIPPED: $program is not installed"; exit 77; }
done
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build" --prefix "$scratch/prefix" > "$scratch/install.log" 2>&1 || { cat "$scratch/install.log"; exit 1; }
# Built here, whatever the install managed: the test is of the entries, not of the caches.
update-desktop-database "$scratch/prefix/share/applications"

# Its bin/ on the PATH too, so that "Convert to PDF", which claims notes as well, is installed.
export PATH=$scratch/prefix/bin:$PATH XDG_DATA_DIRS=$scratch/prefix/share XDG_DATA_HOME=$scratch/data
export XDG_CONFIG_HOME=$scratch/config XDG_CONFIG_DIRS=$scratch/etc XDG_CURRENT_DESKTOP=GNOME
# Another application that takes notes, first by name, which GLib would choose without a default.
mkdir -p "$XDG_DATA_HOME/applications"
printf '[Desktop Entry]\nType=Application\nName=Other\nExec=true %%f\nMimeType=application/x-handwritten-note;\n' \
    > "$XDG_DATA_HOME/applications/aaa-other.desktop"
update-desktop-database "$XDG_DATA_HOME/applications"
answer=$(gio mime application/x-handwritten-note)
echo "$answer"
grep -q '^Default application for .*: libnote-evince.desktop$' <<< "$answer" || { echo "FAILED: the viewer is not the default"; exit 1; }
offered=$(sed -n '/^Registered applications:/,/^Recommended/p' <<< "$answer")
grep -q 'libnote-evince.desktop' <<< "$offered" || { echo "FAILED: the viewer is not offered"; exit 1; }
grep -q '^Exec=evince %U$' "$scratch/prefix/share/applications/libnote-evince.desktop"

# A user's own choice comes first.
mkdir -p "$XDG_CONFIG_HOME"
printf '[Default Applications]\napplication/x-handwritten-note=notetool-to-pdf.desktop\n' > "$XDG_CONFIG_HOME/mimeapps.list"
answer=$(gio mime application/x-handwritten-note)
grep -q '^Default application for .*: notetool-to-pdf.desktop$' <<< "$answer" ||
    { echo "FAILED: the installed default overrides the user's: $answer"; exit 1; }
