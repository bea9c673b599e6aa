# Has lapwing, whose command line is the list LAPWING, run the program HELPER. Works in FOLDER, which
# it makes anew. Nothing here takes long unless it fails: then the test's timeout ends it.

function(require_match name stream text pattern)
    string(REPLACE "\r\n" "\n" text "${text}")
    if(NOT text MATCHES "${pattern}")
        message(SEND_ERROR "${name}: ${stream} does not match\n${pattern}\nbut is\n${text}")
    endif()
endfunction()

# check(<name> EXIT <code> [OUTPUT <pattern>] [ERROR <pattern>] ARGUMENTS <argument>...)
# A stream without a pattern must stay empty.
function(check name)
    cmake_parse_arguments(PARSE_ARGV 1 expected "" "EXIT;OUTPUT;ERROR" "ARGUMENTS")
    execute_process(COMMAND ${LAPWING} ${expected_ARGUMENTS} ENCODING UTF8
        WORKING_DIRECTORY ${FOLDER} INPUT_FILE ${FOLDER}/input
        RESULT_VARIABLE exit_code OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT exit_code STREQUAL expected_EXIT)
        message(SEND_ERROR "${name}: exit code ${exit_code}, not ${expected_EXIT}: ${error}")
    endif()
    require_match(${name} "standard output" "${output}" "^${expected_OUTPUT}$")
    require_match(${name} "standard error" "${error}" "^${expected_ERROR}$")
endfunction()

# check_place(<place> <recordings> [<name> <samples>]...): how many there are, in the last recording.
function(check_place place recordings)
    file(READ ${FOLDER}/${place} text)
    string(JSON all GET "${text}" recordings)
    string(JSON count LENGTH "${all}")
    require_match(${place} "the number of recordings" "${count}" "^${recordings}$")
    math(EXPR last "${count} - 1")
    while(ARGN)
        list(POP_FRONT ARGN name samples)
        string(JSON count LENGTH "${all}" ${last} samples ${name})
        require_match(${place} "the number of samples of ${name}" "${count}" "^${samples}$")
    endwhile()
endfunction()

function(check_content file pattern)
    file(READ ${FOLDER}/${file} text)
    require_match(${file} "the file" "${text}" "^${pattern}$")
endfunction()

function(check_missing file)
    if(EXISTS ${FOLDER}/${file})
        message(SEND_ERROR "${file} is there")
    endif()
endfunction()

# place(<file> <sample>...): a file with one recording of the operation "Scan".
function(place file)
    list(JOIN ARGN ", " samples)
    string(CONCAT text "{\"format\": \"lapwing-recordings\", \"version\": 1, \"unit\": \"ms\", "
        "\"recordings\": [{\"id\": \"1\", \"recorded\": \"2026-11-21T21:03:47Z\", \"labels\": {}, "
        "\"notes\": {}, \"samples\": {\"Scan\": [${samples}]}}]}\n")
    file(WRITE ${FOLDER}/${file} "${text}")
endfunction()

set(ENV{LC_ALL} C.UTF-8)
file(REMOVE_RECURSE ${FOLDER})
file(WRITE ${FOLDER}/input "typed")
file(WRITE ${FOLDER}/not_a_program "typed")
set(append -- ${HELPER} append)
list(GET LAPWING -1 program)

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
get_filename_component(helper ${HELPER} NAME_WLE)
check_place(plain.json 1 ${helper} 2)
check_content(plain.json ".*\"labels\": {\"machine\": \"[^\"]+\"}.*")

check(time EXIT 0 ARGUMENTS record --name hex:ff00 --label machine=m --into time.json
    -- ${HELPER} sleep 120)
check_content(time.json
    ".*{\"machine\": \"m\"}.*\"hex:ff00\": .(1[2-9][0-9]|[2-9][0-9][0-9]|[0-9][0-9][0-9][0-9]+).*")

check(failure EXIT 5 ERROR "lapwing: run 1 of 3 of ${helper} failed with exit code 5\n"
    ARGUMENTS record -n 3 --into failed.json -- ${HELPER} exit 5)
check_missing(failed.json)
check(failure_ignored EXIT 0
    ARGUMENTS record -n 3 --ignore-failure --into ignored.json -- ${HELPER} exit 5)
