# The toolkit and the program's own windows, each on a real desktop under Wine.
if(WIN32)
  foreach(subject toolkit tray_windows)
    add_executable(${subject}_test ${subject}_test.cpp wine_desktop.cpp)
    target_link_libraries(${subject}_test PRIVATE kestrel_win kestrel_logic kestrel_res GTest::gtest_main)
    wine_test(${subject})
  endforeach()
endif()
