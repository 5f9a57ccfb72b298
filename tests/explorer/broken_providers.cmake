# The provider with one fault each: its own sources, one line of them edited.
function(broken_provider name source from to)
    set(file ${PROJECT_SOURCE_DIR}/si-ready/src/${source}.cpp)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${name})
    file(READ ${file} text)
    string(FIND "${text}" "${from}" place)
    if(place EQUAL -1)
        message(FATAL_ERROR "${file} no longer has the line that ${name} breaks: ${from}")
    endif()
    string(REPLACE "${from}" "${to}" text "${text}")
    file(CONFIGURE OUTPUT ${folder}/${source}.cpp CONTENT "${text}" @ONLY)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    # The other sources are compiled already.
    add_library(${name} SHARED ${folder}/${source}.cpp
        $<FILTER:$<TARGET_OBJECTS:si-ready>,EXCLUDE,/${source}\\.cpp\\.o$>)
    target_compile_features(${name} PRIVATE cxx_std_17)
    set_target_properties(${name} PROPERTIES CXX_VISIBILITY_PRESET hidden)
    target_include_directories(${name} PRIVATE
        ${PROJECT_SOURCE_DIR}/si-ready ${PROJECT_SOURCE_DIR}/si-ready/src ${PROJECT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE PkgConfig::JSONCPP)
    target_link_options(${name} PRIVATE
        -Wl,--version-script=${PROJECT_BINARY_DIR}/si-ready/exports.map)
endfunction()
