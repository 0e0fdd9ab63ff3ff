# Completion of tarvo's command lines for bash; made by "tarvo completion bash".
_tarvo()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} options="" words=""
    local verb=${COMP_WORDS[1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words="ls list dir info get put cat cp mv rm mk attr undelete init check repair pack tape config help -h --help --version"
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
        return
    fi
    if [[ $verb == tape ]]; then
        if ((COMP_CWORD == 2)); then
            mapfile -t COMPREPLY < <(compgen -W "test ls convert -h --help --version" -- "$word")
            return
        fi
        verb="tape ${COMP_WORDS[2]}"
    fi
    case $verb in
    ls|list|dir)
        options="-R --recursive --purged --json --config --no-config --log -h --help --version"
        ;;
    info)
        options="--json --config --no-config --log -h --help --version"
        ;;
    get)
        options="-R --recursive -d --directory -o --output --text --force-text --txt --header --overwrite -v --verbose --config --no-config --log -h --help --version"
        [[ $previous != --header ]] || words="none hpbasic hpcalc"
        ;;
    put)
        options="--as --text --txt --header --type --record --system --overwrite --backup --damaged --dry-run -v --verbose --config --no-config --log -h --help --version"
        [[ $previous != --header ]] || words="none hpbasic hpcalc"
        ;;
    cat)
        options="--raw --config --no-config --log -h --help --version"
        ;;
    cp)
        options="--overwrite --force -i --interactive --backup --damaged --dry-run -v --verbose --config --no-config --log -h --help --version"
        ;;
    mv)
        options="--overwrite --force -i --interactive --backup --damaged --dry-run -v --verbose --config --no-config --log -h --help --version"
        ;;
    rm)
        options="--force -i --interactive --backup --damaged --dry-run -v --verbose --config --no-config --log -h --help --version"
        ;;
    mk)
        options="--size --type --record --system --backup --damaged --dry-run -v --verbose --config --no-config --log -h --help --version"
        ;;
    attr)
        options="--type --system --record --date --protect --hide --backup --damaged --dry-run -v --verbose --config --no-config --log -h --help --version"
        [[ $previous != --protect ]] || words="on off"
        [[ $previous != --hide ]] || words="on off"
        ;;
    undelete)
        options="--type --system --at --backup --damaged --dry-run -v --verbose --config --no-config --log -h --help --version"
        ;;
    init)
        options="--media --format --system --size --sectors --heads --label --dir --interleave --boot --quick --force --json --dry-run --config --no-config --log -h --help --version"
        [[ $previous != --format ]] || words="lif disk45 tape45"
        [[ $previous != --system ]] || words="9845 9831 250 9825"
        ;;
    check)
        options="--json --config --no-config --log -h --help --version"
        ;;
    repair)
        options="--backup --dry-run --config --no-config --log -h --help --version"
        ;;
    pack)
        options="--backup --dry-run -v --verbose --config --no-config --log -h --help --version"
        ;;
    "tape test")
        options="--xml --block --config --no-config --log -h --help --version"
        ;;
    "tape ls")
        options="--json --config --no-config --log -h --help --version"
        ;;
    "tape convert")
        options="--to --block --pack --force --config --no-config --log -h --help --version"
        [[ $previous != --to ]] || words="simh fixed hpi"
        ;;
    config)
        options="--config --no-config --log -h --help --version"
        [[ $previous != config ]] || words="check"
        ;;
    help)
        options="--config --no-config --log -h --help --version"
        words="ls list dir info get put cat cp mv rm mk attr undelete init check repair pack tape config help"
        ;;
    *) return ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}
complete -o bashdefault -o default -F _tarvo tarvo
