# What a build needs of Debian's packages. Whoever lacks one is told which, and not only what was looked for.

function(si_lacking what package)
    if(CMAKE_CROSSCOMPILING AND package MATCHES "^lib")
        string(APPEND package " for ${CMAKE_LIBRARY_ARCHITECTURE}")
    endif()
    message(FATAL_ERROR "${what} is missing, of Debian's package ${package}: apt-get install ${package}")
endfunction()

# si_need_header(VARIABLE FILE PACKAGE): the folder in which the header lies.
function(si_need_header variable file package)
    find_path(${variable} ${file})
    if(NOT ${variable})
        si_lacking(${file} ${package})
    endif()
endfunction()

# si_need_program(VARIABLE PROGRAM PACKAGE)
function(si_need_program variable program package)
    find_program(${variable} ${program})
    if(NOT ${variable})
        si_lacking("The program ${program}" ${package})
    endif()
endfunction()

# si_need_library(PREFIX MODULE PACKAGE): what pkg-config knows as MODULE, as PkgConfig::PREFIX.
macro(si_need_library prefix module package)
    find_package(PkgConfig QUIET)
    if(NOT PkgConfig_FOUND)
        si_lacking("The program pkg-config" pkg-config)
    endif()
    pkg_check_modules(${prefix} QUIET IMPORTED_TARGET ${module})
    if(NOT ${prefix}_FOUND)
        si_lacking("The library ${module}" ${package})
    endif()
endmacro()

# si_need_config(NAME PACKAGE): a package that brings a description of itself for CMake.
macro(si_need_config name package)
    find_package(${name} QUIET CONFIG)
    if(NOT ${name}_FOUND)
        si_lacking("${name}" ${package})
    endif()
endmacro()
