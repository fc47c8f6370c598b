# The small dialogs, each on a real desktop under Wine.
if(WIN32)
  add_executable(dialogs_test dialogs_test.cpp wine_desktop.cpp)
  target_link_libraries(dialogs_test PRIVATE kestrel_win kestrel_logic kestrel_res GTest::gtest_main)
  wine_test(dialogs)
endif()
