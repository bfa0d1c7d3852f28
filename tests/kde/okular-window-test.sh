#!/bin/bash
# Okular opens the sample as a user does, from its command line, on a virtual screen: its
# window's title names the note, and its page view shows the first page as notetool draws it
# (page_area_check). The screenshot is kept as an artifact.
#   okular-window-test.sh <sample.note> <artifacts folder> <page_area_check> <scratch home> [<sanitizers>]
# QT_PLUGIN_PATH and XDG_DATA_DIRS come from the test: the build's generator and note type.
set -euo pipefail
note=$1 artifacts=$2 check=$3 home=$4 sanitizers=${5:-}

if [ -n "$sanitizers" ]; then
    echo "SKIPPED: the generator is built with $sanitizers, whose runtime Okular does not load"
    exit 77
fi

for program in okular xvfb-run xauth xdotool import; do
    if ! command -v "$program" >/dev/null; then
        echo "SKIPPED: $program is not installed (Debian: okular xvfb xauth xdotool imagemagick)"
        exit 77
    fi
done

# A new user's Okular: its settings, caches and recent files in a scratch home.
rm -rf "$home"
mkdir -p "$home" "$artifacts"
export HOME=$home XDG_CONFIG_HOME=$home/config XDG_CACHE_HOME=$home/cache XDG_DATA_HOME=$home/data
export XDG_RUNTIME_DIR=$home/runtime
mkdir -m 700 "$XDG_RUNTIME_DIR"
export NOTE=$note SHOT=$artifacts/okular-window.png CHECK=$check

# Within the virtual screen: Okular started, its window found by the note's name, the screen
# taken until the page view shows the page (Okular draws it when its worker is done) or 30 s
# have passed.
xvfb-run -a -s "-screen 0 1280x1024x24" bash -c '
    set -u
    okular "$NOTE" >"$HOME/okular.log" 2>&1 &
    okular=$!
    trap "kill $okular 2>/dev/null" EXIT
    name=$(basename "$NOTE")
    window=
    for _ in $(seq 60); do
        window=$(xdotool search --name "$name" 2>/dev/null | head -n 1) && [ -n "$window" ] && break
        sleep 0.5
    done
    if [ -z "$window" ]; then
        echo "FAIL: no window named after $name"; cat "$HOME/okular.log"; exit 1
    fi
    title=$(xdotool getwindowname "$window")
    echo "window title: $title"
    case $title in *"$name"*) ;; *) echo "FAIL: the title does not name $name"; exit 1 ;; esac
    eval "$(xdotool getwindowgeometry --shell "$window")"
    for _ in $(seq 30); do
        sleep 1
        import -window root "$SHOT"
        if "$CHECK" "$SHOT" "$X" "$Y" "$WIDTH" "$HEIGHT" "$NOTE"; then exit 0; fi
    done
    echo "FAIL: the page view does not show the first page; see $SHOT"
    exit 1
'
echo "screenshot: $SHOT"
