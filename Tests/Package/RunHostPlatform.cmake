# Builds only the library against four platform libraries that are installed elsewhere.
#   cmake -DSOURCE=<tree> -DBUILD=<build folder> -DWORK=<scratch folder> -DPythonQt_ROOT=<folder> -P RunHostPlatform.cmake
include("${CMAKE_CURRENT_LIST_DIR}/Install.cmake")

run("${CMAKE_COMMAND}" -S "${SOURCE}" -B "${WORK}/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DPythonQt_ROOT=${PythonQt_ROOT}"
    -DOX_BUILD_PLATFORM=OFF -DOX_BUILD_APPS=OFF -DCMAKE_BUILD_TYPE=Debug)
run("${CMAKE_COMMAND}" --build "${WORK}/build")

file(GLOB libraries "${WORK}/build/Source/*/*/libox*.so" "${WORK}/build/Source/*/*/*/libox*.so")
list(TRANSFORM libraries REPLACE ".*/" "")
if(NOT libraries STREQUAL "liboxKernelServicesRemoteImpl.so")
    message(FATAL_ERROR "built: ${libraries}")
endif()
