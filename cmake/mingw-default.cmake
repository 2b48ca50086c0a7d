# MinGW as a user has it, for programs built against the library (the test client): the toolchain
# of VELL_MSABI_ARCH (i686 or x86_64) with the compilers of the win32 thread model, Debian's
# default, which the README's command line names. The library's own builds take the posix ones,
# which GoogleTest needs; their programs import libwinpthread-1.dll unless linked with -static.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELL_MSABI_ARCH)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-${VELL_MSABI_ARCH}.cmake)
string(REGEX REPLACE "-posix$" "" CMAKE_C_COMPILER ${CMAKE_C_COMPILER})
string(REGEX REPLACE "-posix$" "" CMAKE_CXX_COMPILER ${CMAKE_CXX_COMPILER})
