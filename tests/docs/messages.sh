#!/usr/bin/env bash
# messages.sh: docs/messages.md has every text that the sources raise, print or log. "…" stands for what is filled in.
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../../scripts/common.sh"
cd "$repo"

folders=(backup_sign backup_sign_lib commons lib log4cpp_additions)
literal='"(\\.|[^"\\])*"'
tag="\nBRASK_ERROR_TAG\(\w+,\s*($literal\s*)+"
statement='\b(throw\w*|BRASK_THROW\w*|ErrorExit|raiseSystemError|logMessage|logNote|callNoThrow|failureText'
statement+="|loadError =|kFailure =|std::cout <<)[^;]*?${literal}[^;]*;"

# Literals with only blanks between them are one.
texts=$({
    grep -rhozP "$tag" "${folders[@]}"
    grep -rhozP --include='*.cpp' "$statement" "${folders[@]}"
} | tr '\0\n' '\n ' | sed -E 's/" +"//g' | grep -oP "$literal" |
    sed -E 's/^"//; s/"$//; s/\{[0-9]?\}|%[0-9]%|%[a-z]+|\\n/…/g; s/…+/…/g; s/^[… :.]+//; s/[… :.]+$//' |
    grep -E '[a-zA-Z]{3}' | sort -u)
(($(wc -l <<<"$texts") > 100)) || die "the sources can't be read any more"

missing=$(while IFS= read -r text; do
    grep -qF -- "$text" docs/messages.md || printf '%s\n' "$text"
done <<<"$texts")
[[ -z $missing ]] || die "docs/messages.md does not have:"$'\n'"$missing"
