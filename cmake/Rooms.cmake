# How the house is put together: one static library a room, linked only to the rooms below it, so that an
# include that goes up a floor fails to link; and one archive of floors 0 to 3.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})

# The same samples at every optimisation level and on every x86-64 machine: no contraction into fused
# multiply-adds, never fast-math.
# No unique symbols: one would keep a module in memory after its host has let go of it.
add_compile_options(-ffp-contract=off $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique> -Wall -Wextra -Wshadow -Wno-psabi)
add_compile_definitions($<$<CONFIG:Release>:NDEBUG>)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()
find_program(MOLD mold)
if(MOLD AND NOT WIN32)
  add_link_options(-fuse-ld=mold)
endif()
find_package(Threads REQUIRED)
if(WIN32)
  # A module brings all it needs along. windows.h without its min and max; M_PI as elsewhere.
  add_compile_definitions(NOMINMAX WIN32_LEAN_AND_MEAN _USE_MATH_DEFINES _WIN32_WINNT=0x0A00)
  add_link_options(-static)
endif()

# vantoric_room(name SOURCES files... USES rooms...)
function(vantoric_room name)
  cmake_parse_arguments(room "" "" "SOURCES;USES" ${ARGN})
  set(target room_${name})
  if(room_SOURCES)
    add_library(${target} STATIC ${room_SOURCES})
    set(scope PUBLIC)
  else()
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_include_directories(${target} ${scope} ${PROJECT_SOURCE_DIR})
  foreach(used ${room_USES})
    target_link_libraries(${target} ${scope} room_${used})
  endforeach()
  if(name STREQUAL "platform")
    target_link_libraries(${target} ${scope} Threads::Threads ${CMAKE_DL_LIBS})
  endif()
endfunction()

# libvantoric_core.a: the objects of the named rooms.
function(vantoric_core)
  set(objects)
  foreach(name ${ARGN})
    get_target_property(type room_${name} TYPE)
    if(NOT type STREQUAL "INTERFACE_LIBRARY")
      list(APPEND objects $<TARGET_OBJECTS:room_${name}>)
    endif()
  endforeach()
  add_library(vantoric_core STATIC ${objects})
  target_include_directories(vantoric_core PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(vantoric_core PUBLIC Threads::Threads ${CMAKE_DL_LIBS})
  set_target_properties(vantoric_core PROPERTIES LINKER_LANGUAGE CXX)
endfunction()

# vantoric_quick_build(target): for what tests, which need not be fast and is most of what there is to build: half the time. The
# sanitizers go on to watch the rooms; what tests them is watched for its memory alone.
function(vantoric_quick_build target)
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1> $<$<CONFIG:Sanitized>:-fno-sanitize=undefined>)
endfunction()

# vantoric_command_line(target): its main.cpp reads a command line, by a library that takes the sanitizers half a minute a file.
function(vantoric_command_line target)
  if(CMAKE_BUILD_TYPE STREQUAL "Sanitized")
    set_source_files_properties(main.cpp TARGET_DIRECTORY ${target} PROPERTIES COMPILE_OPTIONS "-fno-sanitize=all;-g0")
  endif()
endfunction()

# vantoric_test(room SOURCES files... [USES rooms...]): one GoogleTest program a room.
function(vantoric_test name)
  cmake_parse_arguments(test "" "" "SOURCES;USES" ${ARGN})
  add_executable(test-${name} ${test_SOURCES})
  target_link_libraries(test-${name} PRIVATE GTest::gtest GTest::gtest_main)
  if(NOT test_USES)
    set(test_USES ${name})
  endif()
  foreach(used ${test_USES})
    target_link_libraries(test-${name} PRIVATE room_${used})
  endforeach()
  target_precompile_headers(test-${name} PRIVATE <gtest/gtest.h>)
  vantoric_quick_build(test-${name})
  add_test(NAME ${name} COMMAND test-${name})
endfunction()
