# vell_xml_library: the XML parser (expat), for a room to link privately. That for Windows is built by
# a script; natively it is Debian's.
add_library(vell_xml_library INTERFACE)
if(WIN32)
  vell_library(XML_LIBRARY xml_library.sh lib/libexpat.a)
  add_dependencies(vell_xml_library vell_XML_LIBRARY_files)
  target_compile_definitions(vell_xml_library INTERFACE XML_STATIC=1)
  target_include_directories(vell_xml_library SYSTEM INTERFACE ${VELL_XML_LIBRARY_FOLDER}/include)
  target_link_libraries(vell_xml_library INTERFACE ${VELL_XML_LIBRARY_FOLDER}/lib/libexpat.a)
else()
  find_library(VELL_expat expat REQUIRED)
  target_link_libraries(vell_xml_library INTERFACE ${VELL_expat})
endif()
