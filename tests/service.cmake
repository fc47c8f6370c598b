if(KESTREL_TESTS AND NOT WIN32)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  add_test(NAME demo_radio
           COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/demo_radio_test.py
                   $<TARGET_FILE:demo_radio> ${PROJECT_BINARY_DIR}/service/sounds)
  set_tests_properties(demo_radio PROPERTIES TIMEOUT 300)
endif()
