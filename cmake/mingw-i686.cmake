# 32-bit Windows build: VellBase.dll as it ships. ctest runs its programs under 32-bit Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Floating point in SSE2 doubles, for the whole build. By default 32-bit x86 code computes in the
# x87 unit's 80-bit registers, so a value the library defines as "computed in double precision,
# then truncated" can come out one lower or higher than the double computation gives (the master
# volume at 10 stored 5001 instead of 5000). With SSE2 every intermediate is a double, as on
# x86_64. The DLL therefore needs a processor with SSE2 (every x86 processor since 2003).
set(CMAKE_C_FLAGS_INIT "-msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-msse2 -mfpmath=sse")
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/lib/wine/wine)