check_place(ignored.json 1 ${helper} 3)
check(failure_later EXIT 7 ERROR "lapwing: run 2 of 2 of ${helper} failed with exit code 7\n"
    ARGUMENTS record -n 2 --recordings 3 --into later.json ${append} later . 3)
check_place(later.json 1 ${helper} 2)
check(not_found EXIT 127 ERROR "lapwing: cannot run \"no such\": [^\n]+\n"
    ARGUMENTS record --ignore-failure --into failed.json -- "no such")
check(not_executable EXIT 126 ERROR "lapwing: cannot run \"./not_a_program\": [^\n]+\n"
    ARGUMENTS record --ignore-failure --into failed.json -- ./not_a_program)
check_missing(failed.json)

foreach(place IN ITEMS input no/folder.json)
    check(place_${place} EXIT 2 ERROR "lapwing: [^\n]+\n"
        ARGUMENTS record --into ${place} ${append} started .)
endforeach()
check_missing(started)

check(lines EXIT 0 ARGUMENTS record -n 24 --into lines.json
    "--run=a=${HELPER} append order a" "--run=b=${HELPER} append order b")
check_place(lines.json 1 a 24 b 24)
check_content(order "(ab|ba)*.*abba.*|(ab|ba)*.*baab.*")
check(lines_output EXIT 3 ERROR "lapwing: run 1 of 1 of a failed with exit code 3\n"
    ARGUMENTS record --into failed.json
    "--run=a=${HELPER} show x && ${HELPER} show \"y z\" && exit 3")
check_missing(failed.json)

check(prepare EXIT 0 ARGUMENTS record -n 2 --recordings 2 --warmup 1 --into prepared.json
    --prepare "${HELPER} append steps p && echo dropped" ${append} steps r)
check_content(steps "prprprprpr")
check_place(prepared.json 2 ${helper} 2)
check(prepare_fails EXIT 2 ERROR "lapwing: --prepare failed with exit code 6\n"
    ARGUMENTS record --into failed.json --prepare "${HELPER} exit 6" ${append} started .)
check_missing(started)

# A replay is as long as it should be: the recorded ten minutes would be noticed.
place(scan.json 0 0 600000)
place(short.json 1)
set(replayed replay scan.json --policy)
set(if_slow "(lapwing: warning: [^\n]+\n)?")
check(median EXIT 0 OUTPUT "\\[x\\]typed" ERROR "${if_slow}"
    ARGUMENTS ${replayed} median -- ${HELPER} show x)
check(order EXIT 0 OUTPUT "\\[x\\]typed\\[x\\]" ERROR "${if_slow}"
    ARGUMENTS ${replayed} order -n 2 -- ${HELPER} show x)
foreach(policy IN ITEMS "average --scale 0.001" "p100 --cap 200")
    separate_arguments(policy)
    check(padded EXIT 0 ERROR "${if_slow}" ARGUMENTS record --name padded --into padded.json
        -- ${program} ${replayed} ${policy} -- ${HELPER} append replayed .)
endforeach()
set(padded "\"padded\": .([2-9][0-9][0-9]|[0-9][0-9][0-9][0-9]+)].*")
check_content(padded.json ".*${padded}${padded}")
check_content(replayed "..")
check(failed_stand_in EXIT 7 OUTPUT "" ARGUMENTS ${replayed} p100 -n 5 ${append} runs . 0)
check_content(runs ".")

check(overrun EXIT 0 ERROR "lapwing: warning: Scan took longer than recorded in 2 of 2 runs, by up to [0-9]+ ms\noperation[^\n]*\nScan +2 +1 ms [^\n]* 2\n"
    ARGUMENTS replay short.json -n 2 --report --page page.html -- ${HELPER} sleep 60)
check_content(page.html ".+")
check(unknown_name EXIT 2 ERROR "lapwing: --name: no operation \"b c\"; there is \"Scan\"\n"
    ARGUMENTS replay scan.json --name "b c" ${append} started .)
check(several_names EXIT 2 ERROR "lapwing: --name is needed: there are \"a\", \"b\"\n"
    ARGUMENTS replay lines.json ${append} started .)
foreach(policy IN ITEMS p101 p worst)
    check(policy_${policy} EXIT 2 ERROR "lapwing: --policy: \"${policy}\" is not [^\n]+\n"
        ARGUMENTS ${replayed} ${policy} ${append} started .)
endforeach()
check_missing(started)
