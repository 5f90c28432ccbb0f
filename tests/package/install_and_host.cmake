# Installs the build into a prefix of its own, and builds and runs a host that knows the prefix only.
#   BUILD_DIR SOURCE_DIR WORK_DIR CONFIG COMPILER LAUNCHER FLAGS GENERATOR

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

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --config "${CONFIG}" --prefix "${WORK_DIR}/prefix")

# Installed in one place, used in another: nothing in the package may name the prefix.
file(RENAME "${WORK_DIR}/prefix" "${WORK_DIR}/moved")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/host" -G "${GENERATOR}"
    "-DCMAKE_PREFIX_PATH=${WORK_DIR}/moved"
    "-DCMAKE_BUILD_TYPE=${CONFIG}"
    "-DCMAKE_CXX_COMPILER=${COMPILER}"
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}"
    "-DCMAKE_CXX_FLAGS=${FLAGS}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/host" --config "${CONFIG}")
run("${WORK_DIR}/host/package_host")

string(FIND "${output}" "loaded ${WORK_DIR}/moved/" found)
if(found EQUAL -1)
    message(FATAL_ERROR "the host has loaded another file than the installed one")
endif()
run("${WORK_DIR}/host/package_converter")
file(REMOVE_RECURSE "${WORK_DIR}")
