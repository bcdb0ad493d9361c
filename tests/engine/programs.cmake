# The engine is loaded as the run-time loads it.
add_dependencies(engine_test libpelnx_32r)
target_compile_definitions(engine_test PRIVATE SORT_ENGINE="$<TARGET_FILE:libpelnx_32r>")
