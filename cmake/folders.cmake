# kestrel_folder(NAME SOURCE...): the library kestrel_NAME of this folder. Of the
# sources, NAME_win.cpp is built for Windows only and NAME_posix.cpp elsewhere only.
function(kestrel_folder name)
  set(sources ${ARGN})
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_posix[.]cpp$")
  else()
    list(FILTER sources EXCLUDE REGEX "_win[.]cpp$")
  endif()
  add_library(kestrel_${name} STATIC ${sources})
  target_link_libraries(kestrel_${name} PUBLIC kestrel_flags)
endfunction()
