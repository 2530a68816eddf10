# dist/: the instrument in all formats with the one set of data that they share, the programs and the songs.
set(dist ${PROJECT_SOURCE_DIR}/dist)
set(made ${CMAKE_BINARY_DIR}/dist-data)
set(programs vantoric-render vantoric-patch vantoric-waves vantoric-cycles vantoric-samples vantoric-song vantoric)
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
foreach(content patches templates songs wavetables manual)
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

# The other formats lie beside the VST 2.4 module, and find the data from within their bundles.
foreach(format clap lv2 vst3)
  if(TARGET Vantoric_${format})
    add_dependencies(dist Vantoric_${format})
    if(format STREQUAL "clap")
      add_custom_command(TARGET dist POST_BUILD COMMAND ${CMAKE_COMMAND} -E copy_if_different ${made}/Vantoric.clap ${dist}/Vantoric VERBATIM)
    else()
      add_custom_command(TARGET dist POST_BUILD COMMAND ${CMAKE_COMMAND} -E copy_directory ${made}/Vantoric.${format}
        ${dist}/Vantoric/Vantoric.${format} VERBATIM)
    endif()
  endif()
endforeach()

# The fonts of the window's design, where the system has them, beside the plug-in: so that it looks the same on systems that
# don't. The text renderer finds them in Vantoric_data/Fonts.
if(VANTORIC_WINDOW)
  set(font_files)
  foreach(font inter/Inter-Regular inter/Inter-Medium inter/Inter-SemiBold sora/Sora-SemiBold)
    find_file(VANTORIC_FONT_${font} ${font}.otf PATHS /usr/share/fonts/opentype NO_DEFAULT_PATH)
    if(VANTORIC_FONT_${font})
      list(APPEND font_files ${VANTORIC_FONT_${font}})
    endif()
  endforeach()
  foreach(package inter sora)
    if(font_files AND EXISTS /usr/share/doc/fonts-${package}/copyright)
      add_custom_command(TARGET dist POST_BUILD COMMAND ${CMAKE_COMMAND} -E make_directory ${dist}/Vantoric/Vantoric_data/Fonts
        COMMAND ${CMAKE_COMMAND} -E copy_if_different /usr/share/doc/fonts-${package}/copyright
                ${dist}/Vantoric/Vantoric_data/Fonts/LICENSE-${package}.txt VERBATIM)
    endif()
  endforeach()
  if(font_files)
    add_custom_command(TARGET dist POST_BUILD COMMAND ${CMAKE_COMMAND} -E make_directory ${dist}/Vantoric/Vantoric_data/Fonts
      COMMAND ${CMAKE_COMMAND} -E copy_if_different ${font_files} ${dist}/Vantoric/Vantoric_data/Fonts VERBATIM)
  endif()
endif()
