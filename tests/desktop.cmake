# The real program on a real desktop, driven from outside: one CTest entry for
# each test file. They need the native build's demo radio.
if(NOT WIN32)
  return()
endif()
add_executable(probe desktop/probe.cpp desktop/probe_windows.cpp desktop/probe_processes.cpp)
add_executable(recorder WIN32 desktop/recorder.cpp)
add_library(agent MODULE desktop/agent.cpp desktop/agent_menus.cpp desktop/agent_measure.cpp
  desktop/agent_resources.cpp)
set_target_properties(agent PROPERTIES PREFIX "")
foreach(tool probe recorder agent)
  target_link_libraries(${tool} PRIVATE kestrel_win)
  set_target_properties(${tool} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${desktop_tools}
                                           LIBRARY_OUTPUT_DIRECTORY ${desktop_tools})
endforeach()

# desktop_test(NAME FILE [CLASS...])
function(desktop_test name file)
  add_test(NAME desktop_${name}
           COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tests/desktop/test_${file}.py ${ARGN})
  set_tests_properties(desktop_${name} PROPERTIES LABELS desktop TIMEOUT 900 ENVIRONMENT "${desktop_environment}")
endfunction()

# What the width of a pointer can break; the other files look at the same code from
# further away.
set(subjects lists menus player player_window settings start)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  list(APPEND subjects about directory launch)
  desktop_test(windows windows Windows Windows150 Windows200)
  desktop_test(windows_languages windows OtherLanguages OtherLanguages200)
endif()
foreach(subject ${subjects})
  desktop_test(${subject} ${subject})
endforeach()
