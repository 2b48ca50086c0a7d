# Builds the Microsoft-ABI client (client.cpp) as a Visual Studio project would, /EHsc /MD /O2 /GS,
# once without and once with UNICODE; checks that between them they import every Microsoft name the
# DLL exports and nothing it does not; then runs them (i686: once per pixel path). Where 32-bit
# programs cannot run (VELL_WIN32=0), the i686 client is only linked and checked.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${WORK} RESULT_VARIABLE status
                    OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "failed (${status}): ${ARGN}\n${out}")
    endif()
    set(out "${out}" PARENT_SCOPE)
endfunction()

# Wine's headers as the SDK and the C runtime's; Wine 8's winnt.h defines functions that clang
# knows as built-in intrinsics, renamed out of the way.
set(wine /usr/include/wine/wine)
set(flags --target=${ARCH}-pc-windows-msvc /nologo /EHsc /MD /O2 /GS /W3 /WX -imsvc ${wine}/msvcrt
          -imsvc ${wine}/windows -D_MSVCR_VER=140 -I${INCLUDE})
foreach(name CompareExchange128 And64 CompareExchangePointer ExchangeAdd64 ExchangePointer
             Increment64 Decrement64 Or64 Xor64)
    list(APPEND flags -D_Interlocked${name}=wine_Interlocked${name})
endforeach()
if(ARCH STREQUAL "x86_64")
    set(libs /usr/lib/x86_64-linux-gnu/wine/x86_64-windows)
    set(link_flags)
else()
    set(libs /usr/i686-w64-mingw32/lib)
    set(link_flags /safeseh:no)
endif()

run(${CLANG_CL} ${flags} /c /Focrt.obj -- ${SOURCE}/crt.cpp)
run(${LLVM_RC} -I ${DATA} -fo client.res ${SOURCE}/client.rc)
set(imported)
foreach(variant plain unicode)
    set(defines)
    if(variant STREQUAL "unicode")
        set(defines /DUNICODE /D_UNICODE)
    endif()
    run(${CLANG_CL} ${flags} ${defines} /c /Fo${variant}.obj -- ${SOURCE}/client.cpp)
    run(${LLD_LINK} /nologo /out:${variant}.exe /entry:mainCRTStartup /subsystem:console
        /nodefaultlib ${link_flags} ${variant}.obj crt.obj client.res ${LIB} ${libs}/libucrtbase.a
        ${libs}/libkernel32.a ${libs}/libuser32.a ${libs}/libgdi32.a ${libs}/libadvapi32.a)
    run(${READOBJ} --coff-imports ${variant}.exe)
    string(REGEX MATCH "Name: VellBase.dll[^}]*" block "${out}")
    string(REGEX MATCHALL "Symbol: [^ \n]+" names "${block}")
    list(APPEND imported ${names})
endforeach()
run(${READOBJ} --coff-exports ${DLL})
string(REGEX MATCHALL "Name: \\?[^\n]+" exported "${out}")
list(TRANSFORM exported REPLACE "^Name: " "")
list(TRANSFORM imported REPLACE "^Symbol: " "")
list(REMOVE_DUPLICATES imported)
list(SORT imported)
list(SORT exported)
list(LENGTH exported count)
if(NOT imported STREQUAL exported OR count EQUAL 0)
    message(FATAL_ERROR "the clients import:\n${imported}\nthe DLL exports:\n${exported}")
endif()

file(COPY ${DLL} ${WAV} ${DATA}/quad16.bmp ${DATA}/sans16.bmp ${DATA}/pattern32.tga
     DESTINATION ${WORK})
if(ARCH STREQUAL "i686" AND "$ENV{VELL_WIN32}" STREQUAL "0")
    message(STATUS "i686 Microsoft-ABI clients linked, their ${count} imports found among the "
                   "DLL's exports; not run (this machine cannot run 32-bit programs)")
    return()
endif()
set(runs "plain.exe" "unicode.exe")
if(ARCH STREQUAL "i686") # the pixel paths of every instruction set, the stack misaligned
    set(runs "plain.exe;0" "plain.exe;sse2" "plain.exe;avx2" "plain.exe;" "unicode.exe;")
endif()
foreach(entry IN LISTS runs)
    list(GET entry 0 exe)
    list(LENGTH entry n)
    if(n GREATER 1)
        list(GET entry 1 simd)
        set(ENV{VELL_SIMD} "${simd}")
    endif()
    run(${EMULATOR} ${WORK}/${exe})
    message(STATUS "${exe} VELL_SIMD=$ENV{VELL_SIMD}: ${out}")
endforeach()
