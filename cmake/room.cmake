# vell_room(NAME [WINDOWS] USES ROOM...): the library vell_NAME of a folder of src/ with everything
# below it, over the rooms that it may know; with WINDOWS all of it is the system's. CMakeLists.txt of
# src/ is the one place that tells who knows whom.
function(vell_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "WINDOWS" "" "USES")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name}/*.cpp)
  set_property(GLOBAL APPEND PROPERTY VELL_ROOMS vell_${name})
  add_library(vell_${name} STATIC ${sources})
  list(TRANSFORM room_USES PREPEND vell_)
  target_link_libraries(vell_${name} PUBLIC vell_options ${room_USES})
  if(room_WINDOWS)
    vell_use_precompiled(vell_${name} windows)
  else()
    vell_use_precompiled(vell_${name})
  endif()
endfunction()
