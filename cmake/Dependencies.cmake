# Finds what this build needs.

include(${CMAKE_CURRENT_LIST_DIR}/Libraries.cmake)

set(velmo_every_library_suffix ${CMAKE_FIND_LIBRARY_SUFFIXES})
if(APPLE)
    # A root process must load nothing from a folder that a user may write to, so it links archives
    # only, and what the system itself brings (zlib).
    set(CMAKE_FIND_LIBRARY_SUFFIXES .a .tbd)
endif()

velmo_find_what_core_needs()
velmo_find_what_host_needs()
velmo_find_what_power_client_needs()

if(VELMO_PHONE)
    velmo_find_library(qrencode::qrencode qrencode.h qrencode)
endif()

if(VELMO_BUILD_TESTS)
    set(CMAKE_FIND_LIBRARY_SUFFIXES ${velmo_every_library_suffix})
    find_package(GTest REQUIRED)
    # A parser that the tests compare ours with.
    velmo_find_library(uriparser::uriparser uriparser/Uri.h uriparser)
endif()

if(VELMO_BUILD_BENCH)
    set(CMAKE_FIND_LIBRARY_SUFFIXES ${velmo_every_library_suffix})
    velmo_find_library(cairo::cairo cairo/cairo.h cairo)
endif()
