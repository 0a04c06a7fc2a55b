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
  vell_library(PICTURE_LIBRARIES picture_libraries.sh lib/libpng.a lib/libjpeg.a lib/liblcms2.a)
  add_dependencies(vell_picture_libraries vell_PICTURE_LIBRARIES_files)
  set(pictures ${VELL_PICTURE_LIBRARIES_FOLDER})
  target_include_directories(vell_picture_libraries SYSTEM INTERFACE ${pictures}/include)
  target_link_libraries(vell_picture_libraries INTERFACE ${pictures}/lib/libpng.a
    ${pictures}/lib/libjpeg.a ${pictures}/lib/liblcms2.a)
else()
  set(installed png lcms2)
  if(VELL_SANITIZERS) # what is tested under them is the library as the plug-in has it
    vell_library(JPEG_LIBRARY jpeg_native.sh lib/libjpeg.a)
    add_dependencies(vell_picture_libraries vell_JPEG_LIBRARY_files)
    target_include_directories(vell_picture_libraries SYSTEM INTERFACE
      ${VELL_JPEG_LIBRARY_FOLDER}/include)
    target_link_libraries(vell_picture_libraries INTERFACE
      ${VELL_JPEG_LIBRARY_FOLDER}/lib/libjpeg.a)
  else()
    list(APPEND installed jpeg)
  endif()
  foreach(library IN LISTS installed)
    find_library(VELL_${library} ${library} REQUIRED)
    target_link_libraries(vell_picture_libraries INTERFACE ${VELL_${library}})
  endforeach()
endif()
target_link_libraries(vell_picture_libraries INTERFACE ${VELL_ZLIB})
