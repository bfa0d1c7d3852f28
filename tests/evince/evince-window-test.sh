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

# The darkest grey in a picture, 0 to 1.
darkest() { convert "$1" -colorspace Gray -format '%[fx:minima]' info:; }

# ---- evince-thumbnailer, as the file manager runs it ----
evince-thumbnailer -s 256 "$sample" "$scratch/thumbnail.png" || fail "evince-thumbnailer failed"
size=$(identify -format '%w %h' "$scratch/thumbnail.png")
read -r width height <<< "$size"
((width <= 256 && height == 256)) || fail "the thumbnail is $size, not the page fitted into 256 x 256"
awk -v d="$(darkest "$scratch/thumbnail.png")" 'BEGIN { exit !(d < 0.5) }' || fail "the thumbnail holds no ink"
echo "evince-thumbnailer: $size with ink"

# ---- evince in a window ----
cat > "$scratch/session.sh" << 'SESSION'
#!/bin/bash
# In the X session: the viewer on the note, its window's title and place, then the screen.
set -euo pipefail
evince "$1" > "$2/evince.log" 2>&1 &
echo $! > "$2/evince.pid"
windows=$(timeout 30 xdotool search --sync --onlyvisible --class evince)
window=${windows%%$'\n'*}
sleep 4  # the page is drawn on the viewer's own threads after the window shows
xdotool getwindowname "$window" > "$2/title.txt"
xdotool getwindowgeometry --shell "$window" > "$2/geometry.txt"
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

# The page is the white rectangle below the window's header bar. Its ink is the first page's
# when notetool's picture of that page, at the width shown and cut where the window cuts it,
# has as many dark pixels, give or take a quarter (the page's rules are lighter than mid-grey, its writing not).
source "$scratch/geometry.txt"
header=60
convert "$screenshot" -crop "${WIDTH}x$((HEIGHT - header))+${X}+$((Y + header))" +repage "$scratch/view.png"
page_box=$(convert "$scratch/view.png" -fill black +opaque white -trim -format '%w %h %X %Y' info:)
read -r page_width page_height page_x page_y <<< "$page_box"
((page_width > WIDTH / 2)) || fail "no page shows in the window (white area $page_box)"
convert "$scratch/view.png" -crop "${page_width}x${page_height}${page_x}${page_y}" +repage "$scratch/page-shown.png"
scale=$(awk -v w="$page_width" 'BEGIN { printf "%.4f", w / 1404 }')
"$notetool" render "$sample" --pages 1 --scale "$scale" -o "$scratch/page1.png" > /dev/null
convert "$scratch/page1.png" -crop "${page_width}x${page_height}+0+0" +repage "$scratch/page-expected.png"
dark() { convert "$1" -colorspace Gray -threshold 50% -negate -format '%[fx:round(mean*w*h)]' info:; }
shown=$(dark "$scratch/page-shown.png")
expected=$(dark "$scratch/page-expected.png")
echo "page shown ${page_width}x${page_height}: $shown dark pixels, notetool's page at scale $scale: $expected"
((expected > 100)) || fail "the first page has too little ink in view to compare ($expected)"
((shown * 4 > expected * 3 && shown * 3 < expected * 4)) || fail "the page shown ($shown dark pixels) is not the first page ($expected)"
echo "screenshot: $screenshot"
