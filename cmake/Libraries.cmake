# Finds the libraries that the installed ones stand on, each as one target. The build and the
# installed package both read this file.

function(velmo_find_library target header library)
    if(TARGET ${target})
        return()
    endif()
    find_path(${target}_INCLUDE_DIR ${header} REQUIRED)
    find_library(${target}_LIBRARY NAMES ${library} REQUIRED)
    add_library(${target} UNKNOWN IMPORTED)
    set_target_properties(${target} PROPERTIES
        IMPORTED_LOCATION ${${target}_LIBRARY}
        INTERFACE_INCLUDE_DIRECTORIES ${${target}_INCLUDE_DIR})
endfunction()

macro(velmo_find_what_core_needs)
    if(APPLE)
        # Found by name, because its package knows only the shared library if both kinds are
        # installed.
        velmo_find_library(simdjson::simdjson simdjson.h simdjson)
        target_compile_definitions(simdjson::simdjson INTERFACE SIMDJSON_THREADS_ENABLED=1)
    else()
        find_package(simdjson REQUIRED)
    endif()
    velmo_find_library(utf8proc::utf8proc utf8proc.h utf8proc)
    find_package(PNG REQUIRED)
endmacro()

# What stands in for CoreFoundation elsewhere than on a Mac.
macro(velmo_find_what_host_needs)
    if(NOT APPLE)
        find_package(ICU REQUIRED COMPONENTS i18n uc)
        velmo_find_library(plist::plist plist/plist.h plist-2.0)
    endif()
endmacro()

# Sockets, timers and signals; headers only.
macro(velmo_find_what_power_client_needs)
    find_package(Threads REQUIRED)
    if(NOT TARGET asio::asio)
        find_path(ASIO_INCLUDE_DIR asio/io_context.hpp REQUIRED)
        add_library(asio::asio INTERFACE IMPORTED)
        target_include_directories(asio::asio INTERFACE ${ASIO_INCLUDE_DIR})
        target_compile_definitions(asio::asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
        target_link_libraries(asio::asio INTERFACE Threads::Threads)
    endif()
endmacro()
