# FreeType and zlib for the MinGW builds of vell-fontmaker, built with the cross compiler from
# Debian's source packages: the very sources (with Debian's patches) of the libraries the native
# program links, so that both programs render a font alike. tools/setup.sh fetches them into
# build/sources/NAME (NAME/.vell-version holds the version); each is built once per build tree,
# through its own CMake files, as a static library under <build>/debian/NAME-VERSION.
#
# Defines the target vell_font_libraries (FreeType and zlib) and sets VELL_FONT_LIBRARIES_FROM to
# what they were built from; leaves both unset when the sources are missing.
include(ExternalProject)

set(VELL_DEBIAN_SOURCES ${PROJECT_SOURCE_DIR}/build/sources
    CACHE PATH "The unpacked Debian source packages of FreeType and zlib (tools/setup.sh)")

# vell_debian_source(NAME): VELL_<NAME>_SOURCE, VELL_<NAME>_VERSION and VELL_<NAME>_PREFIX, the
# folder the library is installed in; false VELL_<NAME>_SOURCE when it was not fetched.
macro(vell_debian_source name)
    string(TOUPPER ${name} _upper)
    set(_stamp ${VELL_DEBIAN_SOURCES}/${name}/.vell-version)
    if(EXISTS ${_stamp})
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${_stamp})
        file(STRINGS ${_stamp} VELL_${_upper}_VERSION LIMIT_COUNT 1)
        string(REGEX REPLACE "^[0-9]+:" "" _version ${VELL_${_upper}_VERSION}) # no epoch in paths
        set(VELL_${_upper}_SOURCE ${VELL_DEBIAN_SOURCES}/${name})
        set(VELL_${_upper}_PREFIX ${PROJECT_BINARY_DIR}/debian/${name}-${_version})
    else()
        set(VELL_${_upper}_SOURCE "")
    endif()
endmacro()

vell_debian_source(freetype)
vell_debian_source(zlib)
if(NOT VELL_FREETYPE_SOURCE OR NOT VELL_ZLIB_SOURCE)
    return()
endif()

# Release builds with the project's compilers; two jobs, as the rest of the build.
set(_common -DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE} -DCMAKE_BUILD_TYPE=Release
            -DCMAKE_INSTALL_PREFIX=<INSTALL_DIR>
            -DCMAKE_POLICY_DEFAULT_CMP0074=NEW -Wno-dev)
set(_build ${CMAKE_COMMAND} --build <BINARY_DIR> --parallel 2)

set(_zlib ${VELL_ZLIB_PREFIX}/lib/libzlibstatic.a)
ExternalProject_Add(vell_zlib_build
    PREFIX ${VELL_ZLIB_PREFIX}/build
    SOURCE_DIR ${VELL_ZLIB_SOURCE}
    INSTALL_DIR ${VELL_ZLIB_PREFIX}
    CMAKE_ARGS ${_common}
    # Only the static library and its two headers (zconf.h is made by the build), put in place by
    # the build step, which names them as its products: a rebuilt library relinks the programs.
    BUILD_COMMAND ${_build} --target zlibstatic
          COMMAND ${CMAKE_COMMAND} -E make_directory <INSTALL_DIR>/lib
          COMMAND ${CMAKE_COMMAND} -E copy <BINARY_DIR>/libzlibstatic.a <INSTALL_DIR>/lib/
          COMMAND ${CMAKE_COMMAND} -E copy <BINARY_DIR>/zconf.h <SOURCE_DIR>/zlib.h
                  <INSTALL_DIR>/include/
    INSTALL_COMMAND ""
    BUILD_BYPRODUCTS ${_zlib})

# FreeType flattens curves by another method where the compiler has no SSE2 (ftgrays.c), and a few
# coverage values come out one off the x86_64 library's: the 32-bit build, which needs SSE2 anyway
# (CMakeLists.txt), compiles it with SSE2 as well, so that it renders as the 64-bit builds do.
set(_freetype_flags "")
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86|i.86)$")
    set(_freetype_flags "-DCMAKE_C_FLAGS=-msse2 -mfpmath=sse")
endif()

# Debian configures FreeType --without-bzip2 --without-harfbuzz, with zlib, libpng and brotli.
# Of these only zlib reads a scalable font (WOFF); libpng (colour bitmap glyphs) and brotli (WOFF2)
# are left out here, and the font maker refuses colour glyphs on either side.
set(_freetype ${VELL_FREETYPE_PREFIX}/lib/libfreetype.a)
ExternalProject_Add(vell_freetype_build
    PREFIX ${VELL_FREETYPE_PREFIX}/build
    SOURCE_DIR ${VELL_FREETYPE_SOURCE}
    INSTALL_DIR ${VELL_FREETYPE_PREFIX}
    CMAKE_ARGS ${_common} -DBUILD_SHARED_LIBS=OFF -DFT_REQUIRE_ZLIB=ON
               -DZLIB_INCLUDE_DIR=${VELL_ZLIB_PREFIX}/include -DZLIB_LIBRARY=${_zlib}
               -DFT_DISABLE_BZIP2=ON -DFT_DISABLE_HARFBUZZ=ON -DFT_DISABLE_PNG=ON
               -DFT_DISABLE_BROTLI=ON ${_freetype_flags}
    BUILD_COMMAND ${_build} COMMAND ${CMAKE_COMMAND} --install <BINARY_DIR>
    INSTALL_COMMAND ""
    DEPENDS vell_zlib_build
    BUILD_BYPRODUCTS ${_freetype})

# The include folders must exist when the build is generated, before the libraries are built.
file(MAKE_DIRECTORY ${VELL_ZLIB_PREFIX}/include ${VELL_FREETYPE_PREFIX}/include/freetype2)
add_library(vell_debian_zlib STATIC IMPORTED GLOBAL)
set_target_properties(vell_debian_zlib PROPERTIES IMPORTED_LOCATION ${_zlib}
                      INTERFACE_INCLUDE_DIRECTORIES ${VELL_ZLIB_PREFIX}/include)
add_dependencies(vell_debian_zlib vell_zlib_build)
add_library(vell_debian_freetype STATIC IMPORTED GLOBAL)
set_target_properties(vell_debian_freetype PROPERTIES IMPORTED_LOCATION ${_freetype}
                      INTERFACE_INCLUDE_DIRECTORIES ${VELL_FREETYPE_PREFIX}/include/freetype2
                      INTERFACE_LINK_LIBRARIES vell_debian_zlib)
add_dependencies(vell_debian_freetype vell_freetype_build)

add_library(vell_font_libraries INTERFACE)
target_link_libraries(vell_font_libraries INTERFACE vell_debian_freetype vell_debian_zlib)
set(VELL_FONT_LIBRARIES_FROM
    "Debian's sources of FreeType ${VELL_FREETYPE_VERSION} and zlib ${VELL_ZLIB_VERSION}")
