#ifndef LIBNOTE_EXPORT_H
#define LIBNOTE_EXPORT_H

// libNote is built with every name hidden: only what is marked LIBNOTE_API here in the
// public headers is exported from libNote.so. Everything else stays inside the library, so
// that no host can take over the library's own calls by defining a name of the same kind.
#define LIBNOTE_API __attribute__((visibility("default")))

#endif
