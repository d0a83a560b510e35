# Finds SPQR, the rank-revealing sparse QR factorisation of SuiteSparse, with CHOLMOD, whose matrices it takes.
#
# Imported target: SuiteSparse::SPQR. Variables: SPQR_FOUND, SPQR_INCLUDE_DIR, SPQR_LIBRARY, SPQR_VERSION.

find_path(SPQR_INCLUDE_DIR SuiteSparseQR_C.h PATH_SUFFIXES suitesparse)
find_library(SPQR_LIBRARY spqr)
find_library(SPQR_CHOLMOD_LIBRARY cholmod)
find_library(SPQR_SUITESPARSECONFIG_LIBRARY suitesparseconfig)
mark_as_advanced(SPQR_INCLUDE_DIR SPQR_LIBRARY SPQR_CHOLMOD_LIBRARY SPQR_SUITESPARSECONFIG_LIBRARY)

if(SPQR_INCLUDE_DIR)
    file(STRINGS ${SPQR_INCLUDE_DIR}/SuiteSparseQR_definitions.h _spqr_lines
         REGEX "#define SPQR_(MAIN|SUB|SUBSUB)_VERSION +[0-9]+")
    string(REGEX REPLACE "[^0-9;]" "" _spqr_numbers "${_spqr_lines}")
    string(REPLACE ";" "." SPQR_VERSION "${_spqr_numbers}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(SPQR
    REQUIRED_VARS SPQR_LIBRARY SPQR_INCLUDE_DIR SPQR_CHOLMOD_LIBRARY SPQR_SUITESPARSECONFIG_LIBRARY
    VERSION_VAR SPQR_VERSION)

if(SPQR_FOUND AND NOT TARGET SuiteSparse::SPQR)
    add_library(SuiteSparse::SPQR UNKNOWN IMPORTED)
    set_target_properties(SuiteSparse::SPQR PROPERTIES
        IMPORTED_LOCATION "${SPQR_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${SPQR_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES "${SPQR_CHOLMOD_LIBRARY};${SPQR_SUITESPARSECONFIG_LIBRARY}")
endif()
