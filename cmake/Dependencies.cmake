# The libraries that the code stands on, each as one target.

set(velmo_every_library_suffix ${CMAKE_FIND_LIBRARY_SUFFIXES})
if(APPLE)
    # A root process must load nothing from a folder that a user may write: only archives, and what
    # the system itself brings (zlib).
    set(CMAKE_FIND_LIBRARY_SUFFIXES .a .tbd)
endif()

find_package(Threads REQUIRED)
include(${CMAKE_CURRENT_LIST_DIR}/CoreDependencies.cmake)

# Headers only: sockets, timers and signals of the simulated Mac and of the tools.
find_path(ASIO_INCLUDE_DIR asio/io_context.hpp REQUIRED)
add_library(asio::asio INTERFACE IMPORTED)
target_include_directories(asio::asio INTERFACE ${ASIO_INCLUDE_DIR})
target_compile_definitions(asio::asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(asio::asio INTERFACE Threads::Threads)

find_package(CLI11 REQUIRED)

if(VELMO_BUILD_TESTS)
    set(CMAKE_FIND_LIBRARY_SUFFIXES ${velmo_every_library_suffix})
    find_package(GTest REQUIRED)
    find_package(rapidcheck REQUIRED)
    # Peers to agree with.
    velmo_find_library(uriparser::uriparser uriparser/Uri.h uriparser)
endif()

if(VELMO_BUILD_TESTS OR VELMO_BUILD_BENCH)
    set(CMAKE_FIND_LIBRARY_SUFFIXES ${velmo_every_library_suffix})
    velmo_find_library(cairo::cairo cairo/cairo.h cairo)
    if(VELMO_BUILD_BENCH OR NOT APPLE)
        # In place of CoreFoundation, or to be measured beside it.
        find_package(ICU REQUIRED COMPONENTS i18n uc)
        velmo_find_library(plist::plist plist/plist.h plist-2.0)
    endif()
endif()
