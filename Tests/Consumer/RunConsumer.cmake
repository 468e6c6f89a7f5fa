# Installs the build, builds a project against what was installed, and runs its program.
#   cmake -DBUILD=<build folder> -DWORK=<scratch folder> -DPLUGINS=<folder> -P RunConsumer.cmake
file(REMOVE_RECURSE "${WORK}")
set(prefix "${WORK}/prefix")

function(run)
    execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${prefix}")
run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}" -B "${WORK}/build" -G Ninja "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK}/build")

set(ENV{OX_PLUGINS_DIR} "${PLUGINS}")
set(ENV{OX_BASE_DIR} "${prefix}/share/KernelServicesRemoteImpl")
run("${WORK}/build/consumer")
