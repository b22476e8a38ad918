# sonorelle.so, the plug-in. It shows the names by which hosts come in and nothing else, needs nothing that it does not
# name, and can be unloaded.
#
#   cmake --install build/release                                   lib/vst below the prefix: /usr/local/lib/vst
#   cmake --install build/release --component user_plugin           ~/.vst and ~/.local/lib/vst, without root
set(plugin_rooms sonorelle_bridge sonorelle_host sonorelle_ui sonorelle_app sonorelle_synthesis sonorelle_harmony
  sonorelle_snapshot_store sonorelle_analysis sonorelle_dsp sonorelle_formats sonorelle_platform)
function(sonorelle_plugin target folder)
  set(entry_points ${CMAKE_SOURCE_DIR}/src/host/vst_entry.map)
  set_target_properties(${target} PROPERTIES
    PREFIX "" OUTPUT_NAME sonorelle SUFFIX .so
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/${folder}
    LINK_DEPENDS ${entry_points})
  target_link_options(${target} PRIVATE
    LINKER:--version-script=${entry_points} LINKER:--exclude-libs,ALL LINKER:--gc-sections)
endfunction()

add_library(sonorelle_vst MODULE src/host/vst_entry.cpp)
target_link_libraries(sonorelle_vst PRIVATE sonorelle_flags ${plugin_rooms})
sonorelle_plugin(sonorelle_vst lib/vst)
if(NOT SONORELLE_SANITIZE)
  # A sanitizer's run-time library belongs to the program that loads this one.
  target_link_options(sonorelle_vst PRIVATE LINKER:-z,defs)
endif()

if(SONORELLE_SANITIZED_TWINS)
  # For the sanitized tests to load. The sanitized objects stand first, and leave nothing to the plain archives.
  set(sanitized)
  foreach(room ${plugin_rooms})
    list(APPEND sanitized $<TARGET_OBJECTS:${room}_asan>)
  endforeach()
  add_library(sonorelle_vst_asan MODULE EXCLUDE_FROM_ALL src/host/vst_entry.cpp ${sanitized})
  target_link_libraries(sonorelle_vst_asan PRIVATE sonorelle_asan_flags ${plugin_rooms})
  sonorelle_plugin(sonorelle_vst_asan lib/vst_asan)
endif()

install(TARGETS sonorelle_vst LIBRARY DESTINATION lib/vst)
# The home is that of whoever installs.
install(CODE "
  if(NOT IS_DIRECTORY \"\$ENV{HOME}\")
    message(FATAL_ERROR \"HOME names no folder to install the plug-in in\")
  endif()
  foreach(folder .vst .local/lib/vst)
    file(INSTALL DESTINATION \"\$ENV{HOME}/\${folder}\" TYPE FILE FILES \"$<TARGET_FILE:sonorelle_vst>\")
  endforeach()"
  COMPONENT user_plugin EXCLUDE_FROM_ALL)
