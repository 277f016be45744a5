# Common compile settings for every target of the project.
add_library(quorlen_options INTERFACE)
target_compile_options(quorlen_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
    -Wold-style-cast -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough)
# GCC 12 reports -Wrestrict falsely for "literal" + std::string at -O2 (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(quorlen_options INTERFACE -Wno-restrict)
endif()
if(QUORLEN_WERROR)
    target_compile_options(quorlen_options INTERFACE -Werror)
endif()
if(QUORLEN_SANITIZE)
    # float-cast-overflow: a number from a file too big for its integer; GCC leaves it out of
    # "undefined".
    target_compile_options(quorlen_options INTERFACE
        -fsanitize=address,undefined,float-cast-overflow -fno-omit-frame-pointer
        -fno-sanitize-recover=undefined,float-cast-overflow)
    target_link_options(quorlen_options INTERFACE -fsanitize=address,undefined,float-cast-overflow)
endif()
# Coverage for libFuzzer in every library the fuzz targets link (clang only); the fuzz
# targets themselves link the fuzzer's main (tests/fuzz).
if(QUORLEN_FUZZ)
    target_compile_options(quorlen_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# quorlen_add_library(NAME SOURCES ... DEPENDS ...): one library per source folder, with its
# dependencies spelled out so a cycle between folders is a build error.
function(quorlen_add_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(quorlen_${name} STATIC ${ARG_SOURCES})
    target_include_directories(quorlen_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(quorlen_${name} PUBLIC ${ARG_DEPENDS} PRIVATE quorlen_options)
endfunction()
