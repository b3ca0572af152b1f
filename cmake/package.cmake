# What is installed beside the program, and the Debian package: cpack --preset release.
set(package_name schedule-recording)

install(FILES LICENSE DESTINATION share/doc/${package_name} RENAME copyright)
install(FILES README.md DESTINATION share/doc/${package_name})
# The licences of what is compiled into the program, where Debian has put them.
set(built_in_libraries rapidjson-dev)
if(STATIC_PROGRAM)
  list(APPEND built_in_libraries libjsoncpp-dev liburiparser-dev)
endif()
foreach(library IN LISTS built_in_libraries)
  install(FILES /usr/share/doc/${library}/copyright OPTIONAL
    DESTINATION share/doc/${package_name} RENAME copyright.${library})
endforeach()
install(DIRECTORY docs/ DESTINATION share/doc/${package_name}/docs FILES_MATCHING
  PATTERN "*.md" PATTERN "*.yaml")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${package_name})
set(CPACK_PACKAGE_VENDOR "The schedule_recording authors")
set(CPACK_PACKAGE_CONTACT "The schedule_recording authors <maintainers@example.org>")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION web)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "lighttpd | httpd-cgi")
# The static program depends on nothing.
if(NOT STATIC_PROGRAM)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
endif()
include(CPack)
