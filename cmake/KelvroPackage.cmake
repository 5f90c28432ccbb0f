# Installs, in three components: the plug-in file (plugin); what a host is compiled with (dev):
# find_package(Kelvrostorage) has the target Kelvrostorage::interfaces, the path of the plug-in file
# in Kelvrostorage_PLUGIN and, for the records' JSON conversions, the file as Kelvrostorage::plugin,
# and pkg-config has the first two by the name kelvrostorage; the programs with their data (tools).

include(CMakePackageConfigHelpers)

set(_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Kelvrostorage")
set(_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# --- plugin

install(TARGETS kelvro_interfaces kelvrostorage
    EXPORT KelvrostorageTargets
    LIBRARY DESTINATION "${KELVRO_INSTALL_PLUGINDIR}" COMPONENT plugin
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kelvrostorage" COMPONENT dev)

install(FILES README.md CHANGELOG.md CONTRIBUTING.md NOTICE
    DESTINATION "${KELVRO_INSTALL_DOCDIR}" COMPONENT plugin)
install(DIRECTORY docs
    DESTINATION "${KELVRO_INSTALL_DOCDIR}" COMPONENT plugin
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg")
# Where the pages look for it.
install(DIRECTORY packaging/growing
    DESTINATION "${KELVRO_INSTALL_DOCDIR}/packaging" COMPONENT plugin)
# A Debian package has its licence in a file of another form: see packaging/copyright.
install(FILES LICENSE DESTINATION "${KELVRO_INSTALL_DOCDIR}" COMPONENT licence)

# --- dev

install(EXPORT KelvrostorageTargets
    NAMESPACE Kelvrostorage::
    DESTINATION "${_package_dir}" COMPONENT dev)

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/KelvrostorageConfig.cmake.in"
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfig.cmake"
    INSTALL_DESTINATION "${_package_dir}"
    PATH_VARS KELVRO_INSTALL_PLUGINDIR)

# Slot order and record layout are the binary contract, and they may change with any minor version
# before 1.0: a host must be built against the headers of the version that it loads.
write_basic_package_version_file(
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)

install(FILES
    "${CMAKE_CURRENT_LIST_DIR}/KelvroMongocxx.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfigVersion.cmake"
    DESTINATION "${_package_dir}" COMPONENT dev)

# From its own place, for a prefix that is moved.
foreach(_folder IN ITEMS KELVRO_INSTALL_PLUGINDIR CMAKE_INSTALL_INCLUDEDIR)
    file(RELATIVE_PATH _from_pkgconfig_${_folder} "/prefix/${_pkgconfig_dir}"
        "/prefix/${${_folder}}")
endforeach()
configure_file(
    "${CMAKE_CURRENT_LIST_DIR}/kelvrostorage.pc.in"
    "${CMAKE_CURRENT_BINARY_DIR}/kelvrostorage.pc" @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/kelvrostorage.pc"
    DESTINATION "${_pkgconfig_dir}" COMPONENT dev)

# --- tools

foreach(_program IN ITEMS kelvro-host kelvro-contract)
    if(TARGET ${_program})
        install(TARGETS ${_program} RUNTIME COMPONENT tools)
    endif()
endforeach()
install(DIRECTORY host/data/
    DESTINATION "${KELVRO_INSTALL_DATADIR}" COMPONENT tools
    FILES_MATCHING PATTERN "*.ndjson")
install(DIRECTORY "${KELVRO_MANUAL_DIR}/"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools OPTIONAL
    FILES_MATCHING PATTERN "*.1")
install(DIRECTORY "${KELVRO_COMPLETION_DIR}/"
    DESTINATION "${KELVRO_INSTALL_COMPLETIONDIR}" COMPONENT tools OPTIONAL)

include(KelvroDebian)
