# Completions of the lapwing command for bash.

_lapwing() {
    local cur prev words cword split
    _init_completion || return
    local commands='record replay show compare merge edit import report push pull'
    local options i
    for ((i = 1; i < cword; ++i)); do
        if [ "${words[i]}" = -- ]; then
            _command_offset $((i + 1))
            return
        fi
    done
    if [ "$cword" = 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands --help --version" -- "$cur")
        return
    fi
    case $prev in
        --policy) mapfile -t COMPREPLY < <(compgen -W 'average median p90 p99 order random' -- "$cur"); return ;;
        --reduce) mapfile -t COMPREPLY < <(compgen -W 'average median p90 p99' -- "$cur"); return ;;
        -n | --recordings | --warmup | --seed | --scale | --jitter | --cap | --tolerance | --at-least | \
            --trim | --name | --label | --rename | --only | --without | --names | --run | --prefix) return ;;
        --prepare) mapfile -t COMPREPLY < <(compgen -c -- "$cur"); return ;;
    esac
    case ${words[1]} in
        record) options='-n --recordings --warmup --prepare --ignore-failure --name --label --into --run --' ;;
        replay) options='-n --name --policy --seed --scale --jitter --cap --report --page --' ;;
        show) options='--json --csv' ;;
        compare) options='--tolerance --at-least --strict --json --names' ;;
        merge) options='-o' ;;
        edit) options='-o --scale --trim --reduce --rename --only --without --label' ;;
        import) options='--into --log --prefix --hyperfine --csv --label' ;;
        report) options='-o --before' ;;
        push) options='--create --print-schema' ;;
        pull) options='-o' ;;
    esac
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options --help" -- "$cur")
    else
        _filedir
    fi
}

complete -F _lapwing lapwing
