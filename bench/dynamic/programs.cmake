# The shared object that is called, under the names of all its symbols.
set(programs ${CMAKE_CURRENT_BINARY_DIR}/programs)
add_library(bench_called MODULE EXCLUDE_FROM_ALL dynamic/programs/called.c)
set_target_properties(bench_called PROPERTIES PREFIX "" OUTPUT_NAME called C_CLANG_TIDY ""
                                              LIBRARY_OUTPUT_DIRECTORY ${programs})
file(MAKE_DIRECTORY ${programs})
foreach(number RANGE 100 163)
  string(SUBSTRING ${number} 1 2 digits)
  file(CREATE_LINK called.so ${programs}/CALLED${digits}.so SYMBOLIC)
endforeach()
target_compile_definitions(dynamic_bench PRIVATE BENCH_PROGRAMS="${programs}")
add_dependencies(dynamic_bench bench_called)
