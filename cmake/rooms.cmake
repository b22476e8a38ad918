# sonorelle_room(NAME [USES room...] [SYSTEM target...])
#
# Makes src/NAME a static library. The folder is reached as "NAME/file.h" through a directory that holds nothing else, so
# that including a header of another room works only when this room names it in USES. What a room uses is not handed on to
# its own users: they name what they need.
function(sonorelle_room name)
  cmake_parse_arguments(ROOM "" "" "USES;SYSTEM" ${ARGN})
  set(view ${CMAKE_BINARY_DIR}/rooms/${name})
  file(MAKE_DIRECTORY ${view})
  file(CREATE_LINK ${CMAKE_SOURCE_DIR}/src/${name} ${view}/${name} SYMBOLIC)

  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${name}/*.cpp)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  set(target sonorelle_${name})
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} PUBLIC ${view})
  target_link_libraries(${target} PUBLIC sonorelle_flags)
  foreach(used ${ROOM_USES})
    target_link_libraries(${target} PRIVATE sonorelle_${used})
  endforeach()
  foreach(library ${ROOM_SYSTEM})
    target_link_libraries(${target} PRIVATE ${library})
  endforeach()
endfunction()
