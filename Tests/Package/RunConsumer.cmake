# Builds a project against what is installed, and runs its program.
#   cmake -DBUILD=<build folder> -DWORK=<scratch folder> -DPLUGINS=<folder> -P RunConsumer.cmake
include("${CMAKE_CURRENT_LIST_DIR}/Install.cmake")

run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/Consumer" -B "${WORK}/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK}/build")

set(ENV{OX_PLUGINS_DIR} "${PLUGINS}")
set(ENV{OX_BASE_DIR} "${prefix}/share/KernelServicesRemoteImpl")
run("${WORK}/build/consumer")
