# Script: writes OUTPUT with the version and the date and id of the commit of SOURCE_DIR.
cmake_minimum_required(VERSION 3.25)

set(date "1970-01-01")
set(id "0000000")
find_program(GIT git)
if(GIT)
    # A repository further up, into which an archive of the sources was unpacked, isn't the kernel's.
    cmake_path(GET SOURCE_DIR PARENT_PATH parent)
    set(ENV{GIT_CEILING_DIRECTORIES} ${parent})
    execute_process(COMMAND ${GIT} log -1 --format=%cs WORKING_DIRECTORY ${SOURCE_DIR}
                    OUTPUT_VARIABLE gitDate OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE failed)
    execute_process(COMMAND ${GIT} rev-parse HEAD WORKING_DIRECTORY ${SOURCE_DIR}
                    OUTPUT_VARIABLE gitId OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(NOT failed AND gitId)
        set(date ${gitDate})
        string(SUBSTRING ${gitId} 0 7 id)
    endif()
endif()
set(text "#include \"velmora/platform/Version.h\"

namespace velmora {

const char* getVersionText() { return \"${VERSION}\"; }
const char* getBuildDate() { return \"${date}\"; }
const char* getBuildId() { return \"${id}\"; }

} // namespace velmora
")
set(present "")
if(EXISTS ${OUTPUT})
    file(READ ${OUTPUT} present)
endif()
if(NOT present STREQUAL text)
    file(WRITE ${OUTPUT} "${text}")
endif()
