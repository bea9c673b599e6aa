# Runs the host, whose command line is the list HOST, over trees that it makes in FOLDER.

function(require_match name stream text pattern)
    string(REPLACE "\r\n" "\n" text "${text}")
    if(NOT text MATCHES "${pattern}")
        message(SEND_ERROR "${name}: ${stream} does not match\n${pattern}\nbut is\n${text}")
    endif()
endfunction()

# check(<name> EXIT <code> [OUTPUT <pattern>] [ERROR <pattern>] [ARGUMENTS <argument>...])
# A stream without a pattern must stay empty.
function(check name)
    cmake_parse_arguments(PARSE_ARGV 1 expected "" "EXIT;OUTPUT;ERROR" "ARGUMENTS")
    execute_process(COMMAND ${HOST} ${expected_ARGUMENTS} ENCODING UTF8
        RESULT_VARIABLE exit_code OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT exit_code STREQUAL expected_EXIT)
        message(SEND_ERROR "${name}: exit code ${exit_code}, not ${expected_EXIT}")
    endif()
    require_match(${name} "standard output" "${output}" "^${expected_OUTPUT}$")
    require_match(${name} "standard error" "${error}" "^${expected_ERROR}$")
endfunction()

function(check_refusal name reason)
    check(${name} EXIT 2 ARGUMENTS ${ARGN}
        ERROR "${program}: ${reason}[^\n]*\nTry: ${program} --help\n")
endfunction()

set(ENV{LC_ALL} C.UTF-8)  # Wine reads the names of files as the locale says.
file(REMOVE_RECURSE ${FOLDER})
get_filename_component(program "${HOST}" NAME)
if(HOST MATCHES "^;" AND NOT CMAKE_HOST_WIN32)  # Started as it is, with no DLL beside it.
    set(program renamed)
    file(MAKE_DIRECTORY ${FOLDER})
    file(CREATE_LINK ${HOST} ${FOLDER}/${program} SYMBOLIC)
    set(HOST ${FOLDER}/${program})
endif()

