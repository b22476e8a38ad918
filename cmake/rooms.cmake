# sonorelle_room_headers(TARGET flags): the standard library, read once for all rooms compiled with these flags.
function(sonorelle_room_headers target flags)
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/room_headers.cpp CONTENT "")
  add_library(${target} OBJECT EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/room_headers.cpp)
  target_link_libraries(${target} PRIVATE ${flags})
  target_precompile_headers(${target} PRIVATE
    <algorithm> <array> <atomic> <bit> <cmath> <cstdint> <cstdio> <cstring> <filesystem> <functional> <limits> <memory> <mutex>
    <new> <numbers> <optional> <span> <stdexcept> <string> <string_view> <thread> <utility> <vector>)
endfunction()

# The debug build compiles each file by what it includes itself, so that a missing include shows there; clang reads no
# precompiled headers of gcc's kind.
if(NOT SONORELLE_FUZZ AND NOT CMAKE_BUILD_TYPE STREQUAL Debug)
  sonorelle_room_headers(sonorelle_room_headers sonorelle_flags)
endif()
if(SONORELLE_SANITIZED_TWINS)
  sonorelle_room_headers(sonorelle_room_headers_asan sonorelle_asan_flags)
endif()

# sonorelle_many_files_at_once(TARGET): files are compiled in batches, which read each header once. The names in unnamed
# namespaces are therefore unique within a room, and within its tests.
function(sonorelle_many_files_at_once target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  # A class that derives from one of an unnamed namespace is as local as that, which gcc believes of main files alone.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endfunction()

# sonorelle_room(NAME [USES room...] [SYSTEM target...])
#
# Makes src/NAME a static library. The folder is reached as "NAME/file.h" through a directory that holds nothing else, so
# that including a header of another room works only when this room names it in USES. What a room uses is not handed on to
# its own users: they name what they need.
#
# PART_OF FOLDER FILES pattern...: the room is only these files of src/FOLDER, which others may see without the rest of it.
# WITHOUT prefix: files of the folder that begin so belong to such a part.
#
# With SONORELLE_SANITIZED_TWINS, sonorelle_NAME_asan are the same files compiled with sanitizers, but for those that fit the
# pattern SONORELLE_PLAIN_IN_TWINS: a program of twins takes these from the room itself.
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
  if(SONORELLE_SANITIZE AND NOT SONORELLE_FUZZ)
    sonorelle_many_files_at_once(${target})
  endif()
  foreach(used ${ROOM_USES})
    target_link_libraries(${target} PRIVATE sonorelle_${used})
  endforeach()
  foreach(library ${ROOM_SYSTEM})
    target_link_libraries(${target} PRIVATE ${library})
  endforeach()
  if(SONORELLE_SANITIZED_TWINS)
    if(SONORELLE_PLAIN_IN_TWINS)
      list(FILTER sources EXCLUDE REGEX "${SONORELLE_PLAIN_IN_TWINS}")
    endif()
    add_library(${target}_asan OBJECT EXCLUDE_FROM_ALL ${sources})
    target_include_directories(${target}_asan PUBLIC ${view})
    target_link_libraries(${target}_asan PUBLIC sonorelle_asan_flags PRIVATE ${ROOM_SYSTEM})
    list(TRANSFORM ROOM_USES PREPEND sonorelle_ OUTPUT_VARIABLE used)
    target_link_libraries(${target}_asan PRIVATE ${used}) # for their headers
    target_precompile_headers(${target}_asan REUSE_FROM sonorelle_room_headers_asan)
    sonorelle_many_files_at_once(${target}_asan)
  endif()
endfunction()

# sonorelle_asan_program(TARGET OBJECTS object... LIBRARIES library... [SOURCES file...])
#
# Makes a program of compiled code and of the sanitized twins of the libraries, as far as they have one; the target
# asan_programs builds them all. The twins' objects stand first, so that of inline functions which both hold the linker
# takes the sanitized ones.
function(sonorelle_asan_program target)
  cmake_parse_arguments(TWIN "" "" "OBJECTS;LIBRARIES;SOURCES" ${ARGN})
  set(rooms)
  foreach(library ${TWIN_LIBRARIES})
    if(TARGET ${library}_asan)
      list(APPEND rooms $<TARGET_OBJECTS:${library}_asan>)
    endif()
  endforeach()
  add_executable(${target} EXCLUDE_FROM_ALL ${TWIN_SOURCES} ${rooms} ${TWIN_OBJECTS})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  target_link_libraries(${target} PRIVATE sonorelle_asan_flags ${TWIN_LIBRARIES})
  add_dependencies(asan_programs ${target})
endfunction()
if(SONORELLE_SANITIZED_TWINS)
  add_custom_target(asan_programs)
endif()
