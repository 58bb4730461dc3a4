# Builds for arm64 macOS on Linux. The libraries come from build/macos-libraries; what Apple's
# frameworks declare comes from our own include folder, and what they export from our own stubs.

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR arm64)

set(CMAKE_C_COMPILER ${CMAKE_CURRENT_LIST_DIR}/zig-cc)
set(CMAKE_CXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/zig-c++)
set(CMAKE_OBJC_COMPILER ${CMAKE_CURRENT_LIST_DIR}/zig-cc)
set(CMAKE_OBJCXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/zig-c++)
set(CMAKE_AR ${CMAKE_CURRENT_LIST_DIR}/zig-ar)
set(CMAKE_RANLIB ${CMAKE_CURRENT_LIST_DIR}/zig-ranlib)
# CMake wants this tool for libraries that are loaded at run time, and the build makes no such
# library.
set(CMAKE_INSTALL_NAME_TOOL true)

# The compiler's own -target gives all three.
set(CMAKE_OSX_ARCHITECTURES "" CACHE STRING "" FORCE)
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "" FORCE)
set(CMAKE_OSX_SYSROOT "" CACHE STRING "" FORCE)

get_filename_component(velmo_root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${velmo_root}/build/macos-libraries/prefix)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_PREFIX_PATH /)
set(CMAKE_FIND_FRAMEWORK NEVER)

# Included as a system folder, so that our warnings do not apply to it.
set(CMAKE_CXX_FLAGS_INIT "-isystem ${CMAKE_CURRENT_LIST_DIR}/include")
set(CMAKE_OBJC_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")
set(CMAKE_OBJCXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT}")
set(stubs ${CMAKE_CURRENT_LIST_DIR}/stubs)
# Unlike a Mac's linker, this one drops unused functions unless told otherwise. -S leaves out the
# paths of the objects on the build machine.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-F${stubs} -L${stubs} -Wl,--no-gc-sections -Wl,-S")
# On a Mac Foundation brings it along.
set(CMAKE_CXX_STANDARD_LIBRARIES_INIT -lobjc)
set(CMAKE_OBJC_STANDARD_LIBRARIES_INIT -lobjc)
set(CMAKE_OBJCXX_STANDARD_LIBRARIES_INIT -lobjc)
