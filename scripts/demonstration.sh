# shellcheck shell=bash
# The demonstration of scripts/run; sourced, not run.

headline() {
    printf '\n== %s\n' "$*"
}

# show CODE COMMAND: prints a command line, runs it, and shows what it prints and its exit code, which must be CODE.
# Leaves in `output` what was printed.
show() {
    local status=0
    printf '$ %s\n' "$2"
    output=$(eval "$2") || status=$?
    [[ -z $output ]] || printf '%s\n' "$output"
    printf '(exit code %s)\n' "$status"
    ((status == $1)) || die "this should have ended with exit code $1"
}

# write_byte FILE OFFSET OCTAL: replaces one byte of a file.
write_byte() {
    # shellcheck disable=SC2059 # the format is the byte
    printf "\\$3" | dd of="$1" bs=1 seek="$2" conv=notrunc status=none
}

sign_and_verify() {
    headline "It is signed"
    show 0 'backup_sign --sign-dump dump.1 dump.2 dump.3'
    headline "The signature document is the tail of the last volume now"
    show 0 "tail -c +$((volume_size + 1)) dump.3 | tee signature.xml"
    headline "It is verified"
    show 0 'backup_sign --verify-dump dump.1 dump.2 dump.3'
}

damage_and_restore() {
    local offset=12345678 byte other=101
    byte=$(od -An -to1 -j "$offset" -N 1 dump.2 | tr -d ' ')
    [[ $byte != "$other" ]] || other=102
    headline "One byte of the second volume is changed"
    write_byte dump.2 "$offset" "$other"
    show 1 'backup_sign --verify-dump dump.1 dump.2 dump.3'
    [[ $output == 'Digest is wrong' ]] || die "the change was not seen"
    headline "The byte is put back"
    write_byte dump.2 "$offset" "$byte"
    show 0 'backup_sign --verify-dump dump.1 dump.2 dump.3'
}

# verify_with_stock_tools PUBLIC_KEY_FILE: needs nothing but the dump and the public key that the tool published.
verify_with_stock_tools() {
    local digest
    cp "$1" bu_pubkey.txt
    headline "The same signature, checked with openssl, xmllint and coreutils alone"
    show 0 "head -c $volume_size dump.3 | cat dump.1 dump.2 - >signed"
    show 0 'openssl dgst -sha1 -binary signed | openssl base64'
    digest=$output
    show 0 "xmllint --xpath 'string(//*[local-name()=\"DigestValue\"])' signature.xml"
    [[ $output == "$digest" ]] || die "the digests differ"
    show 0 "xmllint --xpath 'string(//*[local-name()=\"SignatureValue\"])' signature.xml | openssl base64 -d >signature"
    show 0 'openssl rsa -RSAPublicKey_in -in bu_pubkey.txt -pubout -out key.pem 2>&1'
    show 0 'openssl dgst -sha1 -verify key.pem -signature signature signed'
}

# demonstrate TOOL BUILD_FOLDER: works in a folder of its own below BUILD_FOLDER and removes it at the end.
demonstrate() {
    local tool=$1 build=$2 volume volume_size=$((16 << 20)) output
    work=$(mktemp -d "$build/demonstration.XXXXXX")
    trap 'rm -rf -- "$work"' EXIT
    cd "$work" || return
    # Lets the command lines be those that one would type.
    # shellcheck disable=SC2317
    backup_sign() {
        "$tool" "$@"
    }

    headline "A dump of three volumes"
    for volume in 1 2 3; do
        head -c "$volume_size" /dev/urandom >"dump.$volume"
    done
    show 0 'ls -l dump.1 dump.2 dump.3'
    sign_and_verify
    damage_and_restore
    verify_with_stock_tools "$build/standalone/opt/bsa/admin/htdocs/bu_pubkey.txt"
    headline "All is as it should be. The same for files of yours: scripts/run --sign-dump FILE…, --verify-dump FILE…"
}
