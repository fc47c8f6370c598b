# The program's logic: no windows, no network, files in a temporary folder. Under
# Windows it is the file layer that makes the difference.
add_executable(logic_test logic_app_test.cpp logic_directory_test.cpp logic_tray_test.cpp)
target_link_libraries(logic_test PRIVATE kestrel_logic GTest::gtest_main)
if(WIN32)
  wine_test(logic)
else()
  target_sources(logic_test PRIVATE language_test.cpp settings_test.cpp url_test.cpp)
  target_compile_definitions(logic_test PRIVATE KESTREL_LANG="${PROJECT_SOURCE_DIR}/lang")
  add_test(NAME logic COMMAND logic_test)
  set_tests_properties(logic PROPERTIES TIMEOUT 120)

  add_executable(parse_bench bench/parse_bench.cpp)
  target_compile_options(parse_bench PRIVATE -O2)
  target_link_libraries(parse_bench PRIVATE kestrel_logic benchmark)
endif()
