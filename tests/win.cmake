# What is Windows' own, on a real desktop under Wine: the window toolkit, and the
# directory's transfer.
if(WIN32)
  foreach(subject toolkit transfer)
    add_executable(${subject}_test ${subject}_test.cpp)
    target_link_libraries(${subject}_test PRIVATE kestrel_win kestrel_logic kestrel_res GTest::gtest_main)
  endforeach()
  wine_test(toolkit)
  wine_test(transfer transfer_test.py)
endif()
