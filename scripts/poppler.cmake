# Read into Poppler's own project by scripts/poppler.sh: the headers that all of its sources include are
# parsed once. Its config.h, which every source includes first, has the same size of a file offset.
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
