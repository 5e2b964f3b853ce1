# shellcheck shell=bash
# Shared by the scenes that scripts/test-packages plays, as root, in a bare Debian system; sourced, not run.
set -uo pipefail
cd /root/scenes || exit

# check TEXT COMMAND…: says in one line whether a command succeeds, and shows what it printed if not.
check() {
    local output
    if output=$("${@:2}" 2>&1); then
        printf 'ok      %s\n' "$1"
    else
        printf 'FAILED  %s\n%s\n' "$1" "$output"
    fi
}

# prints PATTERN COMMAND…: a command succeeds, and what it prints has this.
prints() {
    local output
    output=$("${@:2}" 2>&1)
    local status=$?
    printf '%s\n' "$output"
    ((status == 0)) && grep -qE -- "$1" <<<"$output"
}

# ends STATUS COMMAND…: a command ends with this exit code.
ends() {
    local status=0
    "${@:2}" || status=$?
    ((status == $1))
}

add() {
    apt-get install -q -y --no-install-recommends "$@"
}

# types KEYS: what a shell at a terminal shows when somebody types that; \t is the Tab key.
types() {
    {
        sleep 2
        printf '%b' "$1"
        sleep 2
        printf '\003'
        sleep 1
        printf 'exit\n'
    } | TERM=dumb script -qc 'bash --rcfile /usr/share/bash-completion/bash_completion -i' /dev/null
}
