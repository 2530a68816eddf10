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
  # Headers compiled ahead are part of what is compared only if it is told that nothing else about them changes.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE})
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

# The headers of the language that most sources read, half of what it takes to compile one: compiled once for what goes into
# libraries and modules, and once, with those of the test framework, for the tests. Other compilers than GCC, and the one for
# Windows, read each source as it stands, which proves that it includes what it needs.
set(common_headers <algorithm> <array> <atomic> <bit> <chrono> <cmath> <cstdint> <cstring> <experimental/simd> <filesystem> <functional>
  <map> <memory> <mutex> <optional> <span> <string> <string_view> <thread> <utility> <vector>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT WIN32)
  set(PRECOMPILES ON)
  add_compile_options(-pthread)  # some packages ask for it, and one setting has to fit all
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/headers.cpp CONTENT "")
  add_library(headers OBJECT ${CMAKE_BINARY_DIR}/headers.cpp)
  target_precompile_headers(headers PRIVATE ${common_headers})
endif()

# vantoric_headers(target [headers...]): a library or module that reads the common headers, and those of its own.
function(vantoric_headers target)
  if(PRECOMPILES AND ARGN)
    target_precompile_headers(${target} PRIVATE ${common_headers} ${ARGN})
  elseif(PRECOMPILES)
    target_precompile_headers(${target} REUSE_FROM headers)
  endif()
endfunction()

# vantoric_own_flags(flags SOURCES files...): sources of this folder with flags of their own, which headers compiled without do not fit.
function(vantoric_own_flags flags)
  cmake_parse_arguments(own "" "" "SOURCES" ${ARGN})
  set_property(SOURCE ${own_SOURCES} APPEND PROPERTY COMPILE_OPTIONS ${flags})
  set_property(SOURCE ${own_SOURCES} PROPERTY SKIP_PRECOMPILE_HEADERS ON)
endfunction()

# vantoric_room(name SOURCES files... USES rooms... [HEADERS headers...])
function(vantoric_room name)
  cmake_parse_arguments(room "" "" "SOURCES;USES;HEADERS" ${ARGN})
  set(target room_${name})
  if(room_SOURCES)
    add_library(${target} STATIC ${room_SOURCES})
    vantoric_headers(${target} ${room_HEADERS})
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
    vantoric_own_flags("-fno-sanitize=all;-g0" SOURCES main.cpp)
  endif()
endfunction()

# vantoric_test_headers(target): a test program, built quickly, that reads the common headers and those of the test framework.
function(vantoric_test_headers target)
  if(NOT PRECOMPILES)
    return()
  endif()
  if(NOT TARGET test_headers)
    add_library(test_headers OBJECT ${CMAKE_BINARY_DIR}/headers.cpp)
    set_target_properties(test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(test_headers PRIVATE -fPIE)
    target_link_libraries(test_headers PRIVATE GTest::gtest)
    vantoric_quick_build(test_headers)
    target_precompile_headers(test_headers PRIVATE <gtest/gtest.h> ${common_headers})
  endif()
  target_precompile_headers(${target} REUSE_FROM test_headers)
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
  vantoric_quick_build(test-${name})
  vantoric_test_headers(test-${name})
  add_test(NAME ${name} COMMAND test-${name})
endfunction()
