# The rooms as VELL_SHIPPED_PRESET compiles them: test programs link the objects of the plug-in that is
# shipped, and nothing of it is compiled twice.
set(shipped ${CMAKE_SOURCE_DIR}/build/${VELL_SHIPPED_PRESET})
execute_process(COMMAND ${CMAKE_COMMAND} --preset ${VELL_SHIPPED_PRESET}
  WORKING_DIRECTORY ${CMAKE_SOURCE_DIR} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(GLOB_RECURSE lists ${CMAKE_SOURCE_DIR}/src/CMakeLists.txt ${CMAKE_SOURCE_DIR}/cmake/room.cmake)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${lists})
include(${shipped}/rooms.cmake)
include(${shipped}/libraries.cmake)

get_property(rooms DIRECTORY PROPERTY IMPORTED_TARGETS)
set(made ${libraries}) # without them nothing that links one could be built before they are there
foreach(room IN LISTS rooms)
  foreach(property IMPORTED_LOCATION_RELEASE IMPORTED_OBJECTS_RELEASE)
    get_target_property(files ${room} ${property})
    if(files)
      list(APPEND made ${files})
    endif()
  endforeach()
endforeach()

# The plug-in's file, which is built before anything links its rooms, and beside what only includes
# them. A target that includes a library's headers, too, depends on it.
add_custom_target(VellFile
  COMMAND ${CMAKE_COMMAND} --build ${shipped}
  COMMAND ${CMAKE_COMMAND} -E copy_if_different ${shipped}/bin/VellFile.fmx64
    ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
  BYPRODUCTS ${made} USES_TERMINAL VERBATIM)
