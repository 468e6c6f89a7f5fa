# Looks for names without our prefix in what is installed.
#   cmake -DBUILD=<build folder> -DWORK=<scratch folder> -P RunNames.cmake
include("${CMAKE_CURRENT_LIST_DIR}/Install.cmake")

run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}/Names" -B "${WORK}/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DINSTALLED=${prefix}")
run("${CMAKE_COMMAND}" --build "${WORK}/build")
file(READ "${WORK}/build/object.txt" preprocessed)
run(python3 "${CMAKE_CURRENT_LIST_DIR}/foreignNames.py" "${prefix}" "${preprocessed}")
