# Installs the build in BUILD into a fresh prefix, builds the client project against it with
# find_package, and runs the client under EMULATOR.
set(work ${BUILD}/install-check)
file(REMOVE_RECURSE ${work})
foreach(step
        "${CMAKE_COMMAND};--install;${BUILD};--prefix;${work}/prefix"
        "${CMAKE_COMMAND};-S;${CMAKE_CURRENT_LIST_DIR}/client;-B;${work}/client;-G;Ninja;-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN};-DCMAKE_PREFIX_PATH=${work}/prefix"
        "${CMAKE_COMMAND};--build;${work}/client"
        "${EMULATOR};${work}/client/client.exe")
    execute_process(COMMAND ${step} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "failed (${status}): ${step}\n${out}")
    endif()
endforeach()
message(STATUS "client of the installed package ran: ${out}")
