# The manual as one page, with its pictures in it, beside the wave banks. Left out where pandoc is missing.
find_program(PANDOC pandoc)
if(NOT PANDOC)
  message(STATUS "The manual is left out: pandoc is not installed")
  return()
endif()
set(manual_folder ${PROJECT_SOURCE_DIR}/docs/manual)
set(manual_page ${CMAKE_BINARY_DIR}/dist-data/Vantoric_data/Manual.html)
file(GLOB manual_chapters CONFIGURE_DEPENDS ${manual_folder}/*.md)
file(GLOB manual_pictures CONFIGURE_DEPENDS ${manual_folder}/pictures/*.png)
add_custom_command(OUTPUT ${manual_page}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/dist-data/Vantoric_data
  COMMAND ${PANDOC} --from markdown-smart --to html5 --self-contained --no-highlight --wrap none --toc --toc-depth 2
          --template page/template.html --css page/manual.css --metadata title=Vantoric --variable version=${PROJECT_VERSION}
          --output ${manual_page} ${manual_chapters}
  DEPENDS ${manual_chapters} ${manual_pictures} ${manual_folder}/page/template.html ${manual_folder}/page/manual.css
  WORKING_DIRECTORY ${manual_folder}
  COMMENT "Making the manual"
  VERBATIM)
add_custom_target(manual DEPENDS ${manual_page})
