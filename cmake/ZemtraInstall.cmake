# Installs the libraries, their headers and a package that find_package(zemtra) finds.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

foreach(name dds requestreply zemtra)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${name}/include/${name} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zemtra)
endforeach()
set_target_properties(zemtra_dds PROPERTIES EXPORT_NAME dds)
set_target_properties(zemtra_requestreply PROPERTIES EXPORT_NAME requestreply)
set_target_properties(zemtra_typed PROPERTIES EXPORT_NAME zemtra)
install(TARGETS zemtra_dds_rtps LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# Each library finds the others beside it, wherever they are moved to together.
set_target_properties(zemtra_dds zemtra_dds_rtps zemtra_requestreply zemtra_typed PROPERTIES INSTALL_RPATH $ORIGIN)
install(TARGETS zemtra_dds zemtra_requestreply zemtra_typed EXPORT zemtra INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zemtra)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zemtra)
set(package_version ${PROJECT_BINARY_DIR}/zemtra-config-version.cmake)
write_basic_package_version_file(${package_version} COMPATIBILITY SameMinorVersion)
install(EXPORT zemtra NAMESPACE zemtra:: DESTINATION ${package_dir} FILE zemtra-targets.cmake)
install(FILES ${PROJECT_SOURCE_DIR}/cmake/zemtra-config.cmake ${package_version} ${PROJECT_SOURCE_DIR}/cmake/ZemtraIdl.cmake
              ${PROJECT_SOURCE_DIR}/cmake/ZemtraIdlGenerate.cmake DESTINATION ${package_dir})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/cmake/idl DESTINATION ${package_dir})
