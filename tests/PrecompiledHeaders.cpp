// Left empty: CMake includes the headers that all tests share before it.
