# Finds what the Python package needs: an interpreter with NumPy, its headers, and pybind11.
# Sets LIBNOTE_PYTHON_FOUND, and LIBNOTE_PYTHON_SITE_PACKAGES to where the interpreter puts
# packages, relative to any prefix.
#
# Debian's pybind11 and NumPy belong to the system interpreter, while the python3 that comes
# first on PATH may be another one (pyenv, a virtual environment) without NumPy. Unless
# Python_EXECUTABLE is given, the first of these that can import NumPy is taken: python3 on
# PATH (so that a virtual environment made with the system's packages is honoured), then the
# system's own.
if(NOT DEFINED Python_EXECUTABLE)
    find_program(LIBNOTE_PATH_PYTHON NAMES python3 NO_CACHE)
    foreach(candidate IN ITEMS ${LIBNOTE_PATH_PYTHON} /usr/bin/python3)
        execute_process(COMMAND ${candidate} -c "import numpy"
            RESULT_VARIABLE numpy_missing OUTPUT_QUIET ERROR_QUIET)
        if(numpy_missing EQUAL 0)
            set(Python_EXECUTABLE ${candidate})
            break()
        endif()
    endforeach()
endif()

set(LIBNOTE_PYTHON_FOUND OFF)
if(DEFINED Python_EXECUTABLE)
    find_package(Python 3.7 COMPONENTS Interpreter Development.Module)
    if(Python_FOUND)
        find_package(pybind11 2.6 CONFIG QUIET)
        if(pybind11_FOUND)
            set(LIBNOTE_PYTHON_FOUND ON)
        endif()
        # As the interpreter's own layout names it (lib/python3.X/site-packages).
        execute_process(
            COMMAND ${Python_EXECUTABLE} -c
                "import sysconfig; print(sysconfig.get_path('platlib', 'posix_prefix', {'base': '', 'platbase': ''}).lstrip('/'))"
            OUTPUT_VARIABLE LIBNOTE_PYTHON_SITE_PACKAGES OUTPUT_STRIP_TRAILING_WHITESPACE)
    endif()
endif()
