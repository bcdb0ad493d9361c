# A file system that makes the least calls; what it calls of the library the benchmark exports.
set(modules ${CMAKE_CURRENT_BINARY_DIR}/file_modules)
add_library(bench_module MODULE EXCLUDE_FROM_ALL file/programs/module.c)
set_target_properties(bench_module PROPERTIES PREFIX "" OUTPUT_NAME zorrfuqe_32r C_CLANG_TIDY ""
                                              LIBRARY_OUTPUT_DIRECTORY ${modules})
set_target_properties(file_bench PROPERTIES ENABLE_EXPORTS ON)
target_compile_definitions(file_bench PRIVATE BENCH_MODULES="${modules}/")
add_dependencies(file_bench bench_module)
