# Read into Poppler's own project by scripts/poppler.sh: the headers that all of its sources include are
# parsed once, and the sources compiled in groups. Its config.h, which every source includes first, has
# the same size of a file offset.
cmake_language(DEFER CALL target_precompile_headers poppler PRIVATE
  "$<$<COMPILE_LANGUAGE:CXX>:<algorithm$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<array$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<atomic$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<functional$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<map$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<memory$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<mutex$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<optional$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<set$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<string$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<unordered_map$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<variant$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<vector$<ANGLE-R>>")
cmake_language(DEFER CALL target_compile_definitions poppler PRIVATE _FILE_OFFSET_BITS=64)
set(CMAKE_UNITY_BUILD ON)
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)
file(GLOB widths ${CMAKE_CURRENT_SOURCE_DIR}/poppler/*Widths.pregenerated.c)
# These give the names of others to functions of their own.
set_source_files_properties(${widths} poppler/CMap.cc splash/Splash.cc splash/SplashBitmap.cc PROPERTIES
  SKIP_UNITY_BUILD_INCLUSION ON)
