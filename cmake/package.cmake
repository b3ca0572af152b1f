# What is installed beside the program, and the Debian package: cpack --preset release.
set(package_name schedule-recording)
set(package_files "${PROJECT_SOURCE_DIR}/cmake/package")
set(CPACK_PACKAGE_CONTACT "The schedule_recording authors <maintainers@example.org>")

install(FILES LICENSE DESTINATION share/doc/${package_name} RENAME copyright)
install(FILES README.md CHANGELOG.md DESTINATION share/doc/${package_name})
install(FILES "${package_files}/tmpfiles.conf"
  DESTINATION lib/tmpfiles.d RENAME ${package_name}.conf)
# The licences of what is compiled into the program, where Debian has put them.
set(built_in_libraries rapidjson-dev)
if(STATIC_PROGRAM)
  list(APPEND built_in_libraries libjsoncpp-dev liburiparser-dev)
  install(FILES "${package_files}/lintian-overrides"
    DESTINATION share/lintian/overrides RENAME ${package_name})
endif()
foreach(library IN LISTS built_in_libraries)
  install(FILES /usr/share/doc/${library}/copyright OPTIONAL
    DESTINATION share/doc/${package_name} RENAME copyright.${library})
endforeach()
install(DIRECTORY docs/ DESTINATION share/doc/${package_name}/docs
  FILES_MATCHING PATTERN "*.md" PATTERN "*.yaml" PATTERN "*.png")
install(DIRECTORY web/ DESTINATION share/${package_name}/web
  FILES_MATCHING PATTERN "*.html" PATTERN "*.css" PATTERN "*.js")

# Debian's changelog is CHANGELOG.md in another form.
set(debian_changelog "${PROJECT_BINARY_DIR}/changelog.gz")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
  CHANGELOG.md cmake/package/debian-changelog.awk)
execute_process(
  COMMAND awk -v "maintainer=${CPACK_PACKAGE_CONTACT}"
    -f "${package_files}/debian-changelog.awk" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
  COMMAND gzip --best --no-name
  OUTPUT_FILE "${debian_changelog}"
  COMMAND_ERROR_IS_FATAL ANY)
install(FILES "${debian_changelog}" DESTINATION share/doc/${package_name})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${package_name})
set(CPACK_PACKAGE_VENDOR "The schedule_recording authors")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
file(READ "${package_files}/description.txt" CPACK_PACKAGE_DESCRIPTION)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION web)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${package_files}/postinst")
# The package's folders come from tmpfiles.d; the static program itself depends on nothing.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "systemd-standalone-tmpfiles | systemd-tmpfiles")
# No more than a suggestion: installing the package must not open a port.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "lighttpd | httpd-cgi")
if(NOT STATIC_PROGRAM)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
