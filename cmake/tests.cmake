# GoogleTest from the system's sources, so that one recipe serves the native,
# the sanitized and the cross builds.
if(EXISTS /usr/src/googletest/CMakeLists.txt)
  set(INSTALL_GTEST OFF)
  set(gtest_force_shared_crt ON)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()
