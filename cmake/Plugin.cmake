# vantoric_plugin(target SOURCES files... USES rooms... [OUTPUT_NAME name]): a plug-in module, name.so (default: the
# target's name). It exports the two entry points and nothing else, and binds its own symbols to itself, so that a host
# with symbols of the same names cannot reach in. One of the sources or rooms defines vantoric::createEffectInstance.
function(vantoric_plugin target)
  cmake_parse_arguments(plugin "" "OUTPUT_NAME" "SOURCES;USES" ${ARGN})
  if(NOT plugin_OUTPUT_NAME)
    set(plugin_OUTPUT_NAME ${target})
  endif()
  add_library(${target} MODULE ${plugin_SOURCES} $<TARGET_OBJECTS:vst2_entry>)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE room_vst2)
  foreach(used ${plugin_USES})
    target_link_libraries(${target} PRIVATE room_${used})
  endforeach()
  if(WIN32)
    # Without a list of exports every symbol would be one.
    set(map ${PROJECT_SOURCE_DIR}/cmake/plugin.def)
    set(suffix .dll)
    target_link_options(${target} PRIVATE ${map} -Wl,--gc-sections)
  else()
    set(map ${PROJECT_SOURCE_DIR}/cmake/plugin.map)
    set(suffix .so)
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic -Wl,-z,defs -Wl,--gc-sections -Wl,--as-needed
      -Wl,--exclude-libs,ALL -Wl,--version-script=${map})
  endif()
  set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX ${suffix} OUTPUT_NAME ${plugin_OUTPUT_NAME}
    LINK_DEPENDS ${map} LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})
endfunction()
