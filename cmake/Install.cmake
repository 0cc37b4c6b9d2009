# What is installed, by component: `cmake --install build/release --component library`. Nothing says where the prefix is,
# so the whole may be moved.
include(CMakePackageConfigHelpers)

# Programs find the library from where they are. Packages leave that to the system: CMAKE_SKIP_INSTALL_RPATH.
file(RELATIVE_PATH fromProgram ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(kelvo_tool PROPERTIES INSTALL_RPATH $ORIGIN/${fromProgram})

install(TARGETS kelvo EXPORT kelvo
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS kelvo-virtual-card RUNTIME COMPONENT virtual-card)
install(FILES virtual-card/kelvo-virtual-card@.service DESTINATION lib/systemd/system COMPONENT virtual-card)

install(DIRECTORY include/kelvo DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development PATTERN .clang-tidy EXCLUDE)

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/kelvo)
set(packageFiles ${PROJECT_BINARY_DIR}/cmake)
file(WRITE ${packageFiles}/kelvo-config.cmake "include(\${CMAKE_CURRENT_LIST_DIR}/kelvo-targets.cmake)\n")
write_basic_package_version_file(${packageFiles}/kelvo-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${packageFiles}/kelvo-config.cmake ${packageFiles}/kelvo-config-version.cmake
  DESTINATION ${packageFolder} COMPONENT development)
install(EXPORT kelvo FILE kelvo-targets.cmake NAMESPACE kelvo:: DESTINATION ${packageFolder} COMPONENT development)

file(RELATIVE_PATH pkgConfigToPrefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/kelvo.pc.in ${packageFiles}/kelvo.pc @ONLY)
install(FILES ${packageFiles}/kelvo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
