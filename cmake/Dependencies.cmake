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

# HTTP and WebSocket of the phone's bridge, headers only, with an Asio of their own; and what a hash
# and a QR code are made by.
if(VELMO_BUILD_PROGRAMS AND VELMO_PHONE)
    find_path(BOOST_INCLUDE_DIR boost/beast/websocket.hpp REQUIRED)
    add_library(boost::beast INTERFACE IMPORTED)
    target_include_directories(boost::beast INTERFACE ${BOOST_INCLUDE_DIR})
    # The last one for Boost 1.74, which otherwise asks C++23's library for what C++20 has removed.
    target_compile_definitions(boost::beast INTERFACE
        BOOST_ASIO_NO_DEPRECATED BOOST_ASIO_HAS_STD_INVOKE_RESULT=1)
    target_link_libraries(boost::beast INTERFACE Threads::Threads)
    velmo_find_library(qrencode::qrencode qrencode.h qrencode)
    if(NOT APPLE)
        find_package(OpenSSL REQUIRED COMPONENTS Crypto)
    endif()
endif()

if(VELMO_BUILD_TESTS)
    set(CMAKE_FIND_LIBRARY_SUFFIXES ${velmo_every_library_suffix})
    find_package(GTest REQUIRED)
    # A parser that the tests compare ours with.
    velmo_find_library(uriparser::uriparser uriparser/Uri.h uriparser)
endif()

if(VELMO_BUILD_TESTS OR VELMO_BUILD_BENCH)
    set(CMAKE_FIND_LIBRARY_SUFFIXES ${velmo_every_library_suffix})
    velmo_find_library(cairo::cairo cairo/cairo.h cairo)
endif()
