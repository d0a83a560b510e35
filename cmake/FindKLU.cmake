# Finds KLU, the sparse LU factorisation of SuiteSparse, with the ordering libraries that it stands on.
#
# Imported target: SuiteSparse::KLU. Variables: KLU_FOUND, KLU_INCLUDE_DIR, KLU_LIBRARY, KLU_VERSION.

find_path(KLU_INCLUDE_DIR klu.h PATH_SUFFIXES suitesparse)
find_library(KLU_LIBRARY klu)
set(_klu_parts AMD COLAMD BTF SUITESPARSECONFIG)
set(_klu_required KLU_LIBRARY KLU_INCLUDE_DIR)
foreach(part IN LISTS _klu_parts)
    string(TOLOWER ${part} _klu_name)
    find_library(KLU_${part}_LIBRARY ${_klu_name})
    mark_as_advanced(KLU_${part}_LIBRARY)
    list(APPEND _klu_required KLU_${part}_LIBRARY)
endforeach()
mark_as_advanced(KLU_INCLUDE_DIR KLU_LIBRARY)

if(KLU_INCLUDE_DIR)
    file(STRINGS ${KLU_INCLUDE_DIR}/klu.h _klu_lines REGEX "#define KLU_(MAIN|SUB|SUBSUB)_VERSION +[0-9]+")
    string(REGEX REPLACE "[^0-9;]" "" _klu_numbers "${_klu_lines}")
    string(REPLACE ";" "." KLU_VERSION "${_klu_numbers}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(KLU REQUIRED_VARS ${_klu_required} VERSION_VAR KLU_VERSION)

if(KLU_FOUND AND NOT TARGET SuiteSparse::KLU)
    add_library(SuiteSparse::KLU UNKNOWN IMPORTED)
    set_target_properties(SuiteSparse::KLU PROPERTIES
        IMPORTED_LOCATION "${KLU_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${KLU_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES "${KLU_BTF_LIBRARY};${KLU_AMD_LIBRARY};${KLU_COLAMD_LIBRARY};${KLU_SUITESPARSECONFIG_LIBRARY}")
endif()
