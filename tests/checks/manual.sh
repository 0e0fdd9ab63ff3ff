#!/usr/bin/env bash
# The manual page is set without a warning.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

page=$root/docs/tarvo.1
need_file "$page"
if command -v mandoc >/dev/null 2>&1; then
    mandoc -T lint -W warning "$page"
elif command -v groff >/dev/null 2>&1; then
    words=$(groff -man -Tutf8 -ww -Kutf8 "$page" 2>&1 >/dev/null)
    [ -z "$words" ] || {
        printf '%s\n' "$words"
        exit 1
    }
elif command -v man >/dev/null 2>&1; then
    words=$(MANROFFSEQ='' MANWIDTH=100 LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
    [ -z "$words" ] || {
        printf '%s\n' "$words"
        exit 1
    }
else
    skip 'neither mandoc, groff nor man is installed'
fi
