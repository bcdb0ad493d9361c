# File systems are loaded by the built library, so this program links that and not its objects.
add_executable(modules_bench EXCLUDE_FROM_ALL modules/lines.cpp modules/records.cpp
                                              modules/indexed.cpp support/bench.cpp)
target_include_directories(modules_bench PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(modules_bench PRIVATE lvd4 -l:libsqlite3.so.0 -l:liblmdb.so.0)
set_target_properties(modules_bench PROPERTIES CXX_CLANG_TIDY "")
add_dependencies(modules_bench file_systems)
add_dependencies(bench modules_bench catalogs)
