# A TV build takes the platform from the TV's SDK: its headers instead of platform/, and its libraries.
# There is neither a virtual TV then nor anything that could answer a test.
if(SI_TV_SDK_INCLUDE_DIR OR SI_TV_SDK_LIBRARIES)
    set(SI_BUILD_VIRTUAL_TV OFF)
    set(SI_BUILD_TESTS OFF)
endif()

if(SI_TV_SDK_INCLUDE_DIR)
    file(GLOB declarations RELATIVE ${PROJECT_SOURCE_DIR} platform/*.h)
    foreach(header IN LISTS declarations)
        if(NOT EXISTS ${SI_TV_SDK_INCLUDE_DIR}/${header})
            list(APPEND not_replaced ${header})
        endif()
    endforeach()
    if("${not_replaced}" STREQUAL "${declarations}")
        message(FATAL_ERROR "SI_TV_SDK_INCLUDE_DIR: ${SI_TV_SDK_INCLUDE_DIR} has none of ${declarations} "
            "(docs/tv-build.md tells what they are)")
    elseif(not_replaced)
        message(STATUS "Declared by this repository, not by the TV's SDK: ${not_replaced}")
    endif()
endif()

foreach(library IN LISTS SI_TV_SDK_LIBRARIES)
    if(IS_ABSOLUTE "${library}" AND NOT EXISTS "${library}")
        message(FATAL_ERROR "SI_TV_SDK_LIBRARIES: there is no ${library}")
    endif()
endforeach()
