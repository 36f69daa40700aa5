# Shared settings for every target of the project.

set(FOLIDOC_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual)

# MuPDF ships only static archives, and its pkg-config file misses libraries.
find_library(MUPDF_LIBRARY NAMES libmupdf.a mupdf REQUIRED)
find_library(MUPDF_THIRD_LIBRARY NAMES libmupdf-third.a mupdf-third REQUIRED)
find_path(MUPDF_INCLUDE_DIR mupdf/fitz.h REQUIRED)
add_library(mupdf_static INTERFACE)
target_include_directories(mupdf_static SYSTEM INTERFACE ${MUPDF_INCLUDE_DIR})
target_link_libraries(mupdf_static INTERFACE
    ${MUPDF_LIBRARY} ${MUPDF_THIRD_LIBRARY}
    harfbuzz freetype jbig2dec openjp2 jpeg mujs gumbo z m)

# A library of one layer: its sources are every .cpp/.h in the given folders.
function(folidoc_layer name kind)
    cmake_parse_arguments(ARG "" "" "DIRS;PUBLIC;PRIVATE" ${ARGN})
    set(sources)
    foreach(dir IN LISTS ARG_DIRS)
        file(GLOB_RECURSE found CONFIGURE_DEPENDS
            ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.h
            ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/*.qrc)
        list(APPEND sources ${found})
    endforeach()
    if(NOT sources)
        # A layer that later work fills still exists as a target.
        set(sources ${CMAKE_CURRENT_BINARY_DIR}/${name}_empty.cpp)
        file(WRITE ${sources} "// This layer has no sources yet.\n")
    endif()
    add_library(${name} ${kind} ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_compile_options(${name} PRIVATE ${FOLIDOC_WARNINGS})
    target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
    if(kind STREQUAL "SHARED")
        # Calls inside a library go straight to its own functions, without the dynamic linker
        # looking each one up at start-up; the smaller symbol table is faster to search.
        target_link_options(${name} PRIVATE -Wl,-O1 -Wl,-Bsymbolic-functions)
    endif()
endfunction()
