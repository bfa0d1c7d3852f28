# Finds what KDE's plugins need: Okular's development files for the generator, KIO's for the
# thumbnailer. Sets LIBNOTE_OKULAR_FOUND and LIBNOTE_KIO_FOUND, and LIBNOTE_QT_PLUGIN_DIR,
# the plugin folder under the prefix.
#
# They are looked for only when libNote is the project being built, and with the tools: a
# project that takes libNote in as a subproject wants the library, not viewer plugins.
set(LIBNOTE_OKULAR_FOUND OFF)
set(LIBNOTE_KIO_FOUND OFF)
if(LIBNOTE_BUILD_TOOLS AND LIBNOTE_TOP_LEVEL)
    find_package(Okular5 QUIET)
    find_package(KF5KIO QUIET)
    set(LIBNOTE_OKULAR_FOUND ${Okular5_FOUND})
    set(LIBNOTE_KIO_FOUND ${KF5KIO_FOUND})
endif()

# Where Qt looks for plugins of a /usr install, lib/<multiarch>/qt5/plugins on Debian, so that
# an install to /usr, or a package of one, lands where Okular and KIO look. Under another
# prefix it is lib/qt5/plugins, which QT_PLUGIN_PATH makes visible.
set(LIBNOTE_QT_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/qt5/plugins)
