# The lists while they live: reload of all, own lists, and what becomes of the files
# whatever happens.
add_executable(lists_test lists_reload_test.cpp lists_own_test.cpp lists_files_test.cpp)
target_link_libraries(lists_test PRIVATE kestrel_logic GTest::gtest_main)
if(WIN32)
  wine_test(lists)
else()
  if(NOT KESTREL_SANITIZE)  # which makes calls of its own
    target_sources(lists_test PRIVATE lists_kill_test.cpp)  # stops itself at every system call
  endif()
  add_test(NAME lists COMMAND lists_test)
  set_tests_properties(lists PROPERTIES TIMEOUT 300)
endif()
