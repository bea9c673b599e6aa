#!/bin/sh
# terminal_check.sh LAPWING FOLDER: signals and terminals, which only POSIX systems have in this way.
# Works in FOLDER, which it makes anew. Programs never end by themselves if a signal does not come.
lapwing=$1
rm -rf "$2" && mkdir -p "$2" && cd "$2" || exit 1
failures=0

# require NAME FOUND WANTED
require() {
    [ "$2" = "$3" ] && return
    echo "$1: found <$2>, not <$3>" >&2
    failures=$((failures + 1))
}

# interrupt SIGNAL EXIT_CODE: the third run sends lapwing alone a signal, which is to end that run.
interrupt() {
    rm -f runs
    "$lapwing" record -n 5 --name run --into "$1.json" -- sh -c 'echo >>runs
        [ $(wc -l <runs) -lt 3 ] || { kill -s '"$1"' $PPID; exec sleep 1000; }' 2>"$1.txt"
    require "$1: exit code" $? "$2"
    require "$1: message" "$(cat "$1.txt")" \
        "lapwing: interrupted; 2 of 5 runs were completed and are recorded"
    require "$1: samples" "$(grep -c '"run": \[[0-9]*, [0-9]*\]' "$1.json")" 1
}
interrupt INT 130
interrupt TERM 143

# A program that ends well after a signal was interrupted all the same, and is not padded.
catch='trap "exit 0" INT; kill -s INT $PPID; while :; do sleep 0.1; done'
"$lapwing" record --into caught.json -- sh -c "$catch" 2>caught.txt
require "caught: exit code" "$? $(ls caught.json 2>&- )" "130 "
sed 's/"run": .*/"run": [600000]}}]}/' INT.json >long.json
"$lapwing" replay long.json -- sh -c "$catch"
require "replay: exit code" $? 130

# Opening a pipe would wait for a writer. Names of files may be no UTF-8.
mkfifo pipe
message=$("$lapwing" record --into pipe -- echo run 2>&1)
require "pipe" "$? $message" "2 lapwing: pipe: not a regular file"
message=$("$lapwing" show "$(printf 'a\377b')" 2>&1)
require "no UTF-8" "$message" 'lapwing: hex:61ff62: No such file or directory'

message=$("$lapwing" record --into killed.json -- sh -c 'kill -KILL $$' 2>&1)
require "killed" "$? $message" "137 lapwing: run 1 of 1 of sh was ended by signal 9"

# Programs find signals as lapwing did. Those from 29 on are the C library's or unusual.
ignored="sed -n 's/^SigIgn:.*\(.......\)$/\1/p' /proc/self/status"
trap '' INT
require "ignored signals" "$("$lapwing" record --into x.json -- sh -c "$ignored")" \
    "$(sh -c "$ignored")"
trap - INT

require "no progress outside a terminal" "$("$lapwing" record -n 3 --into x.json -- true 2>&1)" ""
command -v script >/dev/null || exit $failures

# A carriage return begins each line of progress, and the last one is blank.
shown=$(script -qec "'$lapwing' record -n 3 --into x.json -- true" /dev/null | tr '\r' '\n')
require "progress" "$(echo "$shown" | sed 's/[0-9]* ms, [0-9]* s/N/; s/ *$//' | grep run | tr '\n' ';')" \
    "run 1 of 3;run 2 of 3, last N left;run 3 of 3, last N left;"
require "progress is erased" "$(echo "$shown" | tail -n 2 | tr -d ' \n')" ""
script -qec "'$lapwing' record --into x.json -- sh -c 'test -t 0 && test -t 1 && test -t 2'" x.txt
require "the program has the terminal" $? 0

# The terminal sends Ctrl-C to lapwing and the program, once it has begun.
{
    until [ -e begun ]; do sleep 0.1; done
    printf '\003'
} | script -qec "'$lapwing' record --into x.json -- sh -c 'touch begun; exec sleep 1000'" key.txt >shown.txt
require "Ctrl-C" "$? $(grep -o 'lapwing: .*completed' shown.txt)" \
    "130 lapwing: interrupted before a run was completed"
exit $failures
