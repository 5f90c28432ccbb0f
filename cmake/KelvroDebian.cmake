# The Debian packages, one of each installed component: what CPack has to know of them.

set(CPACK_GENERATOR DEB)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME kelvrostorage)
# Else it would be the first line of each package's description, which has its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_COMPONENTS_ALL plugin dev tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# Adds what Debian wants in every package, and what it wants compressed.
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/KelvroDebianFiles.cmake")
set(CPACK_KELVRO_PACKAGING_DIR "${PROJECT_SOURCE_DIR}/packaging")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE kelvrostorage)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(_same_version "kelvrostorage (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME kelvrostorage)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_SECTION database)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_PLUGIN_DESCRIPTION
"storage driver plug-in for metering and telemetry servers
A Qt 5 plug-in that a metering and telemetry network server loads at run time.
It keeps uplink messages, downlink commands, meter readings, events and the
durable copies of driver state and downlink queues in MongoDB, and the
fast-changing state and queues in Redis.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME kelvrostorage-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_MULTIARCH same)
# Whoever loads the plug-in has to make the MongoDB driver's instance. The CMake package of
# libmongocxx-dev asks for libmongoc-dev's, which looks for pkg-config; Debian's does not say so.
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "${_same_version}, libmongoc-dev, libmongocxx-dev, pkgconf, qtbase5-dev (>= 5.15)")
set(CPACK_DEBIAN_DEV_DESCRIPTION
"what a host of the Kelvrostorage plug-in is compiled with
The interfaces and records that a host and the storage driver plug-in share, as
headers, with a CMake package (Kelvrostorage) and a file for pkg-config
(kelvrostorage).")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kelvrostorage-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION database)
set(CPACK_DEBIAN_TOOLS_PACKAGE_MULTIARCH foreign)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${_same_version}")
# To decode telegrams, and to draw curves.
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "gnuplot-nox | gnuplot, wmbusmeters")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"command-line tools for the Kelvrostorage plug-in
kelvro-host works through the storage driver plug-in as a metering server does:
it brings data in, shows and watches what is stored, finds out what is wrong
with plug-in and servers, and moves all to other servers. kelvro-contract tries
whether any plug-in file keeps what such a server relies on.")

include(CPack)
