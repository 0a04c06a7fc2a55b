# vell_deflate: libdeflate with what scripts/deflate.patch adds, compiled here for whatever is built.
set(sources lib/crc32.c lib/deflate_compress.c lib/deflate_decompress.c lib/utils.c
  lib/x86/cpu_features.c)
vell_library(LIBDEFLATE deflate_source.sh ${sources})
list(TRANSFORM sources PREPEND ${VELL_LIBDEFLATE_FOLDER}/)
add_library(vell_deflate STATIC ${sources})
target_include_directories(vell_deflate SYSTEM PUBLIC ${VELL_LIBDEFLATE_FOLDER})
set_target_properties(vell_deflate PROPERTIES UNITY_BUILD OFF)
target_compile_options(vell_deflate PRIVATE -w) # not ours to tidy up
