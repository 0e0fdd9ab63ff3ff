# Completion of tarvo's command lines for bash; made by "tarvo completion bash".
_tarvo()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} options="" words=""
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words="ls list dir info get put cat cp mv rm mk attr undelete help -h --help --version"
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
        return
    fi
    case ${COMP_WORDS[1]} in
    ls|list|dir)
        options="--purged --json --log -h --help --version"
        ;;
    info)
        options="--json --log -h --help --version"
        ;;
    get)
        options="-d --directory -o --output --text --force-text --txt --header --overwrite -v --verbose --log -h --help --version"
        [[ $previous != --header ]] || words="none hpbasic hpcalc"
        ;;
    put)
        options="--as --text --txt --header --type --record --system --overwrite --backup --damaged --dry-run -v --verbose --log -h --help --version"
        [[ $previous != --header ]] || words="none hpbasic hpcalc"
        ;;
    cat)
        options="--raw --log -h --help --version"
        ;;
    cp)
        options="--overwrite --force -i --interactive --backup --damaged --dry-run -v --verbose --log -h --help --version"
        ;;
    mv)
        options="--overwrite --force -i --interactive --backup --damaged --dry-run -v --verbose --log -h --help --version"
        ;;
    rm)
        options="--force -i --interactive --backup --damaged --dry-run -v --verbose --log -h --help --version"
        ;;
    mk)
        options="--size --type --record --system --backup --damaged --dry-run -v --verbose --log -h --help --version"
        ;;
    attr)
        options="--type --system --record --date --protect --hide --backup --damaged --dry-run -v --verbose --log -h --help --version"
        [[ $previous != --protect ]] || words="on off"
        [[ $previous != --hide ]] || words="on off"
        ;;
    undelete)
        options="--type --system --at --backup --damaged --dry-run -v --verbose --log -h --help --version"
        ;;
    help)
        options="--log -h --help --version"
        words="ls list dir info get put cat cp mv rm mk attr undelete help"
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
