# The Windows toolchain has no SVG image plugin. Each SVG icon of the resource file is rendered
# to a PNG at twice its size on the build host and kept under its .svg name, so that the code
# and the style sheets name the same resources on both systems; Qt reads the image by content.
find_program(RSVG_CONVERT rsvg-convert REQUIRED)

# Sets out_var to the generated resource file; target_name builds its images.
function(zelmor_png_icon_resources source_qrc target_name out_var)
  get_filename_component(source_dir ${source_qrc} DIRECTORY)
  set(render_dir ${CMAKE_CURRENT_BINARY_DIR}/png-icons)
  file(READ ${source_qrc} qrc)
  string(REGEX MATCHALL "<file alias=\"[^\"]+\\.svg\">[^<]+</file>" entries "${qrc}")
  set(pngs)
  foreach(entry IN LISTS entries)
    string(REGEX REPLACE ".*>([^<]+)</file>" "\\1" relative "${entry}")
    set(svg ${source_dir}/${relative})
    set(png ${render_dir}/${relative}.png)
    get_filename_component(png_dir ${png} DIRECTORY)
    add_custom_command(OUTPUT ${png}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${png_dir}
      COMMAND ${RSVG_CONVERT} --zoom 2 --format png --output ${png} ${svg}
      DEPENDS ${svg} VERBATIM)
    list(APPEND pngs ${png})
    string(REPLACE ">${relative}</file>" ">${png}</file>" qrc "${qrc}")
  endforeach()
  # The other files stay where they are.
  string(REPLACE ">icons/" ">${source_dir}/icons/" qrc "${qrc}")
  set(out_qrc ${render_dir}/icons.qrc)
  file(GENERATE OUTPUT ${out_qrc} CONTENT "${qrc}")
  add_custom_target(${target_name} DEPENDS ${pngs})
  set(${out_var} ${out_qrc} PARENT_SCOPE)
endfunction()
