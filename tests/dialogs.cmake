# The small dialogs, each on a real desktop under Wine; the demo shows them with sample texts.
if(WIN32)
  add_executable(dialogs_test dialogs_test.cpp wine_desktop.cpp)
  target_link_libraries(dialogs_test PRIVATE kestrel_win kestrel_logic kestrel_res GTest::gtest_main)
  add_test(NAME dialogs
           COMMAND ${CMAKE_CURRENT_LIST_DIR}/run-wine.sh $<TARGET_FILE:dialogs_test>)
  set_tests_properties(dialogs PROPERTIES LABELS desktop TIMEOUT 180 RUN_SERIAL TRUE)
  add_executable(dialogs_demo dialogs_demo.cpp)
  target_link_libraries(dialogs_demo PRIVATE kestrel_win kestrel_logic kestrel_res)
endif()
