# roundup_resources(TARGET): the version resource of a module or program for Windows, from the project's version, and
# for a program its manifest. Nothing on other systems.

if(WIN32)
    enable_language(RC)
endif()

function(roundup_resources target)
    if(NOT WIN32)
        return()
    endif()
    get_target_property(kind ${target} TYPE)
    get_target_property(resource_name ${target} OUTPUT_NAME)
    if(kind STREQUAL "EXECUTABLE")
        set(resource_type VFT_APP)
        set(resource_suffix .exe)
        set(resource_manifest "CREATEPROCESS_MANIFEST_RESOURCE_ID RT_MANIFEST \"${PROJECT_SOURCE_DIR}/cmake/program.manifest\"")
    else()
        set(resource_type VFT_DLL)
        set(resource_suffix .dll)
        set(resource_manifest "")
    endif()
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${script} @ONLY)
    target_sources(${target} PRIVATE ${script})
    # The resource compiler knows none of the compiler's options for warnings.
    set_source_files_properties(${script} PROPERTIES LANGUAGE RC
        OBJECT_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/program.manifest)
endfunction()
