# The library in a benchmark finds the engine by the system's search.
target_link_options(sort_bench PRIVATE -Wl,-rpath,${ZOR_TREE}/lib)
add_dependencies(sort_bench libpelnx_32r)
