// A small host in C++20, linked against an installed libNote: prints the page count of a
// note. It has a config.h of its own, so it includes the library's as <libNote/config.h>
// and the other headers by their plain names.
#include <cstdio>
#include <span>
#include <string>

#include <libNote/config.h>

#include "config.h"
#include "kwdataoperationfile.h"

int main(int argc, char** argv) {
    const std::span<char*> args(argv, static_cast<std::size_t>(argc));
    if (args.size() != 2) return 2;
    const int pages = KwDataOperationFile().fetchTotalPageNumOfNote(args[1]);
    std::printf("\n%s: pages %d\n", HOST_NAME, pages);
    return pages < 0 || kwFileIdenificationTag.empty() ? 1 : 0;
}
