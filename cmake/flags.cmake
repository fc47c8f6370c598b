# One interface target carries the compiler's rules for all our own code.
add_library(kestrel_flags INTERFACE)
target_compile_options(kestrel_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
target_include_directories(kestrel_flags INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_definitions(kestrel_flags INTERFACE
  KESTREL_VERSION="${PROJECT_VERSION}")

find_package(Threads REQUIRED)
target_link_libraries(kestrel_flags INTERFACE Threads::Threads)

if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(kestrel_flags INTERFACE -Wthread-safety)
endif()

# CMake's own choice for Release is -O3, which only makes the program larger.
string(REPLACE "-O3" "-O2" CMAKE_CXX_FLAGS_RELEASE "${CMAKE_CXX_FLAGS_RELEASE}")
string(REPLACE "-O3" "-O2" CMAKE_C_FLAGS_RELEASE "${CMAKE_C_FLAGS_RELEASE}")

if(WIN32)
  target_compile_definitions(kestrel_flags INTERFACE
    UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX STRICT
    WINVER=0x0A00 _WIN32_WINNT=0x0A00 NTDDI_VERSION=0x0A000006)
  target_compile_options(kestrel_flags INTERFACE -ffunction-sections -fdata-sections)
  # Sections aligned to pages in the file as well: what Wine's loader can only then
  # map is shared instead of copied into private memory.
  target_link_options(kestrel_flags INTERFACE -static -Wl,--gc-sections -s
    -Wl,--file-alignment=4096)
endif()

set(KESTREL_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them")
if(KESTREL_SANITIZE)
  # On everything that is linked, so that all of it is instrumented alike. More
  # optimisation or debug information makes the compiler three times as slow here.
  add_compile_options(-O1 -g1 -fsanitize=${KESTREL_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KESTREL_SANITIZE})
endif()
if(KESTREL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
