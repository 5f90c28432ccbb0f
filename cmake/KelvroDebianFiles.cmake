# CPack runs this when the files of the packages are laid out, before it packs them: each package
# gets the copyright file and a changelog, and what Debian wants compressed is compressed.

cmake_policy(VERSION 3.25)

# Of the changelog's entry; SOURCE_DATE_EPOCH decides if it is set.
string(TIMESTAMP _date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(_version "${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")

function(compress)
    # Without name and time, so that the same content gives the same bytes.
    execute_process(COMMAND gzip -9 --no-name --force ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(_component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER "${_component}" _upper)
    set(_root "${CPACK_TEMPORARY_DIRECTORY}/${_component}${CPACK_PACKAGING_INSTALL_PREFIX}")
    set(_doc "${_root}/share/doc/${CPACK_DEBIAN_${_upper}_PACKAGE_NAME}")
    file(MAKE_DIRECTORY "${_doc}")
    configure_file("${CPACK_KELVRO_PACKAGING_DIR}/changelog.in" "${_doc}/changelog.Debian" @ONLY)
    compress("${_doc}/changelog.Debian")
    if(EXISTS "${_doc}/CHANGELOG.md")
        file(RENAME "${_doc}/CHANGELOG.md" "${_doc}/changelog")
        compress("${_doc}/changelog")
    endif()
    file(COPY "${CPACK_KELVRO_PACKAGING_DIR}/copyright" DESTINATION "${_doc}")
    file(GLOB _pages "${_root}/share/man/man1/*.1")
    if(_pages)
        compress(${_pages})
    endif()
endforeach()
