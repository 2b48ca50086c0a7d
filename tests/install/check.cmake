# Builds the client project in ROUTE's way and runs it under EMULATOR:
#   package       installs the build in BUILD into a fresh prefix and finds it with find_package;
#   subdirectory  takes the library's sources in SOURCE with add_subdirectory.
set(work ${BUILD}/consumer-${ROUTE})
file(REMOVE_RECURSE ${work})
function(step)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT status EQUAL 0)
        string(REPLACE ";" " " command "${ARGN}")
        message(FATAL_ERROR "failed (${status}): ${command}\n${out}")
    endif()
    set(out "${out}" PARENT_SCOPE)
endfunction()

set(configure ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/client -B ${work}/client -G Ninja
              -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
if(ROUTE STREQUAL "package")
    step(${CMAKE_COMMAND} --install ${BUILD} --prefix ${work}/prefix)
    step(${configure} -DCMAKE_PREFIX_PATH=${work}/prefix)
else()
    step(${configure} -DVELLBASE_SOURCE=${SOURCE})
endif()
step(${CMAKE_COMMAND} --build ${work}/client)
step(${EMULATOR} ${work}/client/client.exe)
message(STATUS "the client (${ROUTE}) ran: ${out}")
