# dist/: the instrument as it is copied to a user's VST folder, the programs and the songs.
set(dist ${PROJECT_SOURCE_DIR}/dist)
set(made ${CMAKE_BINARY_DIR}/dist-data)
set(programs vantoric-render vantoric-patch vantoric-waves vantoric-cycles vantoric-song)
set(program_files)
foreach(program ${programs})
  if(TARGET ${program})
    list(APPEND program_files $<TARGET_FILE:${program}>)
  endif()
endforeach()

add_custom_target(dist
  COMMAND ${CMAKE_COMMAND} -E make_directory ${dist}/bin ${dist}/songs ${dist}/Vantoric/Vantoric_data ${dist}/Vantoric/Vantoric_sounds/User
          ${dist}/Vantoric/Vantoric_sounds/Favourites ${dist}/Vantoric/Vantoric_wavetables
  COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:Vantoric> ${dist}/Vantoric
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${made}/Vantoric_data ${dist}/Vantoric/Vantoric_data
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${program_files} ${dist}/bin
  COMMENT "Laying out dist/"
  VERBATIM)
add_dependencies(dist Vantoric waves)
foreach(program ${programs})
  if(TARGET ${program})
    add_dependencies(dist ${program})
  endif()
endforeach()
foreach(content patches templates songs wavetables)
  if(TARGET ${content})
    add_dependencies(dist ${content})
  endif()
endforeach()
if(TARGET patches)
  add_custom_command(TARGET dist POST_BUILD COMMAND ${CMAKE_COMMAND} -E copy_directory ${made}/Vantoric_sounds ${dist}/Vantoric/Vantoric_sounds VERBATIM)
endif()
if(TARGET songs)
  add_custom_command(TARGET dist POST_BUILD COMMAND ${CMAKE_COMMAND} -E copy_directory ${made}/songs ${dist}/songs VERBATIM)
endif()
if(TARGET wavetables)
  add_custom_command(TARGET dist POST_BUILD COMMAND ${CMAKE_COMMAND} -E copy_directory ${made}/Vantoric_wavetables ${dist}/Vantoric/Vantoric_wavetables VERBATIM)
endif()
