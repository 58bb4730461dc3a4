# How every target of the project is compiled and linked. A project that uses the library gets none
# of these options.

add_library(velmo_flags INTERFACE)
target_compile_options(velmo_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion
    # Clang also reports that a local name hides one of another source in the same unit.
    $<$<NOT:$<AND:$<CXX_COMPILER_ID:Clang>,$<BOOL:${CMAKE_UNITY_BUILD}>>>:-Wshadow>
    # Designated initialisers leave out what has a default.
    -Wno-missing-field-initializers
    $<$<CONFIG:Debug>:-D_GLIBCXX_ASSERTIONS>)

if(VELMO_SANITIZE)
    target_compile_options(velmo_flags INTERFACE
        -fsanitize=${VELMO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(velmo_flags INTERFACE -fsanitize=${VELMO_SANITIZE})
endif()

if(VELMO_COVERAGE)
    # The counters live in the files themselves, so that the counters of a killed process are kept
    # too.
    set(counters -fprofile-instr-generate=${CMAKE_BINARY_DIR}/profiles/%m%c.profraw)
    target_compile_options(velmo_flags INTERFACE
        ${counters} -fcoverage-mapping "SHELL:-mllvm -runtime-counter-relocation")
    target_link_options(velmo_flags INTERFACE ${counters})
endif()

if(VELMO_FUZZ)
    # Adds what the fuzzer steers by, but not to tests, of which it runs none. The fuzzer itself is
    # linked to its targets only.
    target_compile_options(velmo_flags INTERFACE
        $<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:FOLDER>,tests>>:-fsanitize=fuzzer-no-link>)
endif()

# Tests link many programs, and these linkers take a quarter of the usual one's time.
if(VELMO_BUILD_TESTS AND CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT CMAKE_INTERPROCEDURAL_OPTIMIZATION)
    include(CheckLinkerFlag)
    foreach(linker lld gold)
        check_linker_flag(CXX -fuse-ld=${linker} velmo_links_by_${linker})
        if(velmo_links_by_${linker})
            target_link_options(velmo_flags INTERFACE -fuse-ld=${linker})
            break()
        endif()
    endforeach()
endif()

if(APPLE)
    # No library or framework is loaded of which the program uses nothing.
    target_link_options(velmo_flags INTERFACE -Wl,-dead_strip_dylibs)
endif()

if(CMAKE_BUILD_TYPE STREQUAL "Release")
    target_compile_options(velmo_flags INTERFACE
        -fstack-protector-strong -D_FORTIFY_SOURCE=2 -D_GLIBCXX_ASSERTIONS)
    if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
        # A process then starts without looking up and relocating the C++ run time.
        target_link_options(velmo_flags INTERFACE
            -static-libstdc++ -static-libgcc -Wl,-z,relro,-z,now)
    endif()
endif()

# velmo_library(name SOURCES... LINKS...): everything in LINKS is part of the library's interface.
function(velmo_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS;PRIVATE_LINKS")
    add_library(${name} STATIC ${arg_SOURCES})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
    target_link_libraries(${name}
        PUBLIC ${arg_LINKS} PRIVATE ${arg_PRIVATE_LINKS} $<BUILD_INTERFACE:velmo_flags>)
endfunction()

# Has tests run what an optimiser makes of a library, which takes them a third of the time, and under the
# sanitizers less. GCC also refuses more of what is wrong with it.
function(velmo_optimise_for_tests library)
    if(CMAKE_BUILD_TYPE STREQUAL "Debug" AND (CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR VELMO_SANITIZE))
        target_compile_options(${library} PRIVATE -O1)
    endif()
endfunction()

function(velmo_executable name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINKS")
    add_executable(${name} ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE ${arg_LINKS} velmo_flags)
endfunction()
