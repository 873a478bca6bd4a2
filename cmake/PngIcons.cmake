# The Windows toolchain has no SVG image plugin. Each SVG icon of the resource file is rendered
# to a PNG at twice its size on the build host and kept under its .svg name, so that the code
# and the style sheets name the same resources on both systems; Qt reads the image by content.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)

# Sets out_var to the compiled resource source, which depends on each rendered image.
function(zelmor_png_icon_resources source_qrc out_var)
  get_filename_component(source_dir ${source_qrc} DIRECTORY)
  set(render_dir ${CMAKE_CURRENT_BINARY_DIR}/png-icons)
  file(READ ${source_qrc} qrc)
  string(REGEX MATCHALL "<file alias=\"[^\"]+\\.svg\">[^<]+</file>" entries "${qrc}")
  foreach(entry IN LISTS entries)
    string(REGEX REPLACE ".*>([^<]+)</file>" "\\1" relative "${entry}")
    set(svg ${source_dir}/${relative})
    set(png ${render_dir}/${relative}.png)
    get_filename_component(png_dir ${png} DIRECTORY)
    add_custom_command(OUTPUT ${png}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${png_dir}
      COMMAND ${RSVG_CONVERT} --zoom 2 --format png --output ${png} ${svg}
      DEPENDS ${svg} VERBATIM)
    string(REPLACE ">${relative}</file>" ">${png}</file>" qrc "${qrc}")
  endforeach()
  # The other files stay where they are.
  string(REPLACE ">icons/" ">${source_dir}/icons/" qrc "${qrc}")
  # Written now, so that the resource compiler's rule finds the images it depends on.
  set(out_qrc ${render_dir}/icons.qrc)
  file(WRITE ${out_qrc} "${qrc}")
  qt6_add_resources(sources ${out_qrc})
  set(${out_var} ${sources} PARENT_SCOPE)
endfunction()
