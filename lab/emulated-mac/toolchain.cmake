# Linux on arm64, by the cross compiler that the Mac's executables are built with.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER ${CMAKE_CURRENT_LIST_DIR}/../../build/macos-toolchain/zig/zig c++)
set(CMAKE_CXX_FLAGS_INIT "-target aarch64-linux-musl")
