# Warnings and sanitizers for every target of the project; link against halvo_options.
add_library(halvo_options INTERFACE)
target_include_directories(halvo_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(
    halvo_options
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              -Wshadow
              -Wconversion
              -Wsign-conversion
              -Wdouble-promotion
              -Wold-style-cast
              -Wnon-virtual-dtor
              -Woverloaded-virtual
              $<$<BOOL:${HALVO_WERROR}>:-Werror>)
# PipeWire's own flags define it; where all sources have it, they can share precompiled headers.
target_compile_definitions(halvo_options INTERFACE $<$<PLATFORM_ID:Linux>:_REENTRANT>)
# Optimised, GCC 12 sees an overlap in its library's own "text" + string, where none is (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(halvo_options INTERFACE $<$<CONFIG:Release>:-Wno-restrict>)
endif()
# Where sources are joined, GCC takes each for a header, whose types must not reach into an unnamed namespace.
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(halvo_options INTERFACE -Wno-subobject-linkage)
endif()
if(HALVO_SANITIZE)
    target_compile_options(halvo_options INTERFACE -fsanitize=${HALVO_SANITIZE} -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=all)
    target_link_options(halvo_options INTERFACE -fsanitize=${HALVO_SANITIZE})
endif()

# The render path: reproducible to the bit on every processor, vectorised, never "fast" mathematics.
set(HALVO_AUDIO_FLAGS -O3 -ffp-contract=off -fno-trapping-math)

# Only what a program uses: a room that offers Qt's part of something does not make a small program load Qt.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_link_options(-Wl,--as-needed)
endif()
