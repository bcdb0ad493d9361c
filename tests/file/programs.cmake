# File systems for the tests: one source, in a folder of their own under the names that the library
# looks for.
set(ZOR_TEST_MODULES ${CMAKE_CURRENT_BINARY_DIR}/file_modules)
foreach(pair IN ITEMS socket:PLAIN psx:PLAIN lsq:PLAIN gyp:PLAIN uqe:PLAIN
                      pipe:NO_INIT mqueue:REFUSAL=37 rsd:REFUSAL=0)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 file)
  list(GET pair 1 variant)
  add_library(test_module_${file} MODULE file/module.c)
  target_compile_options(test_module_${file} PRIVATE ${ZOR_WARNINGS})
  target_compile_definitions(test_module_${file} PRIVATE ${variant})
  target_link_libraries(test_module_${file} PRIVATE lvd4)
  set_target_properties(test_module_${file} PROPERTIES PREFIX "" OUTPUT_NAME zorrf${file}_32r
                                            LIBRARY_OUTPUT_DIRECTORY ${ZOR_TEST_MODULES})
  add_dependencies(file_test test_module_${file})
endforeach()
target_compile_definitions(file_test PRIVATE TEST_MODULES="${ZOR_TEST_MODULES}/"
                           FAILING_ALLOCATOR="$<TARGET_FILE:failing_allocator>")
add_dependencies(file_test failing_allocator)
