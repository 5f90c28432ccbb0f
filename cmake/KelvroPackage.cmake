# Installs what a host compiles against (find_package(Kelvrostorage), target
# Kelvrostorage::interfaces), and the plug-in file, which it loads at run time (its path is in
# Kelvrostorage_PLUGIN) and may link as Kelvrostorage::plugin for the records' JSON conversions.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Kelvrostorage")

install(TARGETS kelvro_interfaces kelvrostorage
    EXPORT KelvrostorageTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/kelvrostorage"
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kelvrostorage")

install(EXPORT KelvrostorageTargets
    NAMESPACE Kelvrostorage::
    DESTINATION "${_package_dir}")

configure_package_config_file(
    "${CMAKE_CURRENT_LIST_DIR}/KelvrostorageConfig.cmake.in"
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfig.cmake"
    INSTALL_DESTINATION "${_package_dir}"
    PATH_VARS CMAKE_INSTALL_LIBDIR)

# Slot order and record layout are the binary contract, and they may change with any minor version
# before 1.0: a host must be built against the headers of the version that it loads.
write_basic_package_version_file(
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)

install(FILES
    "${CMAKE_CURRENT_LIST_DIR}/KelvroMongocxx.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfig.cmake"
    "${CMAKE_CURRENT_BINARY_DIR}/KelvrostorageConfigVersion.cmake"
    DESTINATION "${_package_dir}")

install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" "${PROJECT_SOURCE_DIR}/NOTICE"
    DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/licenses/kelvrostorage")
