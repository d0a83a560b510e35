# Compile settings shared by every target, and the helpers that declare a kernel folder and a test program.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release)
endif()

add_library(velmora_settings INTERFACE)
target_include_directories(velmora_settings INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_BINARY_DIR}/generated)
if(MSVC)
    target_compile_options(velmora_settings INTERFACE /W4 /WX /permissive-)
else()
    # Contraction stays off so that results don't depend on the machine's fused operations.
    target_compile_options(velmora_settings INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align -Wold-style-cast -Werror
        -ffp-contract=off $<$<CONFIG:Release>:-O3>)
endif()

# Kernel folders in the order of the floors, lowest first. A folder's objects may use those before it.
set(VELMORA_FOLDERS "" CACHE INTERNAL "kernel folders, lowest floor first")

# velmora_add_folder(name source...): the objects velmora_<name> of one kernel folder.
function(velmora_add_folder name)
    add_library(velmora_${name} OBJECT ${ARGN})
    target_link_libraries(velmora_${name} PUBLIC velmora_settings)
    target_compile_definitions(velmora_${name} PRIVATE VELMORA_BUILDING)
    # The kernel's loops run over 3 or 4 elements. g++ would make vector loops of them before it unrolls them,
    # which costs up to twice the time; long vectors are the business of BLAS.
    target_compile_options(velmora_${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-tree-loop-vectorize>)
    set(VELMORA_FOLDERS ${VELMORA_FOLDERS} velmora_${name} CACHE INTERNAL "")
endfunction()

# velmora_add_test(name FOLDERS folder... SOURCES source...): a GoogleTest program over the objects of the
# folders named; without FOLDERS it links the whole kernel.
function(velmora_add_test name)
    cmake_parse_arguments(ARG "" "" "FOLDERS;SOURCES" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    if(ARG_FOLDERS)
        list(TRANSFORM ARG_FOLDERS PREPEND velmora_)
    else()
        set(ARG_FOLDERS ${VELMORA_FOLDERS})
    endif()
    target_compile_definitions(${name} PRIVATE VELMORA_BUILDING)
    target_link_libraries(${name} PRIVATE ${ARG_FOLDERS} velmora_test_support velmora_settings
                          velmora_external GTest::gmock GTest::gtest_main)
    gtest_discover_tests(${name} WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} DISCOVERY_TIMEOUT 60)
endfunction()
