# vantoric_module(target SOURCES files... USES rooms... EXPORTS symbols... NAME file FOLDER folder): a plug-in module. It exports the
# named symbols and nothing else, and binds its own symbols to itself, so that a host with symbols of the same names cannot reach
# in. NAME is the file with its ending.
function(vantoric_module target)
  cmake_parse_arguments(module "" "NAME;FOLDER" "SOURCES;USES;EXPORTS" ${ARGN})
  add_library(${target} MODULE ${module_SOURCES})
  vantoric_headers(${target})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  foreach(used ${module_USES})
    target_link_libraries(${target} PRIVATE room_${used})
  endforeach()
  if(WIN32)
    # Without a list of exports every symbol would be one.
    list(JOIN module_EXPORTS "\n" exported)
    set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
    file(CONFIGURE OUTPUT ${map} CONTENT "EXPORTS\n${exported}\n" @ONLY)
    target_link_options(${target} PRIVATE ${map} -Wl,--gc-sections)
    string(REGEX REPLACE "\\.so$" ".dll" module_NAME ${module_NAME})
  else()
    list(JOIN module_EXPORTS "; " exported)
    set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
    file(CONFIGURE OUTPUT ${map} CONTENT "{ global: ${exported}; local: *; };\n" @ONLY)
    # A fuzzer's modules find what watches them in the program that loads them.
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic $<$<NOT:$<BOOL:${VANTORIC_FUZZ}>>:-Wl,-z,defs> -Wl,--gc-sections
      -Wl,--as-needed -Wl,--exclude-libs,ALL -Wl,--version-script=${map})
  endif()
  set_target_properties(${target} PROPERTIES PREFIX "" SUFFIX "" OUTPUT_NAME ${module_NAME}
    LINK_DEPENDS ${map} LIBRARY_OUTPUT_DIRECTORY ${module_FOLDER})
endfunction()

# vantoric_plugin(target SOURCES files... USES rooms... [OUTPUT_NAME name]): a VST 2.4 module, name.so (default: the
# target's name). One of the sources or rooms defines vantoric::createEffectInstance.
function(vantoric_plugin target)
  cmake_parse_arguments(plugin "" "OUTPUT_NAME" "SOURCES;USES" ${ARGN})
  if(NOT plugin_OUTPUT_NAME)
    set(plugin_OUTPUT_NAME ${target})
  endif()
  vantoric_module(${target} SOURCES ${plugin_SOURCES} $<TARGET_OBJECTS:vst2_entry> USES vst2 ${plugin_USES}
    EXPORTS VSTPluginMain main NAME ${plugin_OUTPUT_NAME}.so FOLDER ${CMAKE_BINARY_DIR})
endfunction()
