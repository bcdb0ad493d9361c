# The library as one built for profiling, which finds the engine of the tests in its own folder, ahead
# of the real one.
add_library(test_engine MODULE sort/engine.c)
target_compile_options(test_engine PRIVATE ${ZOR_WARNINGS})
set_target_properties(test_engine PROPERTIES PREFIX "" OUTPUT_NAME libpelnx_32r C_CLANG_TIDY ""
                                             LIBRARY_OUTPUT_DIRECTORY ${ZOR_TREE}/lib/profiled)
add_custom_command(TARGET test_engine POST_BUILD COMMAND ${CMAKE_COMMAND} -E create_symlink
                   $<TARGET_FILE:lvd4> ${ZOR_TREE}/lib/profiled/$<TARGET_FILE_NAME:lvd4>)
target_compile_definitions(sort_test PRIVATE TEST_ENGINE="${ZOR_TREE}/lib/profiled"
                           REAL_ENGINE="$<TARGET_FILE:libpelnx_32r>"
                           FAILING_ALLOCATOR="$<TARGET_FILE:failing_allocator>")
add_dependencies(sort_test test_engine failing_allocator libpelnx_32r)
