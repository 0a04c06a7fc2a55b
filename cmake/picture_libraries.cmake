# vell_picture_libraries: the libraries of JPEG (libjpeg-turbo), PNG (libpng) and colour profiles
# (lcms2) with zlib, for a room to link privately. Those for Windows are built by a script, and so is
# the JPEG library for the sanitizers; otherwise they are Debian's natively, whose JPEG library has no
# backing store (vell_backing_store.h).
add_library(vell_picture_libraries INTERFACE)
set(has_backing_store 0)
if(WIN32 OR VELL_SANITIZERS)
  set(has_backing_store 1)
endif()
target_compile_definitions(vell_picture_libraries INTERFACE CMS_NO_REGISTER_KEYWORD=1
  VELL_JPEG_BACKING_STORE=${has_backing_store})
if(WIN32)
  set(VELL_PICTURE_LIBRARIES "" CACHE PATH "Folder as scripts/picture_libraries.sh makes it")
  set(pictures "${VELL_PICTURE_LIBRARIES}")
  if(NOT pictures)
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/scripts/picture_libraries.sh
      OUTPUT_VARIABLE pictures OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR "The picture libraries could not be built; see the lines above.")
    endif()
  endif()
  file(GLOB recipe ${CMAKE_SOURCE_DIR}/scripts/picture_libraries/*)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${recipe}
    ${CMAKE_SOURCE_DIR}/scripts/picture_libraries.sh ${CMAKE_SOURCE_DIR}/scripts/jpeg.patch
    ${CMAKE_SOURCE_DIR}/scripts/library_build.sh)
  target_include_directories(vell_picture_libraries SYSTEM INTERFACE ${pictures}/include)
  target_link_libraries(vell_picture_libraries INTERFACE ${pictures}/lib/libpng.a
    ${pictures}/lib/libjpeg.a ${pictures}/lib/liblcms2.a ${VELL_ZLIB})
else()
  if(VELL_SANITIZERS) # what is tested under them is the library as the plug-in has it
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/scripts/jpeg_native.sh
      OUTPUT_VARIABLE jpeg OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR "The JPEG library could not be built; see the lines above.")
    endif()
    file(GLOB recipe ${CMAKE_SOURCE_DIR}/scripts/picture_libraries/*)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${recipe}
      ${CMAKE_SOURCE_DIR}/scripts/jpeg_native.sh ${CMAKE_SOURCE_DIR}/scripts/jpeg.patch)
    target_include_directories(vell_picture_libraries SYSTEM INTERFACE ${jpeg}/include)
    set(VELL_jpeg ${jpeg}/lib/libjpeg.a CACHE FILEPATH "The JPEG library" FORCE)
  endif()
  foreach(library png jpeg lcms2)
    find_library(VELL_${library} ${library} REQUIRED)
    target_link_libraries(vell_picture_libraries INTERFACE ${VELL_${library}})
  endforeach()
  target_link_libraries(vell_picture_libraries INTERFACE ${VELL_ZLIB})
endif()
