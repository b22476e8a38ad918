if(SONORELLE_SANITIZE AND NOT SONORELLE_FUZZ)
  # The sanitizers' builds read the standard library once for all rooms. The others compile each file by what it includes
  # itself, so that a missing include shows there.
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/room_headers.cpp CONTENT "")
  add_library(sonorelle_room_headers OBJECT ${CMAKE_BINARY_DIR}/room_headers.cpp)
  target_link_libraries(sonorelle_room_headers PRIVATE sonorelle_flags)
  target_precompile_headers(sonorelle_room_headers PRIVATE
    <algorithm> <array> <bit> <cmath> <cstdint> <cstdio> <cstring> <functional> <limits> <memory> <new> <numbers> <optional>
    <span> <stdexcept> <string> <string_view> <utility> <vector>)
endif()

# sonorelle_room(NAME [USES room...] [SYSTEM target...])
#
# Makes src/NAME a static library. The folder is reached as "NAME/file.h" through a directory that holds nothing else, so
# that including a header of another room works only when this room names it in USES. What a room uses is not handed on to
# its own users: they name what they need.
#
# PART_OF FOLDER FILES pattern...: the room is only these files of src/FOLDER, which others may see without the rest of it.
# WITHOUT prefix: files of the folder that begin so belong to such a part.
function(sonorelle_room name)
  cmake_parse_arguments(ROOM "" "PART_OF;WITHOUT" "USES;SYSTEM;FILES" ${ARGN})
  set(view ${CMAKE_BINARY_DIR}/rooms/${name})
  file(MAKE_DIRECTORY ${view})
  if(ROOM_PART_OF)
    list(TRANSFORM ROOM_FILES PREPEND ${CMAKE_SOURCE_DIR}/src/${ROOM_PART_OF}/)
    file(GLOB files CONFIGURE_DEPENDS ${ROOM_FILES})
    file(MAKE_DIRECTORY ${view}/${ROOM_PART_OF})
    foreach(file ${files})
      get_filename_component(file_name ${file} NAME)
      file(CREATE_LINK ${file} ${view}/${ROOM_PART_OF}/${file_name} SYMBOLIC)
    endforeach()
    set(sources ${files})
    list(FILTER sources INCLUDE REGEX "\\.cpp$")
  else()
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/src/${name} ${view}/${name} SYMBOLIC)
    file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${name}/*.cpp)
    list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
    if(ROOM_WITHOUT)
      list(FILTER sources EXCLUDE REGEX "/${ROOM_WITHOUT}[^/]*$")
    endif()
  endif()
  if(NOT sources)
    return()
  endif()
  set(target sonorelle_${name})
  add_library(${target} STATIC ${sources})
  target_include_directories(${target} PUBLIC ${view})
  target_link_libraries(${target} PUBLIC sonorelle_flags)
  if(TARGET sonorelle_room_headers)
    target_precompile_headers(${target} REUSE_FROM sonorelle_room_headers)
  endif()
  foreach(used ${ROOM_USES})
    target_link_libraries(${target} PRIVATE sonorelle_${used})
  endforeach()
  foreach(library ${ROOM_SYSTEM})
    target_link_libraries(${target} PRIVATE ${library})
  endforeach()
endfunction()
