# sonorelle.so, the plug-in. It shows the names by which hosts come in and nothing else, needs nothing that it does not
# name, and can be unloaded.
#
#   cmake --install build/release                                   lib/vst below the prefix: /usr/local/lib/vst
#   cmake --install build/release --component user_plugin           ~/.vst and ~/.local/lib/vst, without root
add_library(sonorelle_vst MODULE src/host/vst_entry.cpp)
target_link_libraries(sonorelle_vst PRIVATE sonorelle_flags
  sonorelle_bridge sonorelle_host sonorelle_ui sonorelle_app sonorelle_synthesis sonorelle_harmony
  sonorelle_snapshot_store sonorelle_analysis sonorelle_dsp sonorelle_formats sonorelle_platform)
set(entry_points ${CMAKE_SOURCE_DIR}/src/host/vst_entry.map)
set_target_properties(sonorelle_vst PROPERTIES
  PREFIX "" OUTPUT_NAME sonorelle SUFFIX .so
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib/vst
  LINK_DEPENDS ${entry_points})
target_link_options(sonorelle_vst PRIVATE
  LINKER:--version-script=${entry_points} LINKER:--exclude-libs,ALL LINKER:--gc-sections)
if(NOT SONORELLE_SANITIZE)
  # A sanitizer's run-time library belongs to the program that loads this one.
  target_link_options(sonorelle_vst PRIVATE LINKER:-z,defs)
endif()

install(TARGETS sonorelle_vst LIBRARY DESTINATION lib/vst)
# The home is that of whoever installs.
foreach(folder .vst .local/lib/vst)
  install(CODE "file(INSTALL DESTINATION \"\$ENV{HOME}/${folder}\" TYPE FILE FILES \"$<TARGET_FILE:sonorelle_vst>\")"
          COMPONENT user_plugin EXCLUDE_FROM_ALL)
endforeach()
