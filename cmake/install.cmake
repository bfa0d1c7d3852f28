# Installs the library, its headers under include/libNote, a CMake package
# (find_package(libNote) gives libNote::Note) and a pkg-config file.
include(CMakePackageConfigHelpers)

set(LIBNOTE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/libNote)

install(TARGETS Note EXPORT libNoteTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    PUBLIC_HEADER DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/libNote)
install(EXPORT libNoteTargets NAMESPACE libNote:: DESTINATION ${LIBNOTE_CMAKE_DIR})

configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/libNoteConfig.cmake.in
    ${PROJECT_BINARY_DIR}/libNoteConfig.cmake
    INSTALL_DESTINATION ${LIBNOTE_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/libNoteConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/libNoteConfig.cmake ${PROJECT_BINARY_DIR}/libNoteConfigVersion.cmake
    DESTINATION ${LIBNOTE_CMAKE_DIR})

file(RELATIVE_PATH LIBNOTE_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${CMAKE_CURRENT_LIST_DIR}/libNote.pc.in ${PROJECT_BINARY_DIR}/libNote.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libNote.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
