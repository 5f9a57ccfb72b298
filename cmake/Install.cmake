# Where the parts are installed, and how those that look for each other lie to each other. Nothing knows where it
# was installed: a program begins at its own place, so that the whole may be staged, moved and renamed.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The provider is no library to link with, and the virtual TV none to link with from elsewhere: each lies apart.
set(SI_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/si-ready)
set(SI_VIRTUAL_TV_DIR ${CMAKE_INSTALL_LIBDIR}/vtv)
set(SI_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/si-ready)
set(SI_DATA_DIR ${CMAKE_INSTALL_DATADIR}/vtv)

# si_install(...): as install(), where somebody wants us installed.
function(si_install)
    if(SI_INSTALL)
        install(${ARGV})
    endif()
endfunction()

# si_path_between(VARIABLE FROM TO): from one installed folder to another.
function(si_path_between variable from to)
    set(prefix ${CMAKE_INSTALL_PREFIX})
    cmake_path(ABSOLUTE_PATH from BASE_DIRECTORY ${prefix} NORMALIZE)
    cmake_path(ABSOLUTE_PATH to BASE_DIRECTORY ${prefix} NORMALIZE)
    cmake_path(RELATIVE_PATH to BASE_DIRECTORY ${from} OUTPUT_VARIABLE path)
    set(${variable} ${path} PARENT_SCOPE)
endfunction()

si_path_between(SI_PROGRAMS_TO_PLUGINS ${CMAKE_INSTALL_BINDIR} ${SI_PLUGIN_DIR})
si_path_between(SI_PROGRAMS_TO_VIRTUAL_TV ${CMAKE_INSTALL_BINDIR} ${SI_VIRTUAL_TV_DIR})
si_path_between(SI_PROGRAMS_TO_DATA ${CMAKE_INSTALL_BINDIR} ${SI_DATA_DIR})
si_path_between(SI_VIRTUAL_TV_TO_DATA ${SI_VIRTUAL_TV_DIR} ${SI_DATA_DIR})
si_path_between(SI_VIRTUAL_TV_TO_PROGRAMS ${SI_VIRTUAL_TV_DIR} ${CMAKE_INSTALL_BINDIR})
