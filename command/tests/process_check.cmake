# Has lapwing, whose command line is the list LAPWING, run the program HELPER. Works in FOLDER, which
# it makes anew. Nothing here takes long unless it fails: then the test's timeout ends it.

function(require_match name text pattern)
    string(REPLACE "\r\n" "\n" text "${text}")
    if(NOT text MATCHES "^${pattern}$")
        message(SEND_ERROR "${name} does not match\n${pattern}\nbut is\n${text}")
    endif()
endfunction()

# check(<name> EXIT <code> [OUTPUT <pattern>] [ERROR <pattern>] ARGUMENTS <argument>...)
# A stream without a pattern must stay empty.
function(check name)
    cmake_parse_arguments(PARSE_ARGV 1 expected "" "EXIT;OUTPUT;ERROR" "ARGUMENTS")
    execute_process(COMMAND ${LAPWING} ${expected_ARGUMENTS} ENCODING UTF8
        WORKING_DIRECTORY ${FOLDER} INPUT_FILE ${FOLDER}/input
        RESULT_VARIABLE exit_code OUTPUT_VARIABLE output ERROR_VARIABLE error)
    require_match("${name}: exit code" "${exit_code}" "${expected_EXIT}")
    require_match("${name}: standard output" "${output}" "${expected_OUTPUT}")
    require_match("${name}: standard error" "${error}" "${expected_ERROR}")
endfunction()

# check_place(<place> <recordings> [<name> <samples>]...): how many there are, in the last recording.
function(check_place place recordings)
    file(READ ${FOLDER}/${place} text)
    string(JSON all GET "${text}" recordings)
    string(JSON count LENGTH "${all}")
    require_match("${place}: recordings" "${count}" "${recordings}")
    math(EXPR last "${count} - 1")
    while(ARGN)
        list(POP_FRONT ARGN name samples)
        string(JSON count LENGTH "${all}" ${last} samples ${name})
        require_match("${place}: samples of ${name}" "${count}" "${samples}")
    endwhile()
endfunction()

function(check_content file pattern)
    file(READ ${FOLDER}/${file} text)
    require_match(${file} "${text}" "${pattern}")
endfunction()

set(ENV{LC_ALL} C.UTF-8)
file(REMOVE_RECURSE ${FOLDER})
file(WRITE ${FOLDER}/input "typed")
get_filename_component(helper ${HELPER} NAME_WLE)
list(GET LAPWING -1 program)
set(append -- ${HELPER} append)
set(record record --into)
set(never ${append} never .)  # Is not run.

# The program gets its arguments and its input as they are, and nothing else is printed.
execute_process(COMMAND ${LAPWING} record -n 2 --into plain.json -- ${HELPER} show "a b" "" "\"" "\\"
        "a\\\\" "a b\\" "a\\\"b" "\\\\\" c" "日本 \\" "*" "%PATH%" "-n" "--" "hex:00" "'$x'\t^&|<>"
    WORKING_DIRECTORY ${FOLDER} INPUT_FILE ${FOLDER}/input ENCODING UTF8
    OUTPUT_VARIABLE output ERROR_VARIABLE error RESULT_VARIABLE exit_code)
string(CONCAT arguments "[a b][][\"][\\][a\\\\][a b\\][a\\\"b][\\\\\" c][日本 \\][*][%PATH%][-n][--]"
    "[hex:00]['$x'\t^&|<>]")
if(NOT "${exit_code} ${output} ${error}" STREQUAL "0 ${arguments}typed${arguments} ")
    message(SEND_ERROR "arguments: exit code ${exit_code}, output\n${output}\nand\n${error}")
endif()
check_place(plain.json 1 ${helper} 2)
check_content(plain.json ".*\"labels\": {\"machine\": \"[^\"]+\"}.*")

check(time EXIT 0 ARGUMENTS ${record} time.json --name hex:ff00 --label machine=m
    -- ${HELPER} sleep 120)
check_content(time.json
    ".*{\"machine\": \"m\"}.*\"hex:ff00\": .(1[2-9][0-9]|[2-9][0-9][0-9]|[0-9][0-9][0-9][0-9]+)].*")

check(failure EXIT 5 ERROR "lapwing: run 1 of 3 of ${helper} failed with exit code 5\n"
    ARGUMENTS ${record} never.json -n 3 -- ${HELPER} exit 5)
check(failure_ignored EXIT 0
    ARGUMENTS ${record} ignored.json -n 3 --ignore-failure -- ${HELPER} exit 5)
