# The window toolkit, on a real desktop under Wine.
if(WIN32)
  add_executable(toolkit_test toolkit_test.cpp)
  target_link_libraries(toolkit_test PRIVATE kestrel_win kestrel_logic kestrel_res GTest::gtest_main)
  wine_test(toolkit)
endif()
