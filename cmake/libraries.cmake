# The libraries below the stand-in: jsoncpp for documents, uriparser for query strings.
find_package(PkgConfig REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)
pkg_check_modules(URIPARSER REQUIRED IMPORTED_TARGET liburiparser)
add_library(jsoncpp_library ALIAS PkgConfig::JSONCPP)
add_library(uriparser_library ALIAS PkgConfig::URIPARSER)
