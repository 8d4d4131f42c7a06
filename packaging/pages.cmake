# The pages as they are installed, for a tree PREFIX/share/doc/qor with the headers in PREFIX/include,
# the data in PREFIX/share/qor and the examples in PREFIX/share/doc/qor-dev: links to what is installed
# elsewhere lead there, links to sources become their words.
#
# A page is read and changed when CMake configures; a change of one makes it configure again.

# qor_make_page(PAGE FOLDER): PAGE is relative to the source tree, and will be to FOLDER.
function(qor_make_page page folder)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${page})
  file(READ ${PROJECT_SOURCE_DIR}/${page} text)
  # From the page up to the top of the tree: "../" for each folder in its path.
  get_filename_component(up ${page} DIRECTORY)
  string(REGEX REPLACE "[^/]+/?" "../" up "${up}")
  string(REPLACE "." "\\." up_here "${up}")
  # The top of the installed pages is share/doc/qor.
  string(REGEX REPLACE
    "\\]\\(${up_here}data/((events|monitoring|prometheus|grafana|hosts)[^)]*|[A-Za-z]+\\.[A-Za-z.]+)\\)"
    "](${up}../../qor/\\1)" text "${text}")
  string(REGEX REPLACE "\\]\\(${up_here}src/plugin/(ComLib|ItemDisp|MngSrv_QorLibIF)\\.h\\)"
    "](${up}../../../include/qor/\\1.h)" text "${text}")
  string(REGEX REPLACE "\\]\\(${up_here}examples([^)]*)\\)"
    "](${up}../qor-dev/examples\\1)" text "${text}")
  set(sources "(CONTRIBUTING\\.md|(apps|bench|cmake|data|examples|packaging|scripts|src|tests)/)")
  string(REGEX REPLACE "\\[([^]]*)\\]\\(${up_here}${sources}[^)]*\\)" "\\1" text "${text}")
  file(CONFIGURE OUTPUT ${folder}/${page} CONTENT "@text@" @ONLY)
endfunction()

# qor_make_pages(FOLDER)
function(qor_make_pages folder)
  file(GLOB_RECURSE files CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}
    ${PROJECT_SOURCE_DIR}/docs/*)
  file(REMOVE_RECURSE ${folder})
  foreach(file IN LISTS files ITEMS README.md CHANGELOG.md)
    if(file MATCHES "\\.md$")
      qor_make_page(${file} ${folder})
    else()
      configure_file(${PROJECT_SOURCE_DIR}/${file} ${folder}/${file} COPYONLY)
    endif()
  endforeach()
endfunction()
