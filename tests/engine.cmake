# The audio engine against real and misbehaving servers, natively.
if(NOT WIN32)
  add_library(engine_harness STATIC
    ${CMAKE_CURRENT_LIST_DIR}/engine_harness.cpp ${CMAKE_CURRENT_LIST_DIR}/engine_tones.cpp
    ${CMAKE_CURRENT_LIST_DIR}/engine_web.cpp ${CMAKE_CURRENT_LIST_DIR}/loopback_servers.cpp)
  target_link_libraries(engine_harness PUBLIC kestrel_engine GTest::gtest PRIVATE kestrel_flags)
  target_compile_definitions(engine_harness PRIVATE
    DEMO_RADIO="$<TARGET_FILE:demo_radio>" DEMO_SOUNDS="$<TARGET_FILE_DIR:demo_radio>/sounds"
    AAC_PLUGIN="$<TARGET_FILE:bass_aac>")
  add_dependencies(engine_harness demo_radio bass_aac)
  foreach(subject engine engine_parts engine_addresses engine_titles engine_formats engine_hls engine_icecast engine_endurance
    engine_recovery engine_servers engine_sound)
    add_executable(${subject}_test ${CMAKE_CURRENT_LIST_DIR}/${subject}_test.cpp)
    target_link_libraries(${subject}_test PRIVATE engine_harness kestrel_flags GTest::gtest_main)
    # What waits for sound and servers most goes in parts, side by side.
    set(parts 1)
    if(subject MATCHES "^engine(_formats|_hls|_recovery)?$")
      set(parts 3)
    endif()
    foreach(part RANGE 1 ${parts})
      math(EXPR index "${part} - 1")
      set(name ${subject})
      if(parts GREATER 1)
        set(name ${subject}_${part})
      endif()
      add_test(NAME ${name} COMMAND ${subject}_test)
      set_tests_properties(${name} PROPERTIES LABELS engine TIMEOUT 400
        ENVIRONMENT "GTEST_TOTAL_SHARDS=${parts};GTEST_SHARD_INDEX=${index}")
    endforeach()
  endforeach()
  target_link_libraries(engine_titles_test PRIVATE kestrel_logic)
endif()

# A small program that plays as the player would, and what drives it: over TLS
# everywhere, and the two libraries under Wine.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_executable(engine_probe ${CMAKE_CURRENT_LIST_DIR}/engine_probe.cpp)
target_include_directories(engine_probe PRIVATE ${PROJECT_SOURCE_DIR})
set_target_properties(engine_probe PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
if(WIN32)
  set(radio ${KESTREL_RADIO})
  target_link_libraries(engine_probe PRIVATE kestrel_win kestrel_flags psapi)
  add_dependencies(engine_probe bass bass_aac)
else()
  set(radio $<TARGET_FILE_DIR:demo_radio>)
  target_link_libraries(engine_probe PRIVATE kestrel_engine kestrel_flags)
  target_compile_definitions(engine_probe PRIVATE AAC_PLUGIN="$<TARGET_FILE:bass_aac>")
  add_dependencies(engine_probe bass_aac demo_radio)
endif()
add_test(NAME engine_https COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/engine_https_test.py
  $<TARGET_FILE:engine_probe> ${PROJECT_BINARY_DIR}/kestrel ${radio})
set_tests_properties(engine_https PROPERTIES LABELS engine TIMEOUT 400)

if(WIN32)
  set_tests_properties(engine_https PROPERTIES LABELS "engine;desktop")
  add_test(NAME engine_wine COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_LIST_DIR}/engine_wine_test.py
    $<TARGET_FILE_DIR:bass> $<TARGET_FILE:engine_probe> ${CMAKE_OBJDUMP} ${KESTREL_RADIO})
  set_tests_properties(engine_wine PROPERTIES LABELS "engine;desktop" TIMEOUT 400)
endif()
