# Fuzz targets for what strangers can put into a page or a file. A short, fixed
# number of runs each as a test; by hand: build/fuzz/tests/fuzz_page -dict=… DIR
if(NOT KESTREL_FUZZ)
  return()
endif()

# fuzz_target(NAME RUNS LIBRARIES...): tests/fuzz/fuzz_NAME.cpp
function(fuzz_target name runs)
  add_executable(fuzz_${name} ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/fuzz_${name}.cpp)
  target_link_libraries(fuzz_${name} PRIVATE ${ARGN})
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  add_test(NAME fuzz_${name} COMMAND fuzz_${name} -runs=${runs} -seed=1 -max_len=2000 -len_control=0
    -timeout=5 -dict=${CMAKE_CURRENT_SOURCE_DIR}/fuzz/kestrel.dict)
  set_tests_properties(fuzz_${name} PROPERTIES LABELS fuzz TIMEOUT 300)
endfunction()

target_compile_options(kestrel_logic PRIVATE -fsanitize=fuzzer-no-link)
fuzz_target(language 20000 kestrel_logic)
fuzz_target(page 30000 kestrel_logic)
fuzz_target(playlist 30000 kestrel_logic)
fuzz_target(settings 25000 kestrel_logic)
fuzz_target(station_list 30000 kestrel_logic)
