#ifndef HOST_CONFIG_H
#define HOST_CONFIG_H

// The host's own configuration header. Its name is libNote's config.h's too, so the host
// names the library's header by its folder: <libNote/config.h>.
#define HOST_NAME "host"

#endif
