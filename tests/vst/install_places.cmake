# Fails unless the plug-in is installed where hosts look for it: for all users, and for one without root.
#
#   cmake -DBUILD=build/check -P install_places.cmake
set(root $ENV{TMPDIR})
if(NOT root)
  set(root /tmp)
endif()
string(RANDOM LENGTH 12 name)
set(root ${root}/sonorelle-install-${name})
file(MAKE_DIRECTORY ${root}/home)

function(fail text)
  file(REMOVE_RECURSE ${root})
  message(FATAL_ERROR ${text})
endfunction()

# put(file... WITH variable... AS option...): installs with these variables and options; each file must be there.
function(put)
  cmake_parse_arguments(PUT "" "" "WITH;AS" ${ARGN})
  execute_process(COMMAND ${CMAKE_COMMAND} -E env ${PUT_WITH} ${CMAKE_COMMAND} --install ${BUILD} ${PUT_AS}
                  RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    fail("cmake --install ${PUT_AS}: ${errors}")
  endif()
  foreach(file ${PUT_UNPARSED_ARGUMENTS})
    if(NOT EXISTS ${file})
      fail("${file} is not there after cmake --install ${PUT_AS}")
    endif()
    file(SIZE ${file} size)
    if(size LESS 100000) # what stood there before is a few letters
      fail("${file} is not the plug-in")
    endif()
  endforeach()
endfunction()

# What a host that runs has in its memory must stay as it is.
function(pretend_loaded file)
  get_filename_component(folder ${file} DIRECTORY)
  file(MAKE_DIRECTORY ${folder})
  file(WRITE ${file} "the one before")
  file(CREATE_LINK ${file} ${folder}/loaded)
endfunction()
function(check_loaded file)
  get_filename_component(folder ${file} DIRECTORY)
  file(READ ${folder}/loaded text)
  if(NOT text STREQUAL "the one before")
    fail("${file} was written over in its place")
  endif()
endfunction()

set(of_user ${root}/home/.vst/sonorelle.so ${root}/home/.local/lib/vst/sonorelle.so)
set(of_all ${root}/usr/lib/vst/sonorelle.so)
foreach(file ${of_user} ${of_all})
  pretend_loaded(${file})
endforeach()
put(${of_user} WITH HOME=${root}/home AS --component user_plugin)
put(${of_all} WITH HOME=/nowhere AS --component Unspecified --prefix ${root}/usr)
foreach(file ${of_user} ${of_all})
  check_loaded(${file})
endforeach()

# As makers of packages do.
put(${root}/package${root}/home/.vst/sonorelle.so WITH HOME=${root}/home DESTDIR=${root}/package AS --component user_plugin)
put(${root}/package/usr/lib/vst/sonorelle.so WITH DESTDIR=${root}/package AS --component Unspecified --prefix /usr)

# Nobody's home: never the root of the machine.
execute_process(COMMAND ${CMAKE_COMMAND} -E env HOME= DESTDIR=${root}/nobody ${CMAKE_COMMAND} --install ${BUILD}
                        --component user_plugin
                RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
if(result EQUAL 0 OR EXISTS ${root}/nobody/.vst)
  fail("installed without a home")
endif()

# What the library carries with it of the machine that built it: nothing.
execute_process(COMMAND readelf -d ${of_all} OUTPUT_VARIABLE dynamic)
if(dynamic MATCHES "RPATH|RUNPATH")
  fail("the installed plug-in looks for libraries where it was built")
endif()
file(REMOVE_RECURSE ${root})
