# Builds the client project in ROUTE's way and runs it under EMULATOR:
#   package       installs the build in BUILD into a fresh prefix and finds it with find_package;
#   subdirectory  takes the library's sources in SOURCE with add_subdirectory.
set(work ${BUILD}/consumer-${ROUTE})
file(REMOVE_RECURSE ${work})
set(configure ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/client -B ${work}/client -G Ninja
              -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
if(ROUTE STREQUAL "package")
    set(steps "${CMAKE_COMMAND};--install;${BUILD};--prefix;${work}/prefix"
              "${configure};-DCMAKE_PREFIX_PATH=${work}/prefix")
else()
    set(steps "${configure};-DVELLBASE_SOURCE=${SOURCE}")
endif()
list(APPEND steps "${CMAKE_COMMAND};--build;${work}/client" "${EMULATOR};${work}/client/client.exe")
foreach(step IN LISTS steps)
    execute_process(COMMAND ${step} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE out)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "failed (${status}): ${step}\n${out}")
    endif()
endforeach()
message(STATUS "the client (${ROUTE}) ran: ${out}")
