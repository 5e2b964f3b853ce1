# shellcheck shell=bash
# Completion of dumpsig for bash: commands, options, and files wherever neither is due.

_dumpsig() {
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local before=" ${COMP_WORDS[*]:1:COMP_CWORD - 1} " words=''
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words='verify info strip cat fingerprint --version --help'
    elif [[ $word == -* && $before != *' -- '* && ! $previous =~ ^(-k|--key|-o|--output)$ ]]; then
        case ${COMP_WORDS[1]} in
        verify) words='-k --key --json -q --quiet --progress --no-progress' ;;
        info) words='--json' ;;
        strip) words='-o --output --in-place --force --progress --no-progress' ;;
        cat) words='-k --key --progress --no-progress' ;;
        esac
        words+=' -h --help'
    fi
    # An empty answer leaves it to readline, which completes files.
    [[ -z $words ]] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -o default -F _dumpsig dumpsig
