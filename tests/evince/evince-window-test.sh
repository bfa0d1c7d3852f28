#!/bin/bash
# The Document Viewer as a user meets it, with the backend installed where the viewer looks:
# evince-thumbnailer draws the sample's first page, and evince, under Xvfb, opens the sample in
# a window titled after the note whose page area shows the first page's ink. The screenshot
# stays in the artifacts folder. Everything installed is removed again, whatever happens.
#
# Usage: evince-window-test.sh <backend folder of the build> <sample.note> <notetool> <notetool.xml> <artifacts>
# Exits 77 (skipped) unless run as root with evince, evince-thumbnailer, xvfb-run, xdotool and
# imagemagick installed.
set -euo pipefail
backends=$1
sample=$2
notetool=$3
mime_xml=$4
artifacts=$5

skip() { echo "SKIPPED: $*"; exit 77; }
((EUID == 0)) || skip "installs into the system's evince backend folder: run as root"
for program in evince evince-thumbnailer xvfb-run xauth xdotool import convert pkg-config; do
    command -v "$program" > /dev/null || skip "$program is not installed"
done
viewer_dir=$(pkg-config --variable=backenddir evince-document-3.0)
mime_dir=/usr/share/mime

scratch=$(mktemp -d)
installed=()
viewer_pid=
cleanup() {
    [[ -n $viewer_pid ]] && kill "$viewer_pid" 2> /dev/null || true
    for file in "${installed[@]}"; do
        rm -f "$file"
        # A file of the same name that was there before the test goes back.
        [[ -e "$scratch/saved/$(basename "$file")" ]] && mv "$scratch/saved/$(basename "$file")" "$file"
    done
    update-mime-database "$mime_dir" 2> /dev/null || true
    rm -rf "$scratch"
}
trap cleanup EXIT
install_file() {
    mkdir -p "$scratch/saved"
    [[ -e "$2/$(basename "$1")" ]] && cp -p "$2/$(basename "$1")" "$scratch/saved/"
    installed+=("$2/$(basename "$1")")
    install -m 644 "$1" "$2/"
}
install_file "$backends/libnotedocument.so" "$viewer_dir"
install_file "$backends/notedocument.evince-backend" "$viewer_dir"
install_file "$mime_xml" "$mime_dir/packages"
update-mime-database "$mime_dir"

# Nothing of the viewer's settings, recent files or metadata lands in root's home.
export HOME=$scratch/home XDG_RUNTIME_DIR=$scratch/run GSETTINGS_BACKEND=memory NO_AT_BRIDGE=1
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
mkdir -p "$artifacts"

fail() { echo "FAILED: $*" >&2; exit 1; }

# The darkest grey in a picture, 0 to 1, and the share of its pixels darker than mid-grey.
darkest() { convert "$1" -colorspace Gray -format '%[fx:minima]' info:; }
ink_share() { convert "$1" -colorspace Gray -threshold 50% -format '%[fx:1-mean]' info:; }

# ---- evince-thumbnailer, as the file manager runs it ----
evince-thumbnailer -s 256 "$sample" "$scratch/thumbnail.png" || fail "evince-thumbnailer failed"
size=$(identify -format '%w %h' "$scratch/thumbnail.png")
read -r width height <<< "$size"
((width <= 256 && height == 256)) || fail "the thumbnail is $size, not the page fitted into 256 x 256"
awk -v d="$(darkest "$scratch/thumbnail.png")" 'BEGIN { exit !(d < 0.5) }' || fail "the thumbnail holds no ink"
echo "evince-thumbnailer: $size with ink"

# ---- evince in a window ----
"$notetool" render "$sample" --pages 1 --scale 0.1 -o "$scratch/page1.png" > /dev/null
page_ink=$(ink_share "$scratch/page1.png")
cat > "$scratch/session.sh" << 'SESSION'
#!/bin/bash
# In the X session: the viewer on the note, its window's title, then the whole screen.
set -euo pipefail
evince "$1" > "$2/evince.log" 2>&1 &
echo $! > "$2/evince.pid"
window=$(timeout 30 xdotool search --sync --onlyvisible --class evince | head -n 1)
sleep 4  # the page is drawn on the viewer's own threads after the window shows
xdotool getwindowname "$window" > "$2/title.txt"
import -window root "$3"
kill "$(cat "$2/evince.pid")"
SESSION
chmod +x "$scratch/session.sh"
screenshot=$artifacts/evince-window.png
timeout 90 xvfb-run -a -s "-screen 0 1024x768x24" "$scratch/session.sh" "$sample" "$scratch" "$screenshot" ||
    fail "the viewer's session failed: $(cat "$scratch/evince.log" 2> /dev/null)"
title=$(cat "$scratch/title.txt")
echo "window title: $title"
[[ $title == *sample* ]] || fail "the window's title names no note: $title"
# Below the header bar the window is the page: white paper, and ink in about the share the
# page itself has (the viewer's headers and margins add a little of their own).
convert "$screenshot" -crop 1024x668+0+100 +repage "$scratch/page-area.png"
shown_ink=$(ink_share "$scratch/page-area.png")
paper=$(convert "$scratch/page-area.png" -colorspace Gray -threshold 99% -format '%[fx:mean]' info:)
echo "ink: page $page_ink, window $shown_ink; white: $paper"
awk -v p="$paper" 'BEGIN { exit !(p > 0.2) }' || fail "no page shows in the window (white share $paper)"
awk -v s="$shown_ink" -v p="$page_ink" 'BEGIN { exit !(s > p / 4 && s < 4 * p + 0.02) }' ||
    fail "the page area's ink ($shown_ink) is not the first page's ($page_ink)"
echo "screenshot: $screenshot"
