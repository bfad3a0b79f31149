# What every target of the project is compiled and linked with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

add_library(roundup_options INTERFACE)
target_include_directories(roundup_options INTERFACE ${PROJECT_SOURCE_DIR})
target_link_libraries(roundup_options INTERFACE Threads::Threads)
set(warnings -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
target_compile_options(roundup_options INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:${warnings}>")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies inside of its own std::basic_string, where there are none (GCC bug 105651).
    target_compile_options(roundup_options INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>")
endif()
if(ROUNDUP_WERROR)
    target_compile_options(roundup_options INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:-Werror>")
endif()
if(WIN32)
    # Windows 10 is the oldest system that the live machine supports.
    target_compile_definitions(roundup_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                         _WIN32_WINNT=0x0A00 WINVER=0x0A00)
    # The linker leaves out what nothing reaches: the module carries the whole of the layers in its archives.
    target_compile_options(roundup_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-ffunction-sections> $<$<COMPILE_LANGUAGE:CXX>:-fdata-sections>)
    target_link_options(roundup_options INTERFACE -Wl,--gc-sections)
    # Half again as much code, and no faster where the reading is the limit.
    string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
    # The records of roundup.h hold char16_t in everything that becomes one program; hosts of the DLL see wchar_t.
    target_compile_definitions(roundup_options INTERFACE ROUNDUP_TEXT_CHAR16)
endif()

# Sanitizers go to every object, also to GoogleTest built from source, so that no report is lost at a border.
set(sanitizers ${ROUNDUP_SANITIZE})
if(ROUNDUP_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "ROUNDUP_FUZZ needs clang: libFuzzer is part of it")
    endif()
    set(sanitizers address,undefined)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(sanitizers)
    add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
    add_link_options(-fsanitize=${sanitizers})
endif()
