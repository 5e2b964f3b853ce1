#!/usr/bin/env bash
# messages.sh: docs/messages.md has every text that the sources raise, print or log ("…" stands for what is filled in), and
# all answers to a dump that the manual page repeats; the helper's manual page has every text of the helper. The names and
# texts of all tagged failures, which callers know, are those of tests/data/messages.txt.
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../../scripts/common.sh"
cd "$repo"

folders=(backup_sign backup_sign_lib commons lib log4cpp_additions)
literal='"(\\.|[^"\\])*"'
tag="\nBRASK_ERROR_TAG\(\w+,\s*($literal\s*)+"
statement='\b(throw\w*|BRASK_THROW\w*|ErrorExit|raiseSystemError|logMessage|logNote|callNoThrow|failureText'
statement+="|loadError =|kFailure =|std::cout <<)[^;]*?${literal}[^;]*;"

# literals: the texts in what grep -z found. Literals with only blanks between them are one.
literals() {
    tr '\0\n' '\n ' | sed -E 's/" +"//g' | grep -oP "$literal" |
        sed -E 's/^"//; s/"$//; s/\{[0-9]?\}|%[0-9]%|%[a-z]+|\\n/…/g; s/…+/…/g; s/^[… :.]+//; s/[… :.]+$//' |
        grep -E '[a-zA-Z]{3}' | sort -u
}

# has FILE TEXTS: a file has each of these lines.
has() {
    local missing
    missing=$(while IFS= read -r text; do
        grep -qF -- "$text" "$1" || printf '%s\n' "$text"
    done <<<"$2")
    [[ -z $missing ]] || die "$1 does not have:"$'\n'"$missing"
}

texts=$({
    grep -rhozP "$tag" "${folders[@]}"
    grep -rhozP --include='*.cpp' "$statement" "${folders[@]}"
} | literals)
(($(wc -l <<<"$texts") > 100)) || die "the sources can't be read any more"
has docs/messages.md "$texts"

grep -rhozP "$tag" "${folders[@]}" | tr '\0\n' '\n ' |
    sed -E 's/" +"//g; s/^ BRASK_ERROR_TAG\((\w+), *"(.*)" *$/\1: \2/' | LC_ALL=C sort | diff tests/data/messages.txt - >&2 ||
    die "tests/data/messages.txt knows other failures"

helper=$(grep -hozP "\bFailure\([^;]*?${literal}[^;]*;" product/backup_restore_helper/*.cpp | literals)
(($(wc -l <<<"$helper") > 10)) || die "the helper's sources can't be read any more"
has man/backup_restore_helper.8 "$helper"
has docs/messages.md "$(sed -n '/^\.Bl -diag/,/^\.El/s/^\.It //p' man/backup_sign.8 | sed 's/ name / … /; s/^name /… /; s/: reason$//')"
