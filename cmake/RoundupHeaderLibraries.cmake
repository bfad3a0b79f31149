# roundup_header_libraries: CLI11 and nlohmann-json, which are headers alone.
#
# A cross build cannot have /usr/include on its path, where the headers of the build machine's C library stand, so it
# gets a folder with links to just these two.

add_library(roundup_header_libraries INTERFACE)
if(CMAKE_CROSSCOMPILING)
    set(ROUNDUP_HEADER_ROOT /usr/include CACHE PATH "Where the folders CLI and nlohmann lie")
    set(links ${PROJECT_BINARY_DIR}/header-libraries)
    file(MAKE_DIRECTORY ${links})
    foreach(folder CLI nlohmann)
        if(EXISTS ${ROUNDUP_HEADER_ROOT}/${folder})
            file(CREATE_LINK ${ROUNDUP_HEADER_ROOT}/${folder} ${links}/${folder} SYMBOLIC)
        endif()
    endforeach()
    target_include_directories(roundup_header_libraries SYSTEM INTERFACE ${links})
else()
    find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp)
    find_path(NLOHMANN_JSON_INCLUDE_DIR nlohmann/json.hpp)
    foreach(variable CLI11_INCLUDE_DIR NLOHMANN_JSON_INCLUDE_DIR)
        # As an include folder /usr/include would come before the compiler's own and hide some of its headers.
        if(${variable} AND NOT ${variable} STREQUAL "/usr/include")
            target_include_directories(roundup_header_libraries SYSTEM INTERFACE ${${variable}})
        endif()
    endforeach()
endif()
