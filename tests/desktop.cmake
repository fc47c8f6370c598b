# The real program on a real desktop, driven from outside: one CTest entry for
# each test file. They need the native build's demo radio.
if(NOT WIN32)
  return()
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(KESTREL_RADIO ${PROJECT_SOURCE_DIR}/build/native/service CACHE PATH "Folder of the built demo radio")

set(desktop_tools ${PROJECT_BINARY_DIR}/desktop-tools)
add_executable(probe desktop/probe.cpp desktop/probe_windows.cpp desktop/probe_processes.cpp)
add_executable(recorder WIN32 desktop/recorder.cpp)
add_library(agent MODULE desktop/agent.cpp desktop/agent_menus.cpp desktop/agent_measure.cpp)
set_target_properties(agent PROPERTIES PREFIX "")
foreach(tool probe recorder agent)
  target_link_libraries(${tool} PRIVATE kestrel_flags)
  set_target_properties(${tool} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${desktop_tools}
                                           LIBRARY_OUTPUT_DIRECTORY ${desktop_tools})
endforeach()

file(GLOB desktop_tests CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/desktop/test_*.py)
foreach(file ${desktop_tests})
  get_filename_component(subject ${file} NAME_WE)
  string(REPLACE "test_" "desktop_" subject ${subject})
  add_test(NAME ${subject} COMMAND ${Python3_EXECUTABLE} ${file})
  set_tests_properties(${subject} PROPERTIES LABELS desktop TIMEOUT 600 RUN_SERIAL TRUE ENVIRONMENT
    "KESTREL_PROGRAM=${PROJECT_BINARY_DIR}/kestrel;KESTREL_TOOLS=${desktop_tools};KESTREL_RADIO=${KESTREL_RADIO};KESTREL_PICTURES=${PROJECT_SOURCE_DIR}/build/pictures")
endforeach()
# Every window on many screens in many languages.
set_tests_properties(desktop_windows PROPERTIES TIMEOUT 1000)
