# Has lapwing, whose command line is the list LAPWING, show, compare, merge, edit and import
# recordings in FOLDER, which it makes anew.

function(require_match name stream text pattern)
    string(REPLACE "\r\n" "\n" text "${text}")
    if(NOT text MATCHES "${pattern}")
        message(SEND_ERROR "${name}: ${stream} does not match\n${pattern}\nbut is\n${text}")
    endif()
endfunction()

# check(<name> EXIT <code> [INPUT <file>] [OUTPUT <pattern>] [ERROR <pattern>] ARGUMENTS ...)
# A stream without a pattern must stay empty. What was written is in `output` then.
function(check name)
    cmake_parse_arguments(PARSE_ARGV 1 expected "" "EXIT;INPUT;OUTPUT;ERROR" "ARGUMENTS")
    if(NOT expected_INPUT)
        set(expected_INPUT empty)
    endif()
    execute_process(COMMAND ${LAPWING} ${expected_ARGUMENTS} ENCODING UTF8
        WORKING_DIRECTORY ${FOLDER} INPUT_FILE ${FOLDER}/${expected_INPUT}
        RESULT_VARIABLE exit_code OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT exit_code STREQUAL expected_EXIT)
        message(SEND_ERROR "${name}: exit code ${exit_code}, not ${expected_EXIT}: ${error}")
    endif()
    require_match(${name} "standard output" "${output}" "^${expected_OUTPUT}$")
    require_match(${name} "standard error" "${error}" "^${expected_ERROR}$")
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(check_refusal name reason)
    check(${name} EXIT 2 ERROR "lapwing: ${reason}[^\n]*\n" ARGUMENTS ${ARGN})
endfunction()

# check_json(<name> <member>... VALUES <path;value>...): what stands at paths below the members of
# `output`. A value is a pattern.
function(check_json name)
    cmake_parse_arguments(PARSE_ARGV 1 expected "" "" "VALUES")
    foreach(entry IN LISTS expected_VALUES)
        string(REGEX MATCH "^(.*)=(.*)$" entry "${entry}")
        set(pattern "${CMAKE_MATCH_2}")
        string(REPLACE "/" ";" path "${CMAKE_MATCH_1}")
        string(JSON value GET "${output}" ${expected_UNPARSED_ARGUMENTS} ${path})
        require_match(${name} "${path}" "${value}" "^${pattern}$")
    endforeach()
endfunction()

# check_members(<name> <first> <member>...): some of `output`, in their order, from the first there.
function(check_members name first)
    string(REGEX MATCHALL "\"[a-z0-9_]+\": " members "${output}")
    list(FIND members "\"${first}\": " start)
    list(LENGTH ARGN count)
    list(SUBLIST members ${start} ${count} members)
    string(REGEX REPLACE "[\": ]" "" members "${members}")
    require_match(${name} "the order of members" "${members}" "^${ARGN}$")
endfunction()

# place(<file> <count> <samples of an operation>...): recordings with the ids FILE-1 to FILE-COUNT,
# one on each day of January.
function(place file count)
    string(JOIN ", " samples ${ARGN})
    set(recordings "")
    foreach(day RANGE 1 ${count})
        string(APPEND recordings ",{\"id\": \"${file}-${day}\", \"recorded\": "
            "\"2026-01-0${day}T00:00:00Z\", \"labels\": {\"build\": \"${day}\"}, \"notes\": {}, "
            "\"samples\": {${samples}}}")
    endforeach()
    string(SUBSTRING "${recordings}" 1 -1 recordings)
    file(WRITE ${FOLDER}/${file} "{\"format\": \"lapwing-recordings\", \"version\": 1, "
        "\"unit\": \"ms\", \"recordings\": [${recordings}]}")
endfunction()

set(ENV{LC_ALL} C.UTF-8)  # Wine reads the names of files as the locale says.
set(ENV{COLUMNS} 22)
file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
file(WRITE ${FOLDER}/empty "")

# ---- show
place(two 2 [=["Scan": [0, 9, 9, 4, 9]]=] [=["a \"b\",\n<c>": [1]]=] [=["hex:ff": [2]]=])
set(times " +2026-01-01T00:00:00Z +2026-01-02T00:00:00Z\n")
set(counts "  recordings +samples +first +last\n")
set(headings "  average +min +median +p90 +p99 +max +standard deviation\n")
set(scan "Scan\n${counts} +2 +10${times}${headings} +6 ms +0 ms +9 ms +9 ms +9 ms +9 ms +3[.]9 ms\n")
set(bar "  ▂▂      ▂▂        ██\n")
check(show EXIT 0 ARGUMENTS show two
    OUTPUT "${scan}${bar}\na .b.,\\\\n<c>\n.*\nhex:ff\n${counts} +2 +2${times}.*")
