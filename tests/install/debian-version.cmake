# Fails unless the newest entry of the Debian changelog is the project's version, alone (the
# package is native) or with a Debian revision.
file(STRINGS ${CHANGELOG} newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^[a-z0-9.+-]+ \\(([0-9.]+)(-[^)]+)?\\) ")
    message(FATAL_ERROR "${CHANGELOG}: no version in its first line: ${newest}")
endif()
if(NOT CMAKE_MATCH_1 STREQUAL VERSION)
    message(FATAL_ERROR "${CHANGELOG} says ${CMAKE_MATCH_1}, the project is ${VERSION}: add a changelog entry (dch -v ${VERSION})")
endif()
