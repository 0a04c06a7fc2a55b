# How tests are compiled and linked. The optimiser takes longer with them than with all that they test,
# and so would the checks of undefined behaviour, which are for the product. Builds for debugging change
# nothing.
function(vell_compile_as_test target)
  if(NOT VELL_SANITIZERS)
    target_compile_options(${target} PRIVATE "$<$<CONFIG:RelWithDebInfo>:-O1;-g0>")
    return()
  endif()
  target_compile_options(${target} PRIVATE -O0 -fno-sanitize=undefined)
  if(VELL_FUZZ)
    target_compile_options(${target} PRIVATE -fno-sanitize-coverage=inline-8bit-counters,pc-table)
  endif()
endfunction()

# Under the sanitizers the rooms come first on the linker's line: it takes their copies of inline
# functions, which are optimised and checked.
function(vell_link_rooms_first program)
  if(VELL_SANITIZERS)
    get_property(rooms GLOBAL PROPERTY VELL_ROOMS)
    foreach(room IN LISTS rooms)
      target_sources(${program} PRIVATE $<TARGET_OBJECTS:${room}>)
    endforeach()
  endif()
endfunction()
