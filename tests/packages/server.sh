#!/usr/bin/env bash
# A server: the tool with the stand-in for a panel, from the first installation to a panel that comes later.
source "$(dirname -- "$0")/checks.sh"

root=/opt/bsa
store=$root/var/backup_certificate
published=$root/admin/htdocs/bu_pubkey.txt
dump=(/srv/dump/dump.1 /srv/dump/dump.2)
product=$(echo backup-sign-product_*.deb)
shopt -s nullglob

# state FOLDER…: all that can be seen of the files there.
state() {
    find "$@" -type d -printf '%p %M %u %g\n' -o -printf '%p %M %u %g %s %t\n' | sort
    find "$@" -type f -exec sha256sum {} + | sort
}

# keeps WHAT COMMAND…: a command succeeds and changes none of the paths that WHAT lists.
keeps() {
    local before
    # shellcheck disable=SC2086 # a list of paths
    before=$(state $1) && "${@:2}" && diff <(printf '%s\n' "$before") <(state $1)
}

first_installation() {
    check "the tool and the product tree install" apt-get install -q -y ./backup-sign*.deb
    mkdir /srv/dump
    seq 100000 >"${dump[0]}"
    seq 300000 >"${dump[1]}"
    check "one command signs a dump" backup_sign --sign-dump "${dump[@]}"
    check "and another verifies it" backup_sign --verify-dump "${dump[@]}"
    check "the panel's place has the same program" "$root/admin/bin/backup_sign" --verify-dump "${dump[@]}"
    cp -r /srv/dump /srv/damaged
    cp -r /srv/dump /srv/copies # for another machine
    cp "$published" /srv/copies
    printf X | dd of=/srv/damaged/dump.2 bs=1 seek=1000 conv=notrunc status=none
    check "damage is seen" ends 1 backup_sign --verify-dump /srv/damaged/dump.1 /srv/damaged/dump.2
    for file in "$root/admin/conf/panel.ini" "$root/BMM/log4cpp.properties" /etc/bsa/bsa.conf; do
        # shellcheck disable=SC2016 # dpkg-query fills it in
        check "$file is a conffile" prints "^ $file " dpkg-query --show --showformat '${Conffiles}' backup-sign-product
    done
    check "a session's log is the panel group's" \
        prints 'root bsaadm' sh -c 'backup_sign --session-path=s --get-certificate >/dev/null; stat -c "%U %G" s/*.log'
    check "an error report is spooled" sh -c "echo '<error/>' | $root/admin/bin/send-error-report bmm"
}

offers_no_key() {
    local shown
    shown=$(types 'backup_sign --\t\t')
    [[ $shown == *--verify-dump* && $shown != *--generate* ]]
}

documents() {
    local path
    add man-db bash-completion openssl >/dev/null 2>&1
    check "man backup_sign opens" prints '^NAME' man backup_sign
    check "man backup_restore_helper opens" prints '^NAME' man backup_restore_helper
    check "Tab completes an option and a file, and the command runs" \
        prints 'all is well' types "backup_sign --verif\t /srv/dump/dump.1 /srv/du\tdump.\t2 && echo all 'is well'\n"
    check "Tab alone offers commands, but no new key" offers_no_key
    for path in $(man backup_sign | grep -oE '/usr/share/doc/[a-z/-]+\.md' | sort -u); do
        check "$path, of the manual, is there" test -s "$path"
    done
    mkdir examples && for i in 1 2 3; do seq $i >examples/dump.00$i; done
    check "the manual's examples run" prints '^intact$' sh -c "cd examples
        zcat /usr/share/man/man8/backup_sign.8.gz | sed -n '/^.Sh EX/,/^.Sh DIAG/{/^.Bd/,/^.Ed/{/^\.[BE]d/!p}}' |
            sed 's/\\\\e/\\\\/' >script && . ./script"
    check "the changelog is there" prints Unreleased zcat /usr/share/doc/backup-sign/changelog.gz
    check "verify-independently, an example, verifies" \
        prints '^intact' bash /usr/share/doc/backup-sign/examples/verify-independently "${dump[@]}"
}

# The examples of the package, each where its first line or operations.md puts it.
every_night() {
    local examples=/usr/share/doc/backup-sign/examples log=/var/log/backup
    add logrotate systemd >/dev/null 2>&1
    cp "$examples/sign-and-verify" /usr/local/sbin
    cp "$examples"/sign-and-verify.{service,timer} /etc/systemd/system
    mkdir -p /srv/dumps/last
    seq 1000 >/srv/dumps/last/dump
    check "systemd takes the service and the timer" systemd-analyze verify sign-and-verify.timer
    check "the service's command signs" sh -c "$(sed -n 's/^ExecStart=//p' "$examples/sign-and-verify.service")"
    check "and so does cron's" sh -c "$(sed -n 's/^PATH/export &/p; s/^30.* root //p' "$examples/sign-and-verify.cron")"
    check "both have" prints '^2$' grep -ac '<Signature xmlns' /srv/dumps/last/dump

    cp "$examples/backup-tools.logrotate" /etc/logrotate.d/backup-tools
    install -d -m 770 -g bsaadm "$log"
    CUSTOM_LOG=$log/tools.log backup_sign --session-path=s --verify-dump "${dump[@]}"
    check "logrotate rotates the log and the profile" \
        sh -c "logrotate --force /etc/logrotate.d/backup-tools && cd $log && test -s tools.log.1 -a -s profile.log.1"
    check "the next run makes new ones" sh -c "
        CUSTOM_LOG=$log/tools.log backup_sign --session-path=s --verify-dump ${dump[*]}
        stat -c '%U %G' $log/tools.log $log/profile.log"
}

