# Installs the tree as programs and compilers find it: library, catalogues, headers, how to link, and the
# commands for operators.
include(CMakePackageConfigHelpers)
install(TARGETS lvd4 EXPORT lvd4 LIBRARY DESTINATION lib)
install(TARGETS gdgmgr RUNTIME DESTINATION bin)
# The library looks for its catalogue in usr/share/locale beside the usr that holds its lib, or beside
# a lib that is in no usr.
install(CODE "set(ZOR_LOCALES \"${ZOR_TREE}/share/locale\")")
install(CODE [[
  set(share "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/usr/share")
  if(CMAKE_INSTALL_PREFIX MATCHES "/usr$")
    set(share "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/share")
  endif()
  file(COPY "${ZOR_LOCALES}" DESTINATION "${share}")
]])
install(DIRECTORY include/ DESTINATION include/lvd4 FILES_MATCHING PATTERN "*.h")
target_include_directories(lvd4 INTERFACE $<INSTALL_INTERFACE:include/lvd4>)
# Who links the library is a 32-bit program, whatever the compiler makes of its own accord.
target_compile_options(lvd4 INTERFACE $<INSTALL_INTERFACE:-m32>)
target_link_options(lvd4 INTERFACE $<INSTALL_INTERFACE:-m32>)
install(EXPORT lvd4 NAMESPACE lvd4:: FILE lvd4-config.cmake DESTINATION lib/cmake/lvd4)
write_basic_package_version_file(lvd4-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/lvd4-config-version.cmake DESTINATION lib/cmake/lvd4)
# The run path that it gives must be plain: the library works out its places from its own path.
install(CODE "set(ZOR_PC_IN \"${CMAKE_SOURCE_DIR}/tools/lvd4.pc.in\")
set(PROJECT_VERSION \"${PROJECT_VERSION}\")")
install(CODE [[
  configure_file("${ZOR_PC_IN}" "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/lib/pkgconfig/lvd4.pc" @ONLY)
]])
