#!/bin/bash
# notetool's installed bash completion, sourced into a non-interactive bash with COMP_WORDS
# and COMP_CWORD set as bash sets them: it completes commands, options, --format values,
# layer names and notes, offers every option and command --help lists, and bash-completion
# finds it where it is installed.
#
# Usage: completion-test.sh <share-dir> <bin-dir>
set -o pipefail

share=$1 bin=$2
script=$share/bash-completion/completions/notetool
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 1
mkdir notes
touch a.note B.NOTE c.txt
failed=0

# shellcheck source=/dev/null
source "$script" || exit 1

# expect WANT WORD...: the completion of the last word, sorted, is WANT.
expect() {
    local want=$1
    shift
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    _notetool notetool "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
    local got
    got=$(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | tr '\n' ' ')
    got=${got# }
    got=${got% }
    if [[ $got != "$want" ]]; then
        echo "notetool ${*:2}|: got [$got], want [$want]" >&2
        failed=1
    fi
}

expect "convert info render strokes thumbnail" notetool ""
expect "render" notetool re
expect "render" notetool --log lib.log re
expect "pdf png svg" notetool render a.note --format ""
expect "pdf png" notetool render a.note --format p
expect "pdf" notetool render a.note --format = pd  # --format=pd, split at "=" by bash
expect "pdf png svg" notetool --log render convert notes --format ""
expect "json svg" notetool strokes a.note --format ""
expect "BGLAYER LAYER1 LAYER2 LAYER3 MAINLAYER" notetool render a.note --layers ""
expect "MAINLAYER,LAYER1 MAINLAYER,LAYER2 MAINLAYER,LAYER3" notetool render a.note --layers MAINLAYER,LA
expect "--format" notetool render --form
expect "B.NOTE a.note notes" notetool render ""
expect "B.NOTE a.note notes" notetool convert a.note ""
expect "" notetool render a.note --pages ""
expect "B.NOTE a.note c.txt notes" notetool render a.note -o ""
# The thumbnailer's first argument is a note, its second the PNG, any file.
expect "B.NOTE a.note notes" notetool thumbnail -s 128 ""
expect "B.NOTE a.note c.txt notes" notetool thumbnail -s 128 a.note ""

# Every command and option --help lists is offered, and nothing else.
listed() {  # SECTION [COMMAND]: the names --help lists under "SECTION:", at the start of a line
    "$bin/notetool" ${2:+"$2"} --help | awk -v section="$1:" '$0 == section {on = 1; next} /^$/ {on = 0} on && /^  [^ ]/ {print $1}' |
        tr ',' '\n' | LC_ALL=C sort | tr '\n' ' ' | sed 's/ $//'
}
expect "$(listed Subcommands)" notetool ""
for command in "" info render strokes convert thumbnail; do
    words=(notetool ${command:+"$command"})
    expect "$(listed Options "$command")" "${words[@]}" -
done

# bash-completion loads it on demand from the folder it is installed in.
if [[ -r /usr/share/bash-completion/bash_completion ]]; then
    loaded=$(XDG_DATA_DIRS=$share bash -c '. /usr/share/bash-completion/bash_completion; __load_completion notetool && complete -p notetool' 2>&1)
    [[ $loaded == "complete -F _notetool notetool" ]] || { echo "bash-completion did not load it: $loaded" >&2; failed=1; }
else
    echo "bash-completion is not installed: its loading is not checked" >&2
fi
exit "$failed"
