# Checks of the sources themselves, run by ctest with the host tests (ctest --preset host):
#   format         every tracked C++ file is as clang-format writes it (.clang-format);
#   readme_client  the README's minimal client is demo/minimal.cpp;
#   msabi_exports  the Microsoft names of the DLL (base/msabi_*) are what the header gives
#                  (tools/msabi_exports.py --check).
# A check whose tools are missing here is left out, with a line saying so.
set(script ${CMAKE_CURRENT_LIST_DIR}/check_sources.sh)
find_program(VELL_CLANG_FORMAT NAMES clang-format clang-format-14)
find_package(Git QUIET)
if(VELL_CLANG_FORMAT AND GIT_FOUND AND EXISTS ${PROJECT_SOURCE_DIR}/.git)
    add_test(NAME format COMMAND bash ${script} format ${VELL_CLANG_FORMAT}
             WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
else()
    message(STATUS "clang-format, git or the repository missing: no formatting check")
endif()
add_test(NAME readme_client COMMAND bash ${script} readme WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})

find_package(Python3 COMPONENTS Interpreter)
find_program(VELL_CLANGXX clang++)
if(Python3_Interpreter_FOUND AND VELL_CLANGXX AND EXISTS /usr/include/wine/wine/windows
   AND EXISTS /usr/x86_64-w64-mingw32/include/windows.h)
    add_test(NAME msabi_exports
             COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tools/msabi_exports.py --check)
    set_tests_properties(msabi_exports PROPERTIES TIMEOUT 300)
else()
    message(STATUS "clang++, Wine's or MinGW-w64's headers missing: no check of the Microsoft names")
endif()
