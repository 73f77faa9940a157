# Fails unless the shared library's dynamic symbol table defines exactly the expected names.
# Called with -DNM=... -DLIBRARY=... -DEXPECTED=<file with one demangled name per line>.
execute_process(COMMAND ${NM} -D --defined-only --demangle ${LIBRARY}
                OUTPUT_VARIABLE table RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${NM} failed on ${LIBRARY}")
endif()

string(REPLACE "\n" ";" lines "${table}")
set(exported "")
foreach(line IN LISTS lines)
    if(line MATCHES "^[0-9a-fA-F]+ [A-Za-z] (.+)$")
        list(APPEND exported "${CMAKE_MATCH_1}")
    endif()
endforeach()
list(REMOVE_DUPLICATES exported)

file(STRINGS ${EXPECTED} expected REGEX "^[^#]")
set(unexpected ${exported})
list(REMOVE_ITEM unexpected ${expected})
set(missing ${expected})
list(REMOVE_ITEM missing ${exported})

if(unexpected OR missing)
    message(FATAL_ERROR "Exported symbols differ.\n  unexpected: ${unexpected}\n  missing: ${missing}")
endif()
list(LENGTH exported count)
message(STATUS "${count} exported symbols, as expected")
