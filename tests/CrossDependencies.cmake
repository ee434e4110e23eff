# What the tests need, for a machine that has no packages of it: GoogleTest from its sources, and the headers of
# nlohmann-json without the rest of /usr/include, which is this machine's.
set(KORVAN_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Where the sources of GoogleTest are")
set(INSTALL_GTEST OFF)
set(BUILD_GMOCK OFF)
add_subdirectory(${KORVAN_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

find_path(KORVAN_NLOHMANN_JSON nlohmann/json.hpp REQUIRED NO_CMAKE_FIND_ROOT_PATH PATHS /usr/include)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/headers)
file(CREATE_LINK ${KORVAN_NLOHMANN_JSON}/nlohmann ${CMAKE_BINARY_DIR}/headers/nlohmann SYMBOLIC)
add_library(nlohmann_json::nlohmann_json INTERFACE IMPORTED GLOBAL)
target_include_directories(nlohmann_json::nlohmann_json INTERFACE ${CMAKE_BINARY_DIR}/headers)
