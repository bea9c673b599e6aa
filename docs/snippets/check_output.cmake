# Fails unless PROGRAM prints what is in the file EXPECTED, but for the counts of milliseconds, and
# for the widths of a table's columns.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed COMMAND_ERROR_IS_FATAL ANY)
file(READ ${EXPECTED} expected)
foreach(text IN ITEMS printed expected)
    string(REGEX REPLACE "\r?\n" "\n" ${text} "${${text}}")
    string(REGEX REPLACE "- [0-9]+( ?ms)" "- N\\1" ${text} "${${text}}")
    string(REGEX REPLACE "[0-9]+\\.[0-9]+ ms" "N ms" ${text} "${${text}}")
    string(REGEX REPLACE "([^ \n]) +" "\\1 " ${text} "${${text}}")
endforeach()
if(NOT printed STREQUAL expected)
    message(FATAL_ERROR "printed\n${printed}\nexpected\n${expected}")
endif()