if(NOT CMAKE_HOST_WIN32 AND NOT LAPWING MATCHES "wine")
    set(ENV{LC_ALL} C)
    check(show_plain EXIT 0 OUTPUT "${scan}  ::      ::        @@\n" ARGUMENTS show two?name=Scan)
    set(ENV{LC_ALL} C.UTF-8)
endif()
set(figures name recordings samples average min median p90 p99 max mean stddev)
check(show_json EXIT 0 OUTPUT ".*" ARGUMENTS show --json two)
check_members(show_json operations operations ${figures})
check_json(show_json operations VALUES 0/name=Scan 0/recordings=2 0/samples=10 0/average=6
    0/median=9 0/mean=6[.]2[0-9]* "1/name=a \"b\",\n<c>" 1/stddev=0[.]0 2/name=hex:ff)
check(show_csv EXIT 0 ARGUMENTS show --csv two?last=1 OUTPUT "name,recording,recorded,sample
Scan,two-2,2026-01-02T00:00:00Z,0\n.*
\"a \"\"b\"\",\n<c>\",two-2,2026-01-02T00:00:00Z,1\nhex:ff,two-2,2026-01-02T00:00:00Z,2\n")
check(show_input EXIT 0 INPUT two OUTPUT "hex:ff\n.*" ARGUMENTS show -?name=hex:ff)
check_refusal(show_twice "--json excludes --csv" show two --json --csv)
check_refusal(show_flag "--json takes no value" show --json=two two)
string(ASCII 1 control)
check_refusal(show_control "[^\n]*--.x01" show two --${control})
check_refusal(show_missing "missing: " show two missing)
check_refusal(show_filter "the filter \"Name=a\": " show two?Name=a)
file(WRITE ${FOLDER}/broken "{\n]")
check_refusal(show_broken "broken:2:1: " show broken)

