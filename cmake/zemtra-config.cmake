include(CMakeFindDependencyMacro)
find_dependency(Threads)
find_dependency(Boost 1.81)  # its headers: PFR finds the members of aggregates
include(${CMAKE_CURRENT_LIST_DIR}/zemtra-targets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/ZemtraIdl.cmake)