check_place(ignored.json 1 ${helper} 3)
check(failure_later EXIT 7 ERROR "lapwing: run 2 of 2 of ${helper} failed with exit code 7\n"
    ARGUMENTS ${record} later.json -n 2 --recordings 3 ${append} later . 3)
check_place(later.json 1 ${helper} 2)
check(not_found EXIT 127 ERROR "lapwing: cannot run \"no such\": [^\n]+\n"
    ARGUMENTS ${record} never.json --ignore-failure -- "no such")
check(not_executable EXIT 126 ERROR "lapwing: cannot run \"./input\": [^\n]+\n"
    ARGUMENTS ${record} never.json --ignore-failure -- ./input)
foreach(place IN ITEMS input no/folder.json)
    check(place_${place} EXIT 2 ERROR "lapwing: [^\n]+\n" ARGUMENTS ${record} ${place} ${never})
endforeach()

check(place_too_small EXIT 2 ERROR "lapwing: never.json: would have more than 10000 recordings\n"
    ARGUMENTS ${record} never.json --recordings 10001 ${never})

check(lines EXIT 0 ARGUMENTS ${record} lines.json -n 24
    "--run=a=${HELPER} append order a" "--run=b=${HELPER} append order b")
check_place(lines.json 1 a 24 b 24)
check_content(order "(ab|ba)*(abba|baab)(ab|ba)*")
check(lines_output EXIT 3 ERROR "lapwing: run 1 of 1 of a failed with exit code 3\n"
    ARGUMENTS ${record} never.json "--run=a=${HELPER} show x && ${HELPER} show \"y z\" && exit 3")
check(prepare EXIT 0 ARGUMENTS ${record} prepared.json -n 2 --recordings 2 --warmup 1
    --prepare "${HELPER} append steps p && echo dropped" ${append} steps r)
check_content(steps "prprprprpr")
check_place(prepared.json 2 ${helper} 2)
check(prepare_fails EXIT 2 ERROR "lapwing: --prepare failed with exit code 6\n"
    ARGUMENTS ${record} never.json --prepare "${HELPER} exit 6" ${never})

# The recorded ten minutes are replayed in no case: that would be noticed.
string(CONCAT text "{\"format\": \"lapwing-recordings\", \"version\": 1, \"unit\": \"ms\", "
    "\"recordings\": [{\"id\": \"1\", \"recorded\": \"2026-11-21T21:03:47Z\", \"labels\": {}, "
    "\"notes\": {}, \"samples\": {\"Scan\": [0, 0, 600000]}}]}\n")
file(WRITE ${FOLDER}/scan.json "${text}")
set(replayed replay scan.json --policy)
set(late "lapwing: warning: Scan took longer than recorded in ")
foreach(policy IN ITEMS "average --scale 0.001" "p100 --cap 200")
    separate_arguments(policy)
    check(padded EXIT 0 ERROR "(${late}.*)?" ARGUMENTS ${record} padded.json --name padded
        -- ${program} ${replayed} ${policy} -- ${HELPER} append replayed .)
endforeach()
set(padded "\"padded\": .([2-9][0-9][0-9]|[0-9][0-9][0-9][0-9]+)].*")
check_content(padded.json ".*${padded}${padded}")
check_content(replayed "..")
check(order EXIT 0 OUTPUT "\\[x\\]typed\\[x\\]" ERROR "(${late}.*)?"
    ARGUMENTS ${replayed} order -n 2 -- ${HELPER} show x)
check(failed_stand_in EXIT 7 ARGUMENTS ${replayed} p100 -n 5 ${append} runs . 0)
check_content(runs ".")
check(overrun EXIT 0 ERROR
    "${late}2 of 2 runs, by up to [0-9]+ ms\noperation[^\n]*\nScan +2 +200000 ms [^\n]* 2\n"
    ARGUMENTS ${replayed} median -n 2 --report --page page.html -- ${HELPER} sleep 60)
check_content(page.html ".+")
check(unknown_name EXIT 2 ERROR "lapwing: --name: no operation \"b c\"; there is \"Scan\"\n"
    ARGUMENTS replay scan.json --name "b c" ${never})
check(several_names EXIT 2 ERROR "lapwing: --name is needed: there are \"a\", \"b\"\n"
    ARGUMENTS replay lines.json ${never})
foreach(policy IN ITEMS p101 p worst)
    check(policy_${policy} EXIT 2 ERROR "lapwing: --policy: \"${policy}\" is not [^\n]+\n"
        ARGUMENTS ${replayed} ${policy} ${never})
endforeach()

file(GLOB files ${FOLDER}/never*)
require_match("what should not be there" "${files}" "")
