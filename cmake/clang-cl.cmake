# Microsoft-ABI (Visual Studio) programs built on Linux, as the tests build their client: clang-cl
# and lld-link, Wine's headers as the Windows SDK and the C runtime's, import libraries of Wine
# (x86_64) or MinGW-w64 (i686). VELL_MSABI_ARCH is x86_64 or i686, e.g.
#   cmake -B build -DCMAKE_TOOLCHAIN_FILE=cmake/clang-cl.cmake -DVELL_MSABI_ARCH=x86_64 ...
# Visual Studio's static runtime is missing: a program brings its own entry point (see
# tests/install/client/crt.cpp) and links with /entry:mainCRTStartup /nodefaultlib.
set(CMAKE_SYSTEM_NAME Windows)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VELL_MSABI_ARCH)
find_program(CMAKE_C_COMPILER NAMES clang-cl clang-cl-14 REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES clang-cl clang-cl-14 REQUIRED)
find_program(CMAKE_LINKER NAMES lld-link lld-link-14 REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES llvm-rc llvm-rc-14 REQUIRED)
find_program(CMAKE_MT NAMES llvm-mt llvm-mt-14 PATHS /usr/lib/llvm-14/bin REQUIRED)
set(CMAKE_CXX_COMPILER_TARGET ${VELL_MSABI_ARCH}-pc-windows-msvc)
set(CMAKE_C_COMPILER_TARGET ${VELL_MSABI_ARCH}-pc-windows-msvc)
# No Visual Studio runtime to link a test program with: the compiler checks compile only.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

# Wine 8's winnt.h defines functions that clang knows as built-in intrinsics: renamed away.
set(wine /usr/include/wine/wine)
set(flags "-imsvc ${wine}/msvcrt -imsvc ${wine}/windows -D_MSVCR_VER=140")
foreach(name CompareExchange128 And64 CompareExchangePointer ExchangeAdd64 ExchangePointer
             Increment64 Decrement64 Or64 Xor64)
    string(APPEND flags " -D_Interlocked${name}=wine_Interlocked${name}")
endforeach()
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")
if(VELL_MSABI_ARCH STREQUAL "x86_64")
    set(CMAKE_SYSTEM_PROCESSOR AMD64)
    set(libs /usr/lib/x86_64-linux-gnu/wine/x86_64-windows)
else()
    set(CMAKE_SYSTEM_PROCESSOR X86)
    set(libs /usr/i686-w64-mingw32/lib)
    set(CMAKE_EXE_LINKER_FLAGS_INIT /safeseh:no)
endif()
set(CMAKE_CXX_STANDARD_LIBRARIES "${libs}/libucrtbase.a ${libs}/libkernel32.a ${libs}/libuser32.a \
${libs}/libgdi32.a ${libs}/libadvapi32.a" CACHE STRING "")
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
