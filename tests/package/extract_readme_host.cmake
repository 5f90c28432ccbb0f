# Writes the host that README.md shows, its first block of CMake and its first one of C++, into a
# folder.
#   README FOLDER

foreach(_block IN ITEMS cmake/CMakeLists.txt cpp/main.cpp)
    cmake_path(GET _block PARENT_PATH _language)
    cmake_path(GET _block FILENAME _file)
    file(READ "${README}" _text)
    if(NOT _text MATCHES "\n```${_language}\n([^`]+)```\n")
        message(FATAL_ERROR "${README} has no block of ${_language}")
    endif()
    file(WRITE "${FOLDER}/${_file}" "${CMAKE_MATCH_1}")
endforeach()
