# The library as one built for profiling, which finds the engine of the tests in its own folder, ahead
# of the real one; and in another folder with an engine that lacks the entry.
function(zor_add_test_engine name folder)
  add_library(${name} MODULE sort/engine.c)
  target_compile_options(${name} PRIVATE ${ZOR_WARNINGS})
  target_compile_definitions(${name} PRIVATE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME libpelnx_32r C_CLANG_TIDY ""
                                           LIBRARY_OUTPUT_DIRECTORY ${folder})
  add_custom_command(TARGET ${name} POST_BUILD COMMAND ${CMAKE_COMMAND} -E create_symlink
                     $<TARGET_FILE:lvd4> ${folder}/$<TARGET_FILE_NAME:lvd4>)
  add_dependencies(sort_test ${name})
endfunction()
zor_add_test_engine(test_engine ${ZOR_TREE}/lib/profiled ENTRY=sortmerge)
zor_add_test_engine(no_engine ${CMAKE_CURRENT_BINARY_DIR}/no_engine ENTRY=nothing)
target_compile_definitions(sort_test PRIVATE TEST_ENGINE="${ZOR_TREE}/lib/profiled"
                           REAL_ENGINE="$<TARGET_FILE:libpelnx_32r>"
                           NO_ENGINE="${CMAKE_CURRENT_BINARY_DIR}/no_engine"
                           FAILING_ALLOCATOR="$<TARGET_FILE:failing_allocator>")
add_dependencies(sort_test failing_allocator libpelnx_32r)
