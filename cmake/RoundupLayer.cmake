# Layers: one static library for each folder of sources, and roundup_all, which links them.
#
# The archives need each other in circles (a backend of the seam uses the text units of utility, which stands on the
# seam), so they never name each other: roundup_all holds them as one group, which the linker reads until nothing is
# left open. A layer without sources yet is left out.

# roundup_layer(NAME FOLDER [RECURSE] [EXCLUDE REGEX...] [LIBRARIES TARGET...])
function(roundup_layer name folder)
    cmake_parse_arguments(PARSE_ARGV 2 arg "RECURSE" "" "EXCLUDE;LIBRARIES")
    if(arg_RECURSE)
        file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${folder}/*.cpp ${folder}/*.h)
    else()
        file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp ${folder}/*.h)
    endif()
    roundup_drop_foreign_sources(sources)
    foreach(regex IN LISTS arg_EXCLUDE)
        list(FILTER sources EXCLUDE REGEX ${regex})
    endforeach()
    set(units ${sources})
    list(FILTER units INCLUDE REGEX "\\.cpp$")
    if(NOT units)
        message(STATUS "${name}: no sources yet")
        return()
    endif()
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC roundup_options ${arg_LIBRARIES})
    set_property(GLOBAL APPEND PROPERTY ROUNDUP_LAYERS ${name})
endfunction()

# Removes the units whose file name says that they belong to another system than the one built for.
function(roundup_drop_foreign_sources list)
    set(sources ${${list}})
    if(WIN32)
        list(FILTER sources EXCLUDE REGEX "_(linux|posix)\\.(cpp|h)$")
    else()
        list(FILTER sources EXCLUDE REGEX "_windows\\.(cpp|h)$")
    endif()
    set(${list} ${sources} PARENT_SCOPE)
endfunction()

# Makes roundup_all from the layers that roundup_layer made.
function(roundup_link_layers)
    get_property(layers GLOBAL PROPERTY ROUNDUP_LAYERS)
    add_library(roundup_all INTERFACE)
    target_link_libraries(roundup_all INTERFACE roundup_options)
    if(layers)
        list(REVERSE layers)
        list(JOIN layers "," group)
        target_link_libraries(roundup_all INTERFACE "$<LINK_GROUP:RESCAN,${group}>")
    endif()
endfunction()
