# Installs the build folder BUILD into a fresh scratch folder WORK. To be included: sets prefix, and
# run(), which stops the script at the first command that fails.
function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(prefix "${WORK}/prefix")
file(REMOVE_RECURSE "${WORK}")
run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${prefix}")
