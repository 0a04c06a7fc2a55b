# Cross-compiling for 64-bit Windows with Debian's g++-mingw-w64-x86-64-posix.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
# Mutexes are made and destroyed by functions: what winpthreads allocates for one that has only an
# initialiser stays for ever, and Poppler has one in each object of a document.
add_compile_definitions(_GTHREAD_USE_MUTEX_INIT_FUNC=1 _GTHREAD_USE_RECURSIVE_MUTEX_INIT_FUNC=1)
# A buffer that is overrun, or an index beyond a container's end, ends in a report of the crash instead
# of going on with wrong bytes. Libraries are compiled in the same way.
add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-fstack-protector-strong>)
add_compile_definitions($<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<NOT:$<CONFIG:Debug>>>:_FORTIFY_SOURCE=2>
  $<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
add_link_options(-fstack-protector-strong) # its library
# What they tell names headers: not where those stand on the machine.
add_compile_options($<$<AND:$<COMPILE_LANGUAGE:C,CXX>,$<CONFIG:Release>>:-fmacro-prefix-map=/usr/=>)
