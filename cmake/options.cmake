# Options shared by all of our own targets; what is only installed and called keeps its own.
add_library(vell_options INTERFACE)
set_target_properties(vell_options PROPERTIES EXPORT_NO_SYSTEM ON)
target_include_directories(vell_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(vell_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic
  -Wshadow -Wconversion -Wno-sign-conversion -Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  # GCC 12 sees overlapping copies inside std::string that are not there (its bug 105651). In
  # precompiled headers it forgets what is the system's, and shows what it suspects of that, too.
  target_compile_options(vell_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict
    -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread>)
  if(CMAKE_UNITY_BUILD) # where a source is an included file, and could be a header
    target_compile_options(vell_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-subobject-linkage>)
  endif()
endif()
if(WIN32)
  target_compile_definitions(vell_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
    _WIN32_WINNT=0x0A00 WINVER=0x0A00)
  target_link_options(vell_options INTERFACE -static)
  # What is shipped is the same wherever it is built: no path of the machine, no mark of the compiler in
  # each object. Its debug information is split off where the plug-in is linked.
  set(library_cache $ENV{XDG_CACHE_HOME})
  if(NOT library_cache)
    set(library_cache $ENV{HOME}/.cache)
  endif()
  target_compile_options(vell_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-ident
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}=/vell-file -ffile-prefix-map=${library_cache}/vell-file=/libraries>)
endif()
