# What velmo-phone needs besides: HTTP and WebSocket, headers only, with an Asio of their own; QR codes; a
# hash; and Node.js with npm, which put its page together. Without any of them it is left out.

find_program(VELMO_NODE node NO_CMAKE_FIND_ROOT_PATH)
find_program(VELMO_NPM npm NO_CMAKE_FIND_ROOT_PATH)
find_path(BOOST_INCLUDE_DIR boost/beast/websocket.hpp)
find_path(QRENCODE_INCLUDE_DIR qrencode.h)
if(NOT APPLE)
    find_package(OpenSSL COMPONENTS Crypto)
endif()
set(velmo_phone_is_possible OFF)
if(VELMO_NODE AND VELMO_NPM AND BOOST_INCLUDE_DIR AND QRENCODE_INCLUDE_DIR AND (APPLE OR OPENSSL_FOUND))
    set(velmo_phone_is_possible ${PROJECT_IS_TOP_LEVEL})
endif()
set(VELMO_PHONE AUTO CACHE STRING "Build velmo-phone: ON, OFF, or AUTO for where that is possible")
set(velmo_phone_lacks "VELMO_PHONE is OFF")
if(VELMO_PHONE STREQUAL AUTO)
    set(VELMO_PHONE ${velmo_phone_is_possible})
    set(velmo_phone_lacks "`scripts/setup phone` installs what it needs")
    # Where tests are built, everything is: a network that is out of reach must not break the build.
    if(VELMO_PHONE AND VELMO_BUILD_TESTS)
        execute_process(
            COMMAND ${PROJECT_SOURCE_DIR}/scripts/fetch-modules ${PROJECT_SOURCE_DIR}/phone/page
                ${CMAKE_BINARY_DIR}/tools/velmo-phone/page
            RESULT_VARIABLE velmo_phone_refusal OUTPUT_QUIET ERROR_QUIET)
        if(velmo_phone_refusal)
            set(VELMO_PHONE OFF)
            set(velmo_phone_lacks "npm can't fetch what its page needs")
        endif()
    endif()
endif()

if(NOT VELMO_PHONE)
    message(STATUS "velmo-phone is left out: ${velmo_phone_lacks}")
    return()
endif()
find_package(Threads REQUIRED)
add_library(boost::beast INTERFACE IMPORTED)
target_include_directories(boost::beast INTERFACE ${BOOST_INCLUDE_DIR})
# The last one for Boost 1.74, which otherwise asks C++23's library for what C++20 has removed.
target_compile_definitions(boost::beast INTERFACE
    BOOST_ASIO_NO_DEPRECATED BOOST_ASIO_HAS_STD_INVOKE_RESULT=1)
target_link_libraries(boost::beast INTERFACE Threads::Threads)
