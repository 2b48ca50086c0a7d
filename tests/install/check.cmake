# The release ZIP and the client project (client/) built against it, run under EMULATOR, by ROUTE:
#   pack          makes the release ZIP of the build in BUILD and unpacks it in BUILD/release-zip;
#   zip           MinGW (TOOLCHAIN, cmake/mingw-default.cmake) with find_package in the ZIP;
#   subdirectory  MinGW with add_subdirectory on the library's sources in SOURCE, after building
#                 the library alone (--target VellBase) and installing it;
#   msabi         a Visual Studio project (clang-cl, TOOLCHAIN) with find_package in the ZIP; its
#                 two programs must import every Microsoft name the DLL exports and nothing else.
#                 Where 32-bit programs cannot run (VELL_WIN32=0) the i686 ones are only checked.
# The programs run in a folder with the test data (DATA, WAV) and nothing of MinGW's: a MinGW
# program that needs libstdc++-6.dll or libgcc's DLL does not start there.
set(zips ${BUILD}/release-zip)
set(work ${BUILD}/client-${ROUTE})
file(GLOB unpacked LIST_DIRECTORIES true ${zips}/VellBase-*-win??)
function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${work} RESULT_VARIABLE status
                    OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT status EQUAL 0)
        string(REPLACE ";" " " command "${ARGN}")
        message(FATAL_ERROR "failed (${status}): ${command}\n${out}")
    endif()
    set(out "${out}" PARENT_SCOPE)
endfunction()
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})

if(ROUTE STREQUAL "pack")
    file(REMOVE_RECURSE ${zips})
    run(${CPACK} --config ${BUILD}/CPackConfig.cmake -B ${zips})
    file(GLOB zip ${zips}/VellBase-*.zip)
    run(${CMAKE_COMMAND} -E chdir ${zips} ${CMAKE_COMMAND} -E tar xf ${zip})
    return()
endif()

set(library -DCMAKE_PREFIX_PATH=${unpacked})
if(ROUTE STREQUAL "subdirectory")
    set(library -DVELLBASE_SOURCE=${SOURCE})
endif()
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/client -B ${work} -G Ninja
    -DCMAKE_BUILD_TYPE=Release -DVELL_TEST_DATA=${DATA} -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}
    -DVELL_MSABI_ARCH=${ARCH}
    ${library})
if(ROUTE STREQUAL "subdirectory") # the install must find every file it names
    run(${CMAKE_COMMAND} --build ${work} --target VellBase)
    run(${CMAKE_COMMAND} --install ${work}/vellbase --prefix ${work}/installed)
endif()
run(${CMAKE_COMMAND} --build ${work})

if(ROUTE STREQUAL "msabi")
    set(imported)
    foreach(exe plain unicode)
        run(${READOBJ} --coff-imports ${exe}.exe)
        string(REGEX MATCH "Name: VellBase.dll[^}]*" block "${out}")
        string(REGEX MATCHALL "Symbol: [^ \n]+" names "${block}")
        list(APPEND imported ${names})
    endforeach()
    run(${READOBJ} --coff-exports ${unpacked}/bin/VellBase.dll)
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
endif()

file(COPY ${WAV} ${DATA}/quad16.bmp ${DATA}/sans16.bmp ${DATA}/pattern32.tga DESTINATION ${work})
# The Microsoft-ABI caller goes through every pixel path; "best": the fastest this processor has.
set(paths_msabi 0 sse2 avx2)
foreach(simd ${paths_${ROUTE}} best)
    set(ENV{VELL_SIMD} ${simd})
    run(${EMULATOR} ${work}/plain.exe)
endforeach()
run(${EMULATOR} ${work}/unicode.exe)
if(ROUTE STREQUAL "zip") # the demo in the ZIP runs as it is
    run(${CMAKE_COMMAND} -E chdir ${unpacked}/demo ${EMULATOR} ${unpacked}/demo/VellDemo.exe 1)
    file(READ ${unpacked}/demo/VellDemo.log log)
    if(NOT log MATCHES "VellDemo: [0-9]+ frames")
        message(FATAL_ERROR "the ZIP's demo showed no frame:\n${log}")
    endif()
endif()
