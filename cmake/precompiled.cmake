# Headers that nearly every source includes, parsed once for all targets with the same options. A
# source still includes what it uses: -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON builds without them.
set(standard_headers <algorithm> <array> <charconv> <cmath> <cstddef> <cstdint> <cstring> <functional>
  <limits> <map> <memory> <mutex> <optional> <span> <string> <string_view> <utility> <variant> <vector>)
set(windows_headers <windows.h>)

# vell_precompiled(NAME HEADER...): makes a set of such headers.
function(vell_precompiled name)
  file(CONFIGURE OUTPUT ${name}.cpp CONTENT "" @ONLY)
  add_library(${name} OBJECT EXCLUDE_FROM_ALL ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE vell_options)
  target_precompile_headers(${name} PRIVATE ${ARGN})
endfunction()

vell_precompiled(vell_standard_headers ${standard_headers})
if(WIN32)
  vell_precompiled(vell_windows_headers ${standard_headers} ${windows_headers})
endif()

# vell_use_precompiled(TARGET [windows]): takes the standard library's headers, with those of Windows
# where that is asked for and there are any.
function(vell_use_precompiled target)
  if(WIN32 AND "${ARGN}" STREQUAL windows)
    target_precompile_headers(${target} REUSE_FROM vell_windows_headers)
  else()
    target_precompile_headers(${target} REUSE_FROM vell_standard_headers)
  endif()
endfunction()
