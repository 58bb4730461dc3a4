# Installs what other projects get: libraries, headers, and the package that find_package(Velmo)
# reads.

include(CMakePackageConfigHelpers)
set(velmo_package lib/cmake/Velmo)

add_custom_target(velmo_libraries)

# velmo_install(target Name HEADERS...): installs the target as Velmo::Name, and the headers that
# its users are meant to include, by their paths below the current folder.
function(velmo_install target name)
    cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "HEADERS")
    add_library(Velmo::${name} ALIAS ${target})
    add_dependencies(velmo_libraries ${target})
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} OUTPUT_NAME Velmo${name})
    target_compile_features(${target} PUBLIC cxx_std_23)
    target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:include/velmo>)
    install(TARGETS ${target} EXPORT VelmoTargets DESTINATION lib COMPONENT libraries)
    foreach(header IN LISTS arg_HEADERS)
        cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}
            OUTPUT_VARIABLE folder)
        cmake_path(GET header PARENT_PATH below)
        install(FILES ${header} DESTINATION include/velmo/${folder}/${below} COMPONENT libraries)
    endforeach()
endfunction()

write_basic_package_version_file(VelmoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(EXPORT VelmoTargets NAMESPACE Velmo:: DESTINATION ${velmo_package} COMPONENT libraries)
install(FILES
        ${CMAKE_CURRENT_BINARY_DIR}/VelmoConfigVersion.cmake
        ${PROJECT_SOURCE_DIR}/cmake/Libraries.cmake
        ${PROJECT_SOURCE_DIR}/cmake/VelmoConfig.cmake
    DESTINATION ${velmo_package} COMPONENT libraries)
