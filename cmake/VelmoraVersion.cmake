# Version.cpp is written anew when the commit changes, and only then, so that nothing else is rebuilt for it.
set(VELMORA_VERSION_SOURCE ${PROJECT_BINARY_DIR}/generated/Version.cpp)
add_custom_target(velmora_version
    COMMAND ${CMAKE_COMMAND} -DSOURCE_DIR=${PROJECT_SOURCE_DIR} -DVERSION=${PROJECT_VERSION}
            -DOUTPUT=${VELMORA_VERSION_SOURCE} -P ${PROJECT_SOURCE_DIR}/cmake/WriteVersion.cmake
    BYPRODUCTS ${VELMORA_VERSION_SOURCE}
    COMMENT "Looking up the commit")
