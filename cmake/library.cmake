# Libraries that a script builds or fetches into the cache folder. The script prints the folder that it
# makes; with --folder it only prints it. Configuring asks for no more than that: the libraries are made
# by the build, beside the sources that need none of them.
add_custom_target(vell_libraries)

# vell_library(NAME SCRIPT FILE...): sets VELL_NAME_FOLDER to the folder, and has the target
# vell_NAME_files make the FILEs in it. Where VELL_NAME names a folder, it is taken as it is.
function(vell_library name script)
  set(VELL_${name} "" CACHE PATH "Folder as scripts/${script} makes it")
  set(folder "${VELL_${name}}")
  set(files "")
  if(NOT folder)
    set(command ${CMAKE_SOURCE_DIR}/scripts/${script})
    execute_process(COMMAND ${command} --folder OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE
      COMMAND_ERROR_IS_FATAL ANY)
    file(MAKE_DIRECTORY ${folder}/include) # CMake wants to see what other presets include
    list(TRANSFORM ARGN PREPEND ${folder}/ OUTPUT_VARIABLE files)
    add_custom_command(OUTPUT ${files} COMMAND ${command} COMMENT "scripts/${script}" VERBATIM)
    set_property(GLOBAL APPEND PROPERTY VELL_LIBRARY_FILES ${files})
  endif()
  add_custom_target(vell_${name}_files DEPENDS ${files})
  add_dependencies(vell_libraries vell_${name}_files)
  set(VELL_${name}_FOLDER ${folder} PARENT_SCOPE)
endfunction()

# Each of these may change the folder that a script prints.
file(GLOB recipes ${CMAKE_SOURCE_DIR}/scripts/*.sh ${CMAKE_SOURCE_DIR}/scripts/*.patch
  ${CMAKE_SOURCE_DIR}/scripts/poppler.cmake ${CMAKE_SOURCE_DIR}/scripts/picture_libraries/*)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${recipes})
