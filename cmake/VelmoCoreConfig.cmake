include(CMakeFindDependencyMacro)
include(${CMAKE_CURRENT_LIST_DIR}/CoreDependencies.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/VelmoCoreTargets.cmake)
