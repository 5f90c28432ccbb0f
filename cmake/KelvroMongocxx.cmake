# Makes the targets that find_package(mongocxx) has defined usable. Include it in the same folder.
#
# Debian's packages ship the stable v1 headers only, yet their CMake files still name the folders of
# the older interface (…/v_noabi), and CMake refuses an imported target whose include folder does
# not exist. The entries that are not there are dropped here, and nowhere else.

foreach(_target IN ITEMS mongo::mongocxx_shared mongo::bsoncxx_shared)
    if(NOT TARGET ${_target})
        continue()
    endif()
    get_target_property(_folders ${_target} INTERFACE_INCLUDE_DIRECTORIES)
    set(_existing "")
    foreach(_folder IN LISTS _folders)
        if(EXISTS "${_folder}")
            list(APPEND _existing "${_folder}")
        endif()
    endforeach()
    set_target_properties(${_target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${_existing}")
endforeach()
