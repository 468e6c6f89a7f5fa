# Builds a project against what is installed, and runs its program.
#   cmake -DBUILD=<build folder> -DWORK=<scratch folder> -DPLUGINS=<folder> -DPythonQt_ROOT=<folder> -P RunConsumer.cmake
include("${CMAKE_CURRENT_LIST_DIR}/Install.cmake")

# An installation may be moved.
file(RENAME "${prefix}" "${WORK}/moved")
set(prefix "${WORK}/moved")

# configure(<result> <output> <options>): configures a project that uses PythonQt.
function(configure result output)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Consumer" -B "${WORK}/configured" -G Ninja
            --fresh "-DCMAKE_PREFIX_PATH=${prefix}" ${ARGN}
        RESULT_VARIABLE status OUTPUT_VARIABLE text ERROR_VARIABLE text)
    string(REGEX REPLACE "[ \n]+" " " text "${text}")
    set(${result} "${status}" PARENT_SCOPE)
    set(${output} "${text}" PARENT_SCOPE)
endfunction()

# Where PythonQt is looked for and is not, that is said; who does without the component does without PythonQt.
configure(status text "-DPythonQt_ROOT=${WORK}/nowhere")
if(status EQUAL 0 OR NOT text MATCHES "PythonQt_ROOT is ${WORK}/nowhere: set it to the folder where PythonQt is installed")
    message(FATAL_ERROR "without PythonQt: ${status}, ${text}")
endif()
configure(status text "-DPythonQt_ROOT=${PythonQt_ROOT}")
if(NOT status EQUAL 0)
    message(FATAL_ERROR "with PythonQt_ROOT: ${text}")
endif()
file(WRITE "${WORK}/plain/CMakeLists.txt" "cmake_minimum_required(VERSION 3.25)\nproject(Plain LANGUAGES CXX)\n"
    "find_package(KernelServicesRemoteImpl REQUIRED)\nadd_library(plain OBJECT plain.cpp)\n"
    "target_link_libraries(plain PRIVATE ox::KernelServicesRemoteImpl)\n")
file(WRITE "${WORK}/plain/plain.cpp" "#include <oxKernelInterface.h>\n")
run("${CMAKE_COMMAND}" -S "${WORK}/plain" -B "${WORK}/plain/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DPythonQt_ROOT=${WORK}/nowhere")
run("${CMAKE_COMMAND}" --build "${WORK}/plain/build")

run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/Consumer" -B "${WORK}/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK}/build")

set(ENV{OX_PLUGINS_DIR} "${PLUGINS}")
set(ENV{OX_BASE_DIR} "${prefix}/share/KernelServicesRemoteImpl")
run("${WORK}/build/consumer")
