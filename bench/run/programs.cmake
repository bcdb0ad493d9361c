# The processes whose whole life is measured: a minimal program of ours, and its peers.
foreach(program IN ITEMS cobol plain catalogue)
  add_executable(minimal_${program} EXCLUDE_FROM_ALL run/programs/minimal_${program}.c)
  string(TOUPPER MINIMAL_${program} macro)
  target_compile_definitions(run_bench PRIVATE ${macro}="$<TARGET_FILE:minimal_${program}>")
  add_dependencies(run_bench minimal_${program})
endforeach()
target_link_libraries(minimal_cobol PRIVATE lvd4)
# The loader searches the peers' libraries in the same places.
foreach(program IN ITEMS plain catalogue)
  target_link_options(minimal_${program} PRIVATE -Wl,-rpath,${ZOR_TREE}/lib)
endforeach()
target_compile_definitions(minimal_catalogue PRIVATE CATALOGUE_PATH="${ZOR_TREE}/share/locale/%L/%N")
