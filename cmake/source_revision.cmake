# Writes OUTPUT, a source file with the first seven digits of the commit that SOURCE has checked out, and
# leaves it alone when it says so already. Seven zeros where there is no git, or the tree is in no repository
# of its own (an unpacked archive that lies somewhere in another one).
set(revision 0000000)
if(GIT)
  execute_process(COMMAND ${GIT} -c safe.directory=* -C ${SOURCE} rev-parse --show-toplevel HEAD
    OUTPUT_VARIABLE answer ERROR_QUIET RESULT_VARIABLE failed OUTPUT_STRIP_TRAILING_WHITESPACE)
  file(REAL_PATH ${SOURCE} source)
  if(NOT failed AND answer MATCHES "^([^\n]+)\n([0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f][0-9a-f])")
    set(digits ${CMAKE_MATCH_2})
    file(REAL_PATH ${CMAKE_MATCH_1} top)
    if(top STREQUAL source)
      set(revision ${digits})
    endif()
  endif()
endif()
set(text "#include \"support/SourceRevision.h\"\n\nnamespace lumo {\n\nconst char* sourceRevision() {\n  return \"${revision}\";\n}\n\n}  // namespace lumo\n")
set(before "")
if(EXISTS ${OUTPUT})
  file(READ ${OUTPUT} before)
endif()
if(NOT before STREQUAL text)
  file(WRITE ${OUTPUT} "${text}")
endif()
