# Installs the libraries, their headers and a package that find_package(zemtra) finds.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

foreach(name dds requestreply)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${name}/include/${name} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zemtra)
  # libzemtra.so finds libzemtra_dds.so beside it, wherever both are moved to.
  set_target_properties(zemtra_${name} PROPERTIES EXPORT_NAME ${name} INSTALL_RPATH $ORIGIN)
endforeach()
install(TARGETS zemtra_dds zemtra_requestreply EXPORT zemtra INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zemtra)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zemtra)
set(package_version ${PROJECT_BINARY_DIR}/zemtra-config-version.cmake)
write_basic_package_version_file(${package_version} COMPATIBILITY SameMinorVersion)
install(EXPORT zemtra NAMESPACE zemtra:: DESTINATION ${package_dir} FILE zemtra-targets.cmake)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/zemtra-config.cmake ${package_version} DESTINATION ${package_dir})