# ---- compare
place(before 6 [=["Same": [10]]=] [=["Slower": [20, 30]]=] [=["Gone": [1]]=] [=["Wide": [10, 20, 90]]=])
place(after 6 [=["Same": [10]]=] [=["Slower": [40, 50]]=] [=["New": [1]]=])
place(few 2 [=["Same": [10]]=])
check(compare EXIT 1 ARGUMENTS compare before after
    OUTPUT "[^\n]*\nSlower +slower +20 ms +40 ms +[+]20 ms +[+]20 ms to [+]20 ms +1[.]2 ms
Same +same [^\n]* 1 ms\nGone +only-before[^\n]*\nWide +only-before[^\n]*\nNew +only-after[^\n]*\n")
check(compare_json EXIT 1 OUTPUT ".*" ARGUMENTS compare before after --json)
check_members(compare_json verdict verdict operations name verdict provisional shift_ms interval_ms
    margin_ms needed before ${figures} after)
check_json(compare_json VALUES verdict=slower operations/0/name=Gone
    operations/0/verdict=only-before operations/0/shift_ms= operations/0/interval_ms=
    operations/0/after= operations/3/verdict=slower operations/3/provisional=OFF
    operations/3/shift_ms=20.0 operations/3/interval_ms/1=20.0 operations/3/margin_ms=1.25
    operations/3/needed= operations/3/before/recordings=6 operations/3/after/samples=12)
check(compare_strict EXIT 1 OUTPUT ".*" ARGUMENTS compare before after --strict)
check(compare_tolerance EXIT 0 OUTPUT ".*" ARGUMENTS compare before after --tolerance 80 --strict)
check(compare_at_least EXIT 0 OUTPUT ".*" ARGUMENTS compare before after --at-least 20)
set(too_few "[^\n]*\nSame +too-few .* too few samples; 5 recordings on each side would decide it\n.*")
check(compare_few EXIT 0 OUTPUT "${too_few}" ARGUMENTS compare before few)
check(compare_few_strict EXIT 3 OUTPUT "${too_few}" ARGUMENTS compare before few --strict)
check(compare_names EXIT 1 OUTPUT ".*\nSame=Slower +slower .*\nSlower=Slower +same .*"
    ARGUMENTS compare before --names Same=Slower --names Slower=Slower)
check_refusal(compare_unknown "--names: no name \"Sam\"; there is \"Gone\", \"Same\", "
    compare before --names Sam=Slower)
check_refusal(compare_one "compare needs two places" compare before)
check_refusal(compare_margin "--tolerance: " compare before after --tolerance -1)
foreach(day RANGE 1 6)
    math(EXPR time "10 + 7 * ${day}")
    file(WRITE ${FOLDER}/${day} "Noise,${time}\n")
    check(noise_${day} EXIT 0 OUTPUT "1 sample of 1 operation from ${day}\n"
        ARGUMENTS import --into noisy --csv ${day})
endforeach()
check(compare_undecided EXIT 0 ARGUMENTS compare noisy noisy --json OUTPUT ".*")
check_json(compare_undecided VALUES verdict=undecided operations/0/needed=[0-9]+)
check(compare_undecided_table EXIT 0 ARGUMENTS compare noisy noisy --strict --at-least 25
    OUTPUT ".* no change found; one of up to [0-9]+ ms could be there; [^\n]* decide it\n")

# ---- merge
check(merge EXIT 0 ARGUMENTS merge -o merged before few before)
check(merged EXIT 0 OUTPUT ".*" ARGUMENTS show --json merged?name=Same)
check_json(merged VALUES operations/0/recordings=8)

# ---- edit
check(edit EXIT 0 OUTPUT ".*" ARGUMENTS edit two?last=1 -o - --only Scan --only hex:ff
    --without hex:ff --rename Scan=Read --scale 2 --trim 21..100 --reduce median --label a=b)
check_json(edit recordings 0 VALUES "samples/Read=[[] 18 []]" labels/a=b labels/build=2
    recorded=2026-01-02T00:00:00Z id=[0-9a-f]+)
check(edit_some EXIT 0 OUTPUT ".*" INPUT merged ARGUMENTS edit - -o - --without Gone)
string(REGEX MATCHALL "before-[1-6]" ids "${output}")
require_match(edit_some "ids that stay" "${ids}" "^$")
string(REGEX MATCHALL "few-[12]" ids "${output}")
require_match(edit_some "ids that stay" "${ids}" "^few-1;few-2$")
file(WRITE ${FOLDER}/kept "kept")
if(NOT CMAKE_HOST_WIN32 AND NOT LAPWING MATCHES "wine")  # where command lines are shorter
    string(REPEAT x 65537 long)
    check_refusal(edit_long "--rename: [^\n]*65536 bytes" edit two -o kept --rename=Scan=${long})
endif()
check_refusal(edit_hex "--label: hex: " edit two -o kept --label=a=hex:FF)
foreach(entry IN ITEMS "--only: no name \"Read\"|--only=Read" "--rename: no name|--rename=Read=Scan"
        "--scale: |--scale=-1" "--trim: |--trim=90..10" "--trim: |--trim=5"
        "--reduce: |--reduce=p101")
    string(REGEX MATCH "^(.*)[|](.*)$" entry "${entry}")
    check_refusal(edit_refused "${CMAKE_MATCH_1}" edit two -o kept ${CMAKE_MATCH_2})
endforeach()
file(READ ${FOLDER}/kept kept)
require_match(edit_refused "the file" "${kept}" "^kept$")

# ---- import
file(WRITE ${FOLDER}/log "[x] Scan: End - 5 ms\r\nnoise\nA: Scan: End - 6 ms\n")
file(WRITE ${FOLDER}/日本.json "{\"results\": [{\"command\": \"a\\u0000<b>\", \"times\": [0.5]}]}")
check(import_log EXIT 0 OUTPUT "2 samples of 2 operations from log\n"
    ARGUMENTS import --into imported --log log --label k=v)
check(import_prefix EXIT 0 INPUT log OUTPUT "1 sample of 1 operation from standard input\n"
    ARGUMENTS import --into imported --log - "--prefix=[A-Z]+: ")
check(import_hyperfine EXIT 0 OUTPUT "1 sample of 1 operation from 日本.json\n"
    ARGUMENTS import --into imported --hyperfine 日本.json)
check(imported EXIT 0 OUTPUT ".*" ARGUMENTS show --csv imported)
foreach(sample IN ITEMS "Scan,[^\n]*Z,5" "A: Scan,[^\n]*Z,6" "Scan,[^\n]*Z,6" "<b>,[^\n]*Z,500")
    require_match(imported "the samples" "${output}" "${sample}\n")
endforeach()
check(import_label EXIT 0 OUTPUT "A: Scan\n.*\nScan\n.*" ARGUMENTS show imported?label=k%3Dv)
file(WRITE ${FOLDER}/csv "name,milliseconds\na,1\n\"b\nb\",x\n")
check_refusal(import_csv "csv:3: " import --into unmade --csv csv)
check_refusal(import_json "csv:1: not JSON" import --into unmade --hyperfine csv)
check_refusal(import_nothing "csv: there are no samples" import --into unmade --log csv)
check_refusal(import_prefix "--prefix: " import --into unmade --log log "--prefix=(")
check_refusal(import_unnamed "--csv: " import --into unmade --csv=)
check_refusal(import_missing "missing: " import --into unmade --log missing)
if(EXISTS ${FOLDER}/unmade)
    message(SEND_ERROR "a refused import has made a file")
endif()
