#!/bin/bash
# Compares libNote.so's interface with the one checked in beside this script:
#   symbols  the exported dynamic symbols, demangled, against exported-symbols.txt: no
#            private helper may leak out and no name of the interface may go missing;
#   abi      the whole binary interface (functions, variables and the layout of every type
#            they use, from the debug information) against the abidw baseline libNote.abi,
#            so that an unintended change of a signature or a public type fails.
# After a deliberate change of the interface, --update rewrites the checked-in file; commit
# it with the change.
#
# Usage: check-interface.sh symbols|abi <libNote.so> [--update]
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
include=$here/../../include
what=$1 library=$2 update=${3:-}

exported_symbols() {
    nm -D --defined-only "$library" | awk '{ print $3 }' | c++filt | LC_ALL=C sort
}


case $what in
symbols)
    list=$here/exported-symbols.txt
    if [[ $update == --update ]]; then
        exported_symbols >"$list"
        echo "wrote $list"
    elif ! diff -u "$list" <(exported_symbols); then
        echo "libNote.so exports other symbols than $list (- checked in, + built)." >&2
        echo "If the change is meant, run: $0 symbols $library --update" >&2
        exit 1
    fi
    ;;
abi)
    baseline=$here/libNote.abi
    if [[ $update == --update ]]; then
        # Only the types of the public headers are kept. Paths and source locations say
        # nothing about the interface and differ between checkouts, so they are left out.
        abidw --headers-dir "$include" --drop-private-types --drop-undefined-syms --no-corpus-path \
            --no-comp-dir-path --no-show-locs --type-id-style hash --out-file "$baseline" "$library"
        echo "wrote $baseline"
    elif ! abidiff --no-show-locs "$baseline" "$library"; then
        echo "libNote.so's binary interface differs from $baseline." >&2
        echo "If the change is meant, run: $0 abi $library --update" >&2
        exit 1
    fi
    ;;
*)
    echo "usage: $0 symbols|abi <libNote.so> [--update]" >&2
    exit 2
    ;;
esac
