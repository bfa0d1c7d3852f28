// A host that builds libNote inside its own project: prints the page count of a note.
#include <cstdio>

#include "kwdataoperationfile.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const int pages = KwDataOperationFile().fetchTotalPageNumOfNote(argv[1]);
    std::printf("\nhost: pages %d\n", pages);
    return pages < 0 ? 1 : 0;
}
