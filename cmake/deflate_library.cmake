# vell_deflate: libdeflate with what scripts/deflate.patch adds, compiled here for whatever is built.
set(VELL_LIBDEFLATE "" CACHE PATH "Folder as scripts/deflate_source.sh makes it")
set(libdeflate "${VELL_LIBDEFLATE}")
if(NOT libdeflate)
  execute_process(COMMAND ${CMAKE_SOURCE_DIR}/scripts/deflate_source.sh
    OUTPUT_VARIABLE libdeflate OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "libdeflate's source is missing; see the lines above.")
  endif()
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  ${CMAKE_SOURCE_DIR}/scripts/deflate_source.sh ${CMAKE_SOURCE_DIR}/scripts/deflate.patch)
add_library(vell_deflate STATIC ${libdeflate}/lib/crc32.c ${libdeflate}/lib/deflate_compress.c
  ${libdeflate}/lib/deflate_decompress.c ${libdeflate}/lib/utils.c
  ${libdeflate}/lib/x86/cpu_features.c)
target_include_directories(vell_deflate SYSTEM PUBLIC ${libdeflate})
set_target_properties(vell_deflate PROPERTIES UNITY_BUILD OFF)
target_compile_options(vell_deflate PRIVATE -w) # not ours to tidy up
