# Finds PythonQt for Python 2.7 and Qt 5, with the wrappers of Qt (PythonQt_QtAll).
#
#   find_package(PythonQt [version] REQUIRED)
#
# PythonQt_ROOT   where PythonQt is installed (CMake or environment variable); it is looked for there first
#
# PythonQt::PythonQt   PythonQt itself, with Python 2.7 and Qt
# PythonQt::QtAll      its wrappers of Qt; links PythonQt::PythonQt
# PythonQt_VERSION     when the file name of the library tells it
#
# Fits what the recipe in ThirdParty/PythonQt installs. It also knows the names that PythonQt 3's own build gives its
# files; that has not been tried.

include(FindPackageHandleStandardArgs)

find_path(PythonQt_INCLUDE_DIR PythonQt.h
  PATH_SUFFIXES include/PythonQt include/PythonQt5 include src PythonQt PythonQt5)
find_path(PythonQt_QtAll_INCLUDE_DIR PythonQt_QtAll.h
  HINTS "${PythonQt_INCLUDE_DIR}" "${PythonQt_INCLUDE_DIR}/.."
  PATH_SUFFIXES extensions/PythonQt_QtAll PythonQt_QtAll include/extensions/PythonQt_QtAll
    include/PythonQt/extensions/PythonQt_QtAll include/PythonQt include)
find_library(PythonQt_LIBRARY NAMES PythonQt-Qt5-Python2.7 PythonQt-Qt5-Python27 PythonQt PATH_SUFFIXES lib)
find_library(PythonQt_QtAll_LIBRARY
  NAMES PythonQt_QtAll-Qt5-Python2.7 PythonQt_QtAll-Qt5-Python27 PythonQt_QtAll PATH_SUFFIXES lib)
mark_as_advanced(PythonQt_INCLUDE_DIR PythonQt_QtAll_INCLUDE_DIR PythonQt_LIBRARY PythonQt_QtAll_LIBRARY)

# libPythonQt-Qt5-Python2.7.so leads to libPythonQt-Qt5-Python2.7.so.4.1.0
unset(PythonQt_VERSION)
if(PythonQt_LIBRARY)
  get_filename_component(_pythonqt_file "${PythonQt_LIBRARY}" REALPATH)
  if(_pythonqt_file MATCHES "\\.so\\.([0-9]+\\.[0-9.]*[0-9])$")
    set(PythonQt_VERSION "${CMAKE_MATCH_1}")
  endif()
endif()

find_package(Python2 2.7 QUIET COMPONENTS Development)
find_package(Qt5 5.15 QUIET COMPONENTS Core Gui Widgets)

if(PythonQt_LIBRARY AND NOT Python2_Development_FOUND)
  set(_pythonqt_advice "Install the headers and the library of Python 2.7; tools/setup in the sources of KernelServicesRemoteImpl does that")
elseif(PythonQt_ROOT)
  set(_pythonqt_advice "PythonQt_ROOT is ${PythonQt_ROOT}: set it to the folder where PythonQt is installed for Python 2.7 and Qt 5, or run tools/setup in the sources of KernelServicesRemoteImpl, which builds PythonQt")
else()
  set(_pythonqt_advice "Run tools/setup in the sources of KernelServicesRemoteImpl, which builds PythonQt, or set PythonQt_ROOT to the folder where it is installed")
endif()
find_package_handle_standard_args(PythonQt
  REQUIRED_VARS PythonQt_LIBRARY PythonQt_INCLUDE_DIR PythonQt_QtAll_LIBRARY PythonQt_QtAll_INCLUDE_DIR
    Python2_Development_FOUND Qt5_FOUND
  VERSION_VAR PythonQt_VERSION
  REASON_FAILURE_MESSAGE "${_pythonqt_advice}.")

# Without the links on the way, such as .deps/PythonQt: installed libraries keep this path in their rpath.
function(_pythonqt_resolve variable)
  get_filename_component(folder "${${variable}}" DIRECTORY)
  get_filename_component(folder "${folder}" REALPATH)
  get_filename_component(name "${${variable}}" NAME)
  set(${variable}_RESOLVED "${folder}/${name}" PARENT_SCOPE)
endfunction()

if(PythonQt_FOUND AND NOT TARGET PythonQt::PythonQt)
  _pythonqt_resolve(PythonQt_LIBRARY)
  _pythonqt_resolve(PythonQt_QtAll_LIBRARY)
  add_library(PythonQt::PythonQt UNKNOWN IMPORTED)
  set_target_properties(PythonQt::PythonQt PROPERTIES
    IMPORTED_LOCATION "${PythonQt_LIBRARY_RESOLVED}"
    INTERFACE_INCLUDE_DIRECTORIES "${PythonQt_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES "Python2::Python;Qt5::Core;Qt5::Gui;Qt5::Widgets")
  add_library(PythonQt::QtAll UNKNOWN IMPORTED)
  set_target_properties(PythonQt::QtAll PROPERTIES
    IMPORTED_LOCATION "${PythonQt_QtAll_LIBRARY_RESOLVED}"
    INTERFACE_INCLUDE_DIRECTORIES "${PythonQt_QtAll_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES "PythonQt::PythonQt")
endif()

unset(_pythonqt_file)
unset(_pythonqt_advice)
