# Installs the build into a prefix of its own, and builds two hosts that know the prefix only: one of
# this folder, which is run here, and the one that README.md shows, which readme_host_mongotest.py
# runs with a server.
#   BUILD_DIR SOURCE_DIR README WORK_DIR CONFIG COMPILER LAUNCHER FLAGS GENERATOR VERSION

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    message("${output}")
    if(NOT status EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "failed (${status}): ${command}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_in_output text otherwise)
    string(FIND "${output}" "${text}" found)
    if(found EQUAL -1)
        message(FATAL_ERROR "${otherwise}")
    endif()
endfunction()

function(build_host source_dir binary_dir)
    run("${CMAKE_COMMAND}" -S "${source_dir}" -B "${binary_dir}" -G "${GENERATOR}"
        "-DCMAKE_PREFIX_PATH=${WORK_DIR}/moved"
        "-DCMAKE_BUILD_TYPE=${CONFIG}"
        "-DCMAKE_CXX_COMPILER=${COMPILER}"
        "-DCMAKE_CXX_FLAGS=${FLAGS}")
    run("${CMAKE_COMMAND}" --build "${binary_dir}" --config "${CONFIG}")
endfunction()

# Not as an argument: it may be a list.
set(ENV{CMAKE_CXX_COMPILER_LAUNCHER} "${LAUNCHER}")

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --config "${CONFIG}" --prefix "${WORK_DIR}/prefix")

# Installed in one place, used in another: nothing in the package may name the prefix.
file(RENAME "${WORK_DIR}/prefix" "${WORK_DIR}/moved")
foreach(file IN ITEMS LICENSE NOTICE README.md docs/storage-format.md)
    if(NOT EXISTS "${WORK_DIR}/moved/share/doc/kelvrostorage/${file}")
        message(FATAL_ERROR "${file} is not installed")
    endif()
endforeach()

build_host("${SOURCE_DIR}" "${WORK_DIR}/host")
foreach(host IN ITEMS package_host pkgconf_host)
    run("${WORK_DIR}/host/${host}")
    expect_in_output("loaded ${WORK_DIR}/moved/" "${host} has loaded another file than the installed one")
endforeach()
run("${WORK_DIR}/host/package_converter")

file(GLOB_RECURSE plugin "${WORK_DIR}/moved/libkelvrostorage.so*")
list(LENGTH plugin count)
if(NOT count EQUAL 1)
    message(FATAL_ERROR "installed under other names than libkelvrostorage.so: ${plugin}")
endif()
run(readelf --notes --wide "${plugin}")
expect_in_output("\"version\":\"${VERSION}\"" "the plug-in file does not tell its version")

foreach(program IN ITEMS kelvro-host kelvro-contract)
    foreach(file IN ITEMS man/man1/${program}.1 bash-completion/completions/${program})
        if(NOT EXISTS "${WORK_DIR}/moved/share/${file}")
            message(FATAL_ERROR "${file} is not installed")
        endif()
    endforeach()
    run("${WORK_DIR}/moved/bin/${program}" --version)
    expect_in_output("${VERSION}" "${program} is of another version")
endforeach()

set(FOLDER "${WORK_DIR}/readme")
include("${CMAKE_CURRENT_LIST_DIR}/extract_readme_host.cmake")
build_host("${FOLDER}" "${WORK_DIR}/readme_host")
