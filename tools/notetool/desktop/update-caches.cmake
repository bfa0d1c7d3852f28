# Run by the install: the desktop reads the caches of the file types and of the types each
# application opens, not the files installed beside them, so the caches are renewed with
# their tools when these are on the PATH. A staged install (DESTDIR, as packages are built)
# leaves that to the package's own triggers, and a tool that is missing or fails never fails
# the install: the files are in place either way, for the next renewal to take in.
if(NOT "$ENV{DESTDIR}" STREQUAL "")
    message(STATUS "Staged install: the desktop's caches are left to the package")
    return()
endif()
foreach(tool_and_folder IN ITEMS "update-mime-database;mime" "update-desktop-database;applications")
    list(GET tool_and_folder 0 tool)
    list(GET tool_and_folder 1 folder)
    set(dir "${CMAKE_INSTALL_PREFIX}/${NOTETOOL_DATADIR}/${folder}")
    if(NOT IS_DIRECTORY "${dir}")  # an install of one component (evince) may have none
        continue()
    endif()
    # A variable of each tool's own: find_program keeps whatever a variable already holds, and
    # this script runs inside cmake_install.cmake, which sets no policies (so no NO_CACHE).
    find_program(${tool}_program NAMES ${tool})
    if(NOT ${tool}_program)
        message(STATUS "${tool} is not installed: ${dir} is not cached")
        continue()
    endif()
    # Its notes (a prefix outside XDG_DATA_DIRS) are only worth showing when it fails.
    execute_process(COMMAND ${${tool}_program} "${dir}" RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
    if(result EQUAL 0)
        message(STATUS "Updated the cache of ${dir}")
    else()
        message(WARNING "${tool} ${dir} failed (${result}): ${said}The installed files are in place all the same")
    endif()
endforeach()
