# vell_xml_library: the XML parser (expat), for a room to link privately. That for Windows is built by
# a script; natively it is Debian's.
add_library(vell_xml_library INTERFACE)
if(WIN32)
  set(VELL_XML_LIBRARY "" CACHE PATH "Folder as scripts/xml_library.sh makes it")
  set(xml "${VELL_XML_LIBRARY}")
  if(NOT xml)
    execute_process(COMMAND ${CMAKE_SOURCE_DIR}/scripts/xml_library.sh
      OUTPUT_VARIABLE xml OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR "The library for XML could not be built; see the lines above.")
    endif()
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    ${CMAKE_SOURCE_DIR}/scripts/xml_library.sh ${CMAKE_SOURCE_DIR}/scripts/library_build.sh)
  target_compile_definitions(vell_xml_library INTERFACE XML_STATIC=1)
  target_include_directories(vell_xml_library SYSTEM INTERFACE ${xml}/include)
  target_link_libraries(vell_xml_library INTERFACE ${xml}/lib/libexpat.a)
else()
  find_library(VELL_expat expat REQUIRED)
  target_link_libraries(vell_xml_library INTERFACE ${VELL_expat})
endif()
