# Completion of modemctl for bash. The words come from the program's own help, so that they cannot
# drift: the subcommands from the overview, the options from the subcommand.
_modemctl() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command='' i words
    case $before in
        --root | --state) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
        --log | --output | --bundle) mapfile -t COMPREPLY < <(compgen -f -- "$word"); return ;;
        --color) mapfile -t COMPREPLY < <(compgen -W 'auto always never' -- "$word"); return ;;
    esac
    for ((i = 1; i < COMP_CWORD; i++)); do
        [[ -n $command || ${COMP_WORDS[i]} == -* || ${COMP_WORDS[i - 1]} == --* ]] ||
            command=${COMP_WORDS[i]}
    done
    if [[ $word == -* ]]; then
        words=$(modemctl ${command:+"$command"} --help 2>/dev/null | sed -n 's/^  \(--[a-z-]*\).*/\1/p')
    elif [[ -z $command ]]; then
        words=$(modemctl --help | sed -n 's/^  \([a-z][a-z]*\)  .*/\1/p')
    elif [[ $command == get ]]; then
        words=$(sed -n 's/^CELLMODEM_\([A-Z0-9_]*\)=.*/\1/p' /var/log/wireless.cardstats 2>/dev/null)
    elif [[ $command == sms ]]; then
        words=$(modemctl sms --help 2>/dev/null | sed -n 's/^  \([a-z][a-z]*\) .*  .*/\1/p')
    elif [[ $command == log ]]; then
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _modemctl modemctl
