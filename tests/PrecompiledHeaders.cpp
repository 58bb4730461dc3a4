// Nothing but what CMake puts before it: the headers that all tests share.