string(REPEAT "lapwing replays, lapwing records\n" 100000 text)
file(WRITE ${FOLDER}/words/top.txt "${text}")
file(WRITE ${FOLDER}/words/日本/below/deep.txt "${text}")
if(CMAKE_HOST_WIN32)  # Anybody may make a junction there, which is not so with symbolic links.
    file(TO_NATIVE_PATH ${FOLDER}/words words)
    execute_process(COMMAND cmd /c mklink /J ${words}\\日本\\circle ${words}
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
else()
    file(CREATE_LINK ${FOLDER}/words ${FOLDER}/words/日本/circle SYMBOLIC)
endif()
file(WRITE ${FOLDER}/no_words/empty.txt "")
file(MAKE_DIRECTORY ${FOLDER}/no_files/folder)

set(statistics
    "[^\n]*: 2 files found, 2 read .6600000 bytes., 3 different words\n\n")
set(headings
    "operation +runs +recorded +work +padded +final +late p50 +late p99 +late worst +overruns +note\n")
# By name. The numbers of three runs each: one of them is too slow.
set(times " +3 +[0-9]+ ms( +[0-9]+[.][0-9]+ ms)+ +")
string(CONCAT rows "count the words${times}[0-3]\n" "publish the report +3 +- .* no recorded samples\n"
    "read the bytes${times}[0-3]\n" "walk the tree${times}[0-3]\n")
string(CONCAT ending "\nThe stand-ins do nothing .* On purpose, \"publish the report\"\n"
    "is never recorded, and the last run of \"count the words\" is 20 ms too slow[.]\n")
string(CONCAT whole ${statistics} ${headings} ${rows} ${ending})
check(table EXIT 0 OUTPUT "${whole}" ARGUMENTS ${FOLDER}/words)

# The worst call is at least 20 ms late.
set(overrun "([2-9][0-9]|[1-9][0-9][0-9]+)[.][0-9]+ ms +[1-3]\n")
check(overrun EXIT 0 OUTPUT ".*\ncount the words +3 +[0-9]+ ms [^\n]* ${overrun}.*"
    ARGUMENTS ${FOLDER}/words)

string(CONCAT log
    "First pass: Begin\n  walk the tree: Begin\n    walk the tree: note: [^\n]*\n.*"
    "\nSecond pass: Begin\n  count the words: Begin\n    count the words: note: [^\n]*\n.*"
    "\nSecond pass: End - [0-9]+ ms\n")
check(log EXIT 0 OUTPUT ".*\nwalk the tree +1 .*" ERROR "${log}"
    ARGUMENTS --set enableTimingProfileLogging=true --set replay.runs=1 ${FOLDER}/words)
set(ENV{REPLAY_HOST_REPLAY_RUNS} 2)
check(environment EXIT 0 OUTPUT ".*\nwalk the tree +2 .*" ARGUMENTS ${FOLDER}/words)
check(arguments_first EXIT 0 OUTPUT ".*\nwalk the tree +1 .*"
    ARGUMENTS --set replay.runs=1 ${FOLDER}/words)
set(ENV{REPLAY_HOST_REPLAY_RUNS} many)
check_refusal(environment_not_number "environment variable REPLAY_HOST_REPLAY_RUNS: "
    ${FOLDER}/words)
unset(ENV{REPLAY_HOST_REPLAY_RUNS})
check(no_words EXIT 0 ARGUMENTS ${FOLDER}/no_words
    OUTPUT "[^\n]*: 1 files found, 1 read .0 bytes., 0 different words\n.*")
check(utf8 EXIT 0 OUTPUT "[^\n]*/words/日本: 1 files found, 1 read .*" ARGUMENTS ${FOLDER}/words/日本)
check(help EXIT 0 OUTPUT "Usage: ${program} .*" ARGUMENTS ${FOLDER}/missing --help)

check(record EXIT 0 OUTPUT "${statistics}" ARGUMENTS --record ${FOLDER}/日本.json ${FOLDER}/words)
check(record_more EXIT 0 OUTPUT "${statistics}"
    ARGUMENTS --set replay.runs=1 --record ${FOLDER}/日本.json ${FOLDER}/words)
file(READ ${FOLDER}/日本.json recordings)
string(JSON samples GET "${recordings}" recordings 0 samples "walk the tree")
string(JSON runs LENGTH "${samples}")
string(JSON recordings LENGTH "${recordings}" recordings)
require_match(recordings "the file" "${recordings} with ${runs}" "^2 with 3$")
string(CONCAT whole ${headings} ${rows} ${ending})
check(replay EXIT 0 OUTPUT "${whole}"
    ARGUMENTS --trace ${FOLDER}/trace.json --replay ${FOLDER}/日本.json)
file(READ ${FOLDER}/trace.json trace)
string(JSON events LENGTH "${trace}{}]")
# Three operations and one without data run three times each, within one scope.
string(REGEX MATCHALL "\"ph\":\"[BE]\"" scopes "${trace}")
list(LENGTH scopes scopes)
require_match(trace "the trace" "${scopes}" "^26$")
check(missing_recordings EXIT 1 ERROR "${program}: [^\n]*missing.json: [^\n]*\n"
    ARGUMENTS --replay ${FOLDER}/missing.json)
file(WRITE ${FOLDER}/broken.json "{\n]")
check(broken_recordings EXIT 1 ERROR "${program}: [^\n]*broken.json:2:1: [^\n]*\n"
    ARGUMENTS --replay ${FOLDER}/broken.json)

check_refusal(no_arguments "no folder given")
# A list of arguments would lose an empty one.
execute_process(COMMAND ${HOST} "" RESULT_VARIABLE exit_code ERROR_VARIABLE error)
require_match(empty_folder "exit code and message" "${exit_code}, ${error}"
    "^2, ${program}: the folder's name is empty\n")
check_refusal(missing_folder "no such folder: \"[^\n]*/日本/missing\"" ${FOLDER}/日本/missing)
check_refusal(file "not a folder: \"[^\n]*/top.txt\"" ${FOLDER}/words/top.txt)
check_refusal(no_files "no readable file below \"[^\n]*/no_files\"" ${FOLDER}/no_files)
check_refusal(two_folders "one folder only, [^\n]*\"two\"" one two)
check_refusal(unknown_option "unknown option \"--fast\"" --fast ${FOLDER}/words)
check_refusal(set_alone "--set needs a value" ${FOLDER}/words --set)
check_refusal(set_without_value "a setting must be key=value, not \"replay.runs\""
    --set replay.runs ${FOLDER}/words)
check_refusal(unknown_setting "unknown setting \"runs\"" --set runs=1 ${FOLDER}/words)
foreach(runs IN ITEMS 0 101 2.5 0x3 99999999999 "")
    check_refusal(runs_${runs} "(the command line: )?setting replay.runs: \"?${runs}\"? is not "
        --set replay.runs=${runs} ${FOLDER}/words)
endforeach()
check_refusal(not_boolean "the command line: setting enableTimingProfileLogging: \"yes\" is not true, false, 1 or 0"
    --set enableTimingProfileLogging=yes ${FOLDER}/missing)
