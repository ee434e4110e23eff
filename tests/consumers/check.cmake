# Put into a consumer by -D CMAKE_PROJECT_INCLUDE=...: builds it as strictly as the library builds itself, and looks at
# what the library brought along: it must be the library alone, without any flag.
if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/Flags.cmake)
add_compile_options(${KORVAN_WARNINGS} ${KORVAN_NO_EXCEPTIONS})
get_cmake_property(cache_before CACHE_VARIABLES)

# targets_below(directory result): the targets of a directory and of those below it.
function(targets_below directory result)
    get_directory_property(targets DIRECTORY "${directory}" BUILDSYSTEM_TARGETS)
    get_directory_property(subdirectories DIRECTORY "${directory}" SUBDIRECTORIES)
    foreach(subdirectory IN LISTS subdirectories)
        targets_below("${subdirectory}" more)
        list(APPEND targets ${more})
    endforeach()
    set(${result} ${targets} PARENT_SCOPE)
endfunction()

function(check_consumer)
    set_target_properties(game PROPERTIES NO_SYSTEM_FROM_IMPORTED ON) # the headers' warnings count too
    file(GENERATE OUTPUT flags.txt CONTENT "$<JOIN:$<TARGET_PROPERTY:game,COMPILE_OPTIONS>, >" TARGET game)

    foreach(property COMPILE_OPTIONS COMPILE_DEFINITIONS LINK_OPTIONS LINK_LIBRARIES)
        get_target_property(value korvan::relay_msg INTERFACE_${property})
        if(value)
            message(SEND_ERROR "korvan::relay_msg brings ${property}: ${value}")
        endif()
    endforeach()
    get_target_property(features korvan::relay_msg INTERFACE_COMPILE_FEATURES)
    if(NOT features STREQUAL "cxx_std_17")
        message(SEND_ERROR "korvan::relay_msg brings the features ${features}")
    endif()

    targets_below("${CMAKE_SOURCE_DIR}" targets)
    list(REMOVE_ITEM targets game relay_msg)
    if(targets)
        message(SEND_ERROR "built beside the library: ${targets}")
    endif()

    # The project's own settings begin with its name; a setting of everyone's is not its to make.
    get_cmake_property(cache CACHE_VARIABLES)
    list(REMOVE_ITEM cache ${cache_before})
    list(FILTER cache EXCLUDE REGEX "^(KORVAN_|korvan_relay_|FETCHCONTENT_|CMAKE_PROJECT_)")
    if(cache)
        message(SEND_ERROR "set in the cache: ${cache}")
    endif()
endfunction()
cmake_language(DEFER CALL check_consumer)
