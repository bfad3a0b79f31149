# What `cmake --install` puts in place, in two components:
#
#   kit      the module, the headers of a host, the import library with its definition file, the package for CMake, the
#            documents of the interface and the sample host
#   program  the program, with its manual page, completion for shells and sample rules
#
# A kit holds the module of one system and word size: each build goes to a folder of its own.

if(NOT TARGET roundup)
    return()
endif()
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The headers keep their paths, so that a host includes "externfuncinc/roundup.h" as the tree does.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/roundup)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Roundup)
install(FILES externfuncinc/roundup.h DESTINATION ${headers}/externfuncinc COMPONENT kit)
install(FILES utility/ikvobject.h DESTINATION ${headers}/utility COMPONENT kit)

set_target_properties(roundup PROPERTIES EXPORT_NAME Roundup)
target_include_directories(roundup INTERFACE $<INSTALL_INTERFACE:${headers}>)
target_compile_features(roundup INTERFACE cxx_std_17)
install(
    TARGETS roundup
    EXPORT RoundupTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT kit
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT kit
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT kit)
if(WIN32)
    install(FILES cmake/roundup.def DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT kit)
endif()

install(EXPORT RoundupTargets NAMESPACE Roundup:: DESTINATION ${package} COMPONENT kit)
configure_package_config_file(
    cmake/RoundupConfig.cmake.in ${PROJECT_BINARY_DIR}/RoundupConfig.cmake INSTALL_DESTINATION ${package})
# Refuses a host of another word size as well.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RoundupConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(
    FILES ${PROJECT_BINARY_DIR}/RoundupConfig.cmake ${PROJECT_BINARY_DIR}/RoundupConfigVersion.cmake
    DESTINATION ${package} COMPONENT kit)

install(FILES docs/abi.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT kit)
install(DIRECTORY samples/host DESTINATION ${CMAKE_INSTALL_DATADIR}/roundup/samples COMPONENT kit)

if(TARGET roundup_host)
    install(TARGETS roundup_host RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
    install(DIRECTORY samples/machine/host/Config DESTINATION ${CMAKE_INSTALL_DATADIR}/roundup/samples
            COMPONENT program OPTIONAL)
    install(FILES docs/rules.md docs/reconciliation.md docs/formats.md docs/troubleshooting.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT program)
    if(NOT WIN32)
        install(FILES docs/roundup.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
        install(FILES completions/roundup.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
                RENAME roundup COMPONENT program)
        install(FILES completions/_roundup DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions
                COMPONENT program)
    endif()
endif()

# `cpack` makes a Debian package of both components; tools/make-packages makes the archive for Windows beside it.
if(NOT WIN32)
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGE_NAME roundup)
    set(CPACK_PACKAGE_VENDOR Roundup)
    set(CPACK_PACKAGE_CONTACT "Roundup <roundup@localhost>")
    set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_STRIP_FILES ON)
    set(CPACK_COMPONENTS_ALL kit program)
    set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)
    set(CPACK_DEB_COMPONENT_INSTALL ON)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION utils)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    include(CPack)
endif()
