if(WIN32)
  add_executable(player_window_test player_window_test.cpp wine_desktop.cpp)
  target_link_libraries(player_window_test PRIVATE kestrel_win kestrel_logic kestrel_res
                        GTest::gtest_main)
  add_test(NAME player_window
           COMMAND ${CMAKE_CURRENT_LIST_DIR}/run-wine.sh $<TARGET_FILE:player_window_test>)
  set_tests_properties(player_window PROPERTIES LABELS desktop TIMEOUT 180 RUN_SERIAL TRUE)
  add_executable(player_window_demo player_window_demo.cpp wine_desktop.cpp)
  target_link_libraries(player_window_demo PRIVATE kestrel_win kestrel_logic kestrel_res)
else()
  add_executable(player_test player_test.cpp player_fakes.cpp recorder_test.cpp skin_test.cpp)
  target_link_libraries(player_test PRIVATE kestrel_logic GTest::gtest_main)
  add_test(NAME player_test COMMAND player_test)
  set_tests_properties(player_test PROPERTIES TIMEOUT 60)

  add_executable(player_engine_test player_engine_test.cpp player_fakes.cpp engine_harness.cpp)
  target_link_libraries(player_engine_test PRIVATE kestrel_logic kestrel_engine GTest::gtest_main)
  add_dependencies(player_engine_test demo_radio bass_aac)
  target_compile_definitions(player_engine_test PRIVATE
    DEMO_RADIO="$<TARGET_FILE:demo_radio>" DEMO_SOUNDS="$<TARGET_FILE_DIR:demo_radio>/sounds"
    AAC_PLUGIN="$<TARGET_FILE:bass_aac>")
  add_test(NAME player_engine COMMAND player_engine_test)
  set_tests_properties(player_engine PROPERTIES LABELS engine TIMEOUT 120)
endif()
