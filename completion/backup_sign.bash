# bash completion for backup_sign(8).

_backup_sign() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words
    # To bash the "=" of an option is a word, and the directory after it another.
    if [[ $current == = ]]; then
        current=''
    elif [[ $previous == = ]]; then
        previous=${COMP_WORDS[COMP_CWORD - 2]}
    fi

    if [[ $previous == --session-path ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -d -- "$current")
    elif [[ $current != -* && " ${COMP_WORDS[*]:1:COMP_CWORD-1} " == *\ --@(sign|verify)?(-dump)\ * ]]; then
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    else
        words='--sign-dump --verify-dump --help --session-path= --verbose --debug'
        # What makes a key or prints one is not offered to somebody who is only looking.
        [[ $current != --g* ]] || words='--generate --get-certificate'
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
        [[ ${COMPREPLY-} != *= ]] || compopt -o nospace
    fi
}
complete -F _backup_sign backup_sign
