# The icon, manifest and version information that Windows shows for an executable: in
# Explorer, the taskbar, Task Manager and the file's properties.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)
find_program(ICOTOOL icotool REQUIRED)
enable_language(RC)

set(ZELMOR_ICO ${CMAKE_BINARY_DIR}/resources/zelmor.ico)
set(ZELMOR_ICON_SIZES 16 20 24 32 40 48 64 256)

# Renders the drawn application icon at the sizes Windows picks from, the largest kept as PNG.
function(zelmor_add_windows_icon svg)
  set(dir ${CMAKE_BINARY_DIR}/resources/ico)
  set(commands COMMAND ${CMAKE_COMMAND} -E make_directory ${dir})
  set(images)
  foreach(size IN LISTS ZELMOR_ICON_SIZES)
    list(APPEND commands COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -f png -o ${dir}/${size}.png ${svg})
    if(size EQUAL 256)
      list(APPEND images --raw=${dir}/${size}.png)
    else()
      list(APPEND images ${dir}/${size}.png)
    endif()
  endforeach()
  add_custom_command(OUTPUT ${ZELMOR_ICO} ${commands}
    COMMAND ${ICOTOOL} -c -o ${ZELMOR_ICO} ${images}
    DEPENDS ${svg} VERBATIM)
  add_custom_target(zelmor_windows_icon DEPENDS ${ZELMOR_ICO})
endfunction()

# Gives `target` (an executable named like its file) the icon, a manifest and version
# information, with `description` as the name Task Manager shows.
function(zelmor_add_windows_resources target description)
  set(ZELMOR_EXE_NAME ${target})
  set(ZELMOR_EXE_DESCRIPTION ${description})
  set(ZELMOR_MANIFEST ${CMAKE_CURRENT_BINARY_DIR}/${target}.manifest)
  set(rc ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/zelmor.manifest.in ${ZELMOR_MANIFEST} @ONLY)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/zelmor.rc.in ${rc} @ONLY)
  set_source_files_properties(${rc} PROPERTIES OBJECT_DEPENDS "${ZELMOR_ICO};${ZELMOR_MANIFEST}")
  target_sources(${target} PRIVATE ${rc})
  add_dependencies(${target} zelmor_windows_icon)
endfunction()
