# What the settings dialog does with its values, without the dialog.
if(WIN32)
  return()
endif()
add_executable(settings_test settings_test.cpp)
target_link_libraries(settings_test PRIVATE kestrel_logic GTest::gtest_main)
add_test(NAME settings COMMAND settings_test)
set_tests_properties(settings PROPERTIES TIMEOUT 120)
