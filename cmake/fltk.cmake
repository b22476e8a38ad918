# The toolkit of the windows, as the target sonorelle_fltk.
#
# Statically: a host, or another plug-in, may have a copy of its own, with other windows open. The archive's own
# dependencies are the system's X libraries.
find_path(FLTK_INCLUDE FL/Fl.H REQUIRED)
find_library(FLTK_ARCHIVE NAMES libfltk.a REQUIRED)
pkg_check_modules(FLTK_X11 REQUIRED IMPORTED_TARGET x11 xext xft xrender xfixes xcursor xinerama fontconfig)

add_library(sonorelle_fltk STATIC IMPORTED GLOBAL)
set_target_properties(sonorelle_fltk PROPERTIES IMPORTED_LOCATION ${FLTK_ARCHIVE})
target_include_directories(sonorelle_fltk INTERFACE ${FLTK_INCLUDE})
target_link_libraries(sonorelle_fltk INTERFACE PkgConfig::FLTK_X11 Threads::Threads ${CMAKE_DL_LIBS} m)
