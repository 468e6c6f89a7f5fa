# One shared library of ours: ox_add_library(<name> EXPORT <set> HEADERS <files> SOURCES <files> LINK <targets>)
# gives the target <name>, its alias ox::<name>, the library liboxName, its export
# header ox<name>_export.h, and the rules that install all of it as part of the set.
include(GenerateExportHeader)

set(OX_WARNINGS
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast
    -Wcast-qual -Wformat=2 -Wundef)

function(ox_compile_options target)
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_compile_options(${target} PRIVATE ${OX_WARNINGS})
    if(OX_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    target_compile_definitions(${target} PRIVATE
        QT_NO_KEYWORDS QT_NO_CAST_TO_ASCII QT_DEPRECATED_WARNINGS
        QT_DISABLE_DEPRECATED_BEFORE=0x050f00)
    set_target_properties(${target} PROPERTIES
        AUTOMOC ON
        CXX_EXTENSIONS OFF
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
endfunction()

function(ox_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "EXPORT" "HEADERS;SOURCES;LINK")
    string(TOLOWER "ox${name}_export.h" export_header)

    add_library(${name} SHARED)
    add_library(ox::${name} ALIAS ${name})
    ox_compile_options(${name})
    generate_export_header(${name} BASE_NAME "ox${name}" EXPORT_FILE_NAME "${export_header}")
    target_sources(${name}
        PRIVATE ${arg_SOURCES} ${arg_HEADERS}
        PUBLIC FILE_SET HEADERS
            BASE_DIRS "${CMAKE_CURRENT_SOURCE_DIR}" "${CMAKE_CURRENT_BINARY_DIR}"
            FILES ${arg_HEADERS} "${CMAKE_CURRENT_BINARY_DIR}/${export_header}")
    target_link_libraries(${name} PUBLIC ${arg_LINK})
    set_target_properties(${name} PROPERTIES
        OUTPUT_NAME "ox${name}"
        SOVERSION ${PROJECT_VERSION_MAJOR}
        VERSION ${PROJECT_VERSION}
        INSTALL_RPATH "$ORIGIN"
        INSTALL_RPATH_USE_LINK_PATH ON)
    install(TARGETS ${name} EXPORT ${arg_EXPORT}
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/ox${name}"
        INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/ox${name}")
endfunction()

# ox_install_package(<package> DEPENDENCIES <find_dependency() lines>): the CMake package of an export set.
function(ox_install_package package)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDENCIES")
    include(CMakePackageConfigHelpers)
    set(destination "${CMAKE_INSTALL_LIBDIR}/cmake/${package}")
    list(JOIN arg_DEPENDENCIES "\n" OX_PACKAGE_DEPENDENCIES)

    configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/Config.cmake.in" "${package}Config.cmake"
        INSTALL_DESTINATION "${destination}")
    write_basic_package_version_file("${package}ConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
    install(EXPORT ${package} NAMESPACE ox:: DESTINATION "${destination}" FILE "${package}Targets.cmake")
    install(FILES
        "${CMAKE_CURRENT_BINARY_DIR}/${package}Config.cmake"
        "${CMAKE_CURRENT_BINARY_DIR}/${package}ConfigVersion.cmake"
        DESTINATION "${destination}")
endfunction()
