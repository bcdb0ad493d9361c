# A program of its own: whole sorts take too long for repeated samples.
add_executable(sort_engine_bench EXCLUDE_FROM_ALL engine/sort_files.cpp)
target_link_libraries(sort_engine_bench PRIVATE dl pthread)
target_compile_definitions(sort_engine_bench PRIVATE SORT_ENGINE="$<TARGET_FILE:libpelnx_32r>")
set_target_properties(sort_engine_bench PROPERTIES CXX_CLANG_TIDY "")
add_dependencies(sort_engine_bench libpelnx_32r)
add_dependencies(bench sort_engine_bench)