upgrade() {
    dpkg-deb -R "$product" newer
    sed -i 's/^Version: .*/Version: 99/' newer/DEBIAN/control
    echo '; new' >>"newer$root/admin/conf/panel.ini"
    echo '# new' >>"newer$root/BMM/log4cpp.properties"
    dpkg-deb -b newer newer.deb >/dev/null
    backup_sign --generate
    backup_sign --sign-dump "${dump[@]}"
    sed -i 's/^;archiverMaxThreads.*/archiverMaxThreads = 2/' "$root/admin/conf/panel.ini"
    check "a reinstallation keeps the key pairs, the published key and the settings" \
        keeps "$store $published $root/admin/conf /etc/bsa" add --reinstall "./$product"
    check "an upgrade keeps the key pairs and the published key" \
        keeps "$store $published" add -o Dpkg::Options::=--force-confold ./newer.deb
    check "it keeps a setting that was changed" grep -q '^archiverMaxThreads = 2' "$root/admin/conf/panel.ini"
    check "and puts the new settings beside it" grep -q '^; new' "$root/admin/conf/panel.ini.dpkg-dist"
    check "settings that nobody changed are the new ones" grep -q '^# new' "$root/BMM/log4cpp.properties"
    check "the dump still verifies" backup_sign --verify-dump "${dump[@]}"
}

removal() {
    check "a removal keeps the key pairs, the published key and the settings" \
        keeps "$store $published $root/admin/conf/panel.ini /etc/bsa/bsa.conf" apt-get remove -q -y backup-sign-product
    check "and takes the helper away" test ! -e "$root/admin/bin/backup_restore_helper"
    check "installed again, it goes on with the same pair" \
        keeps "$store $published $root/admin/conf/panel.ini" add ./newer.deb
    check "the dump still verifies" backup_sign --verify-dump "${dump[@]}"
    check "a purge says where it keeps the key pairs" prints "kept in $store" apt-get purge -q -y backup-sign-product
    check "the current pair and the replaced one are there" test -s "$store/pair.pem" -a -n "$(echo "$store"/pair.pem.*)"
    check "the settings are gone" test ! -e "$root/admin/conf" -a ! -e /etc/bsa -a ! -e "$root/BMM"
    check "installed again, it still goes on with the same pair" keeps "$store" add ./newer.deb
    check "the dump still verifies" backup_sign --verify-dump "${dump[@]}"
    check "both are purged" apt-get purge -q -y backup-sign backup-sign-product
}

# refused PATH: the installation ends in one line that names the path.
refused() {
    ! output=$(add "./$product" 2>&1) || return
    [[ $(grep -c "^backup-sign-product: $1 is there already" <<<"$output") == 1 ]] &&
        [[ $(dpkg-query -W -f '${db:Status-Status}' backup-sign-product 2>/dev/null) != installed ]]
}

beside_a_panel() {
    local path
    for path in "$root/admin/bin/backup_restore_helper" "$root/admin/conf/panel.ini" "$store/pair.pem" /etc/bsa/bsa.conf; do
        rm -rf "$root" /etc/bsa
        mkdir -p "$root" /etc/bsa "${path%/*}"
        echo "of a panel" >"$path"
        check "$path of a panel: refused, and nothing is changed" keeps "/opt /etc/bsa" refused "${path%/pair.pem}"
    done

    rm -rf "$root" /etc/bsa
    mkdir -p "$root/admin/bin" "$root/admin/htdocs"
    # shellcheck disable=SC2016 # a script
    printf '#!/bin/sh\ncase $1 in\n--get*) cat /srv/pair ;;\n--set*) cat >/srv/pair ;;\nesac\n' \
        >"$root/admin/bin/backup_restore_helper"
    chmod +x "$root/admin/bin/backup_restore_helper"
    check "with a panel's own helper the tool is enough" \
        sh -c "apt-get install -q -y --no-install-recommends ./backup-sign_*.deb && backup_sign --sign-dump ${dump[*]}"
    check "and verifies" backup_sign --verify-dump "${dump[@]}"
}

apt-get update -qq
first_installation
documents
every_night
upgrade
removal
beside_a_panel
