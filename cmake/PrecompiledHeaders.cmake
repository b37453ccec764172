# What every source reads is read once for all targets of the same kind of code. Included after the targets.
# All code is then position-independent, as Qt's own interface asks for on some releases only.
# A source names all the same what it needs: clang-tidy and the other presets read it without these.
option(HALVO_PRECOMPILED "Precompile the headers that most sources need" OFF)
if(NOT HALVO_PRECOMPILED OR NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
    return()
endif()

set(standard_headers
    <algorithm>
    <array>
    <chrono>
    <cmath>
    <cstdint>
    <expected>
    <filesystem>
    <functional>
    <map>
    <memory>
    <optional>
    <string>
    <string_view>
    <utility>
    <vector>)
set(test_headers ${standard_headers} <atomic> <fstream> <sstream> <thread> <gtest/gtest.h>)
set(panel_headers ${standard_headers} <QColor> <QImage> <QObject> <QQuickItem> <QString> <QtQml/qqmlregistration.h>)

function(halvo_precompile headers libraries options) # and the targets that are compiled with those
    foreach(target ${ARGN})
        if(TARGET ${target})
            list(APPEND targets ${target})
        endif()
    endforeach()
    if(NOT targets)
        return()
    endif()
    list(GET targets 0 first)
    set(owner ${first}_headers)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/${owner}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "")
    add_library(${owner} OBJECT ${source})
    target_compile_options(${owner} PRIVATE ${options})
    target_link_libraries(${owner} PRIVATE halvo_options ${libraries})
    target_precompile_headers(${owner} PRIVATE ${headers})
    foreach(target ${targets})
        target_precompile_headers(${target} REUSE_FROM ${owner})
    endforeach()
endfunction()

halvo_precompile("${standard_headers}" "" ""
    halvo_core halvo_loudness halvo_fake halvo_linux_mpris halvo_linux_pipewire halvo_session halvo-audio-device
    halvo_virtual_device halvo_demo_parts halvo_render_parts halvo_bench_parts halvo_qt halvo_qt_media
    halvo_linux_files halvo_linux_process halvo-media-helper halvo_measurement_session halvo-demo halvo-bench)
halvo_precompile("${panel_headers}" Qt6::Quick -DQT_NO_KEYWORDS
    halvo_ui halvo_qt_windows halvo_linux_desktop halvo_offline_parts halvo_virtual_desktop halvo_ui_tests)
halvo_precompile("${test_headers}" GTest::gtest ""
    halvo_linux_audio_tests halvo_macos_parts_tests halvo_unit_tests halvo_application_tests
    halvo_driver_session_tests halvo_media_tests)

# Compiled in another way; with the headers precompiled, GCC 12 also sees overruns in "text" + string in the last.
set_source_files_properties(src/linux/pipewire/PipeWireRenderer.cpp TARGET_DIRECTORY halvo_linux_pipewire
                            PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
set_source_files_properties(tools/render/SampleCoding.cpp TARGET_DIRECTORY halvo_render_parts
                            PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
if(TARGET halvo_application_tests)
    set_source_files_properties(tests/application/ApplicationScene.cpp TARGET_DIRECTORY halvo_application_tests
                                PROPERTIES SKIP_PRECOMPILE_HEADERS ON)
endif()
