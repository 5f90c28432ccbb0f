# Where things are installed. The programs look for what they need from the folder that they lie in,
# so that an installation can be moved, and the build folder has it in the same places.

include(GNUInstallDirs)

# Below Qt's own folder of plug-ins if both have one prefix: QPluginLoader finds the file there by
# the name "kelvrostorage/kelvrostorage".
set(KELVRO_INSTALL_PLUGINDIR "${CMAKE_INSTALL_LIBDIR}/qt5/plugins/kelvrostorage"
    CACHE STRING "Folder of the plug-in file, within the prefix")
set(KELVRO_INSTALL_DATADIR "${CMAKE_INSTALL_DATADIR}/kelvrostorage")
set(KELVRO_INSTALL_DOCDIR "${CMAKE_INSTALL_DATADIR}/doc/kelvrostorage")
set(KELVRO_INSTALL_COMPLETIONDIR "${CMAKE_INSTALL_DATADIR}/bash-completion/completions")

# What a build puts here, if it does, is installed: pages as PROGRAM.1, completions as PROGRAM.
set(KELVRO_MANUAL_DIR "${PROJECT_BINARY_DIR}/manual")
set(KELVRO_COMPLETION_DIR "${PROJECT_BINARY_DIR}/completion")

# kelvro_path_from_programs(VARIABLE FOLDER-VARIABLE DIRTYPE): the way to an installed folder from
# the folder of the programs.
function(kelvro_path_from_programs variable folder dirtype)
    GNUInstallDirs_get_absolute_install_dir(_full ${folder} ${dirtype})
    file(RELATIVE_PATH _path "${CMAKE_INSTALL_FULL_BINDIR}" "${_full}")
    set(${variable} "${_path}" PARENT_SCOPE)
endfunction()

# kelvro_pages(PROGRAM MANUAL-WORD COMPLETION-WORD): has the program print its manual page and its
# completion, each of which it does for one word, from the definitions of its options.
function(kelvro_pages program manual_word completion_word)
    set(manual "${KELVRO_MANUAL_DIR}/${program}.1")
    set(completion "${KELVRO_COMPLETION_DIR}/${program}")
    file(MAKE_DIRECTORY "${KELVRO_MANUAL_DIR}" "${KELVRO_COMPLETION_DIR}")
    add_custom_command(OUTPUT "${manual}" "${completion}"
        COMMAND ${program} ${manual_word} > "${manual}"
        COMMAND ${program} ${completion_word} > "${completion}"
        DEPENDS ${program}
        COMMENT "Printing the manual page and the completion of ${program}")
    add_custom_target(${program}-pages ALL DEPENDS "${manual}" "${completion}")
endfunction()
