# Completion of cfatool for bash.

# Options of a subcommand; those of regs and regress are named by both words.
_cfatool_options() {
    case $1 in
    chart) echo --list --size --bayer --bits --seed --noise --period --angle --rgb -o ;;
    mosaic) echo --bayer --bits --noise --seed -o ;;
    preview) echo -o --gain --false-colour --crop --zoom --label --columns ;;
    run) echo -o -r --top --set --bayer --mosaic --debug --planes ;;
    compare) echo --tolerance --crop --bayer --map --max-list --common --explain --quiet --json ;;
    probe) echo --window --json ;;
    hex) echo --crop -o --back --bits --colour ;;
    crop) echo --around -o ;;
    "regress plan") echo --pictures --registers --set --bayer --random --seed -o ;;
    "regress run") echo -o --against --sums --expect --record --tool --jobs --shard --limit --keep --look --minimise ;;
    "regress merge") echo --junit --page --record ;;
    "regs defaults") echo -o ;;
    "regs check") echo --unset --json ;;
    "regs diff") echo --json ;;
    "regs set") echo -o ;;
    "regs dump") echo --from --block ;;
    "regs doc") echo -o ;;
    report) echo -o ;;
    view) echo --port --open ;;
    conformance) echo --tool --sums --record --list --inputs --export ;;
    esac
}

# Words that stand at this place besides files; the program knows its charts and registers.
_cfatool_words() {
    case $1 in
    "") echo chart mosaic preview run compare crop probe hex regress regs report view conformance --version --help ;;
    regress) echo plan run merge --help ;;
    regs) echo defaults check diff set dump doc --help ;;
    chart) "$2" chart --list 2>/dev/null | cut -d' ' -f1 ;;
    "regs defaults") echo cfa cmodel_top ;;
    "regs set") for block in cfa cmodel_top; do "$2" regs defaults $block; done 2>/dev/null | sed -n 's/ = .*/=/p' ;;
    esac
}

_cfatool() {
    local word=${COMP_WORDS[COMP_CWORD]} command=
    if ((COMP_CWORD > 1)); then
        command=${COMP_WORDS[1]}
        if [[ $command == reg* ]] && ((COMP_CWORD > 2)); then
            command+=" ${COMP_WORDS[2]}"
        fi
    fi
    if [[ $word == -* && -n $command && $command != regs && $command != regress ]]; then
        COMPREPLY=($(compgen -W "$(_cfatool_options "$command") --help" -- "$word"))
        return
    fi
    COMPREPLY=($(compgen -W "$(_cfatool_words "$command" "${COMP_WORDS[0]}")" -- "$word"))
    [[ ${COMPREPLY[0]} == *= ]] && compopt -o nospace 2>/dev/null
    return 0
}

complete -o default -F _cfatool cfatool
