# The libraries that VelmoCore stands on; read by its installed package too.

find_package(simdjson REQUIRED)

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

velmo_find_library(utf8proc::utf8proc utf8proc.h utf8proc)

find_package(PNG REQUIRED)
