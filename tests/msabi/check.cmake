# Builds the Visual Studio project client/ against the release ZIP that the release_zip test
# unpacked in BUILD/release-zip, with clang-cl (TOOLCHAIN, cmake/clang-cl.cmake); checks that its two programs, without and with
# UNICODE, import between them every Microsoft name the DLL exports and nothing else; runs them
# under EMULATOR, the first once per pixel path (VELL_SIMD). Where 32-bit programs cannot run
# (VELL_WIN32=0) the i686 programs are only built and checked. MINGW_CLIENT, the same client built
# by MinGW with UNICODE, runs last.
set(work ${BUILD}/msabi-check)
file(REMOVE_RECURSE ${work})
function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${work}/client RESULT_VARIABLE status
                    OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "failed (${status}): ${ARGN}\n${out}")
    endif()
    set(out "${out}" PARENT_SCOPE)
endfunction()
file(MAKE_DIRECTORY ${work}/client)
file(GLOB prefix LIST_DIRECTORIES true ${BUILD}/release-zip/VellBase-*-win??)
if(NOT prefix)
    message(FATAL_ERROR "no unpacked release ZIP in ${BUILD}/release-zip")
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/client -B ${work}/client -G Ninja
    -DCMAKE_BUILD_TYPE=Release -DVELL_MSABI_ARCH=${ARCH} -DVELL_TEST_DATA=${DATA}
    -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}
    -DCMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${work}/client)

set(imported)
foreach(exe plain unicode)
    run(${READOBJ} --coff-imports ${exe}.exe)
    string(REGEX MATCH "Name: VellBase.dll[^}]*" block "${out}")
    string(REGEX MATCHALL "Symbol: [^ \n]+" names "${block}")
    list(APPEND imported ${names})
endforeach()
run(${READOBJ} --coff-exports ${prefix}/bin/VellBase.dll)
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
if(ARCH STREQUAL "i686" AND "$ENV{VELL_WIN32}" STREQUAL "0")
    message(STATUS "i686 Microsoft-ABI clients built, their ${count} imports found among the "
                   "DLL's exports; not run (this machine cannot run 32-bit programs)")
    return()
endif()

file(COPY ${prefix}/bin/VellBase.dll ${WAV} ${DATA}/quad16.bmp ${DATA}/sans16.bmp
     ${DATA}/pattern32.tga DESTINATION ${work}/client)
foreach(simd 0 sse2 avx2 best) # "best": no limit, the fastest path of this processor
    set(ENV{VELL_SIMD} ${simd})
    run(${EMULATOR} ${work}/client/plain.exe)
endforeach()
run(${EMULATOR} ${work}/client/unicode.exe)
message(STATUS "${out}")
run(${EMULATOR} ${MINGW_CLIENT}) # the same client built by MinGW, with UNICODE
