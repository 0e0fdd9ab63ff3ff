#!/usr/bin/env bash
# The release program on the volume in samples/ under valgrind's memcheck: no fault and no byte lost.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

command -v valgrind >/dev/null 2>&1 || skip 'valgrind is not installed'
tarvo=$build/release/tarvo
need_file "$tarvo"
demo=$root/samples/demo.lif
failed=0
check() {
    valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite,possible \
        --errors-for-leak-kinds=definite,possible "$tarvo" "$@" >/dev/null || {
        echo "tarvo $*: ends with $?"
        failed=1
    }
}
check --version
check info "$demo"
check info --json "$demo"
check ls "$demo"
check ls --json "$demo"
check ls "$demo" '*'
exit "$failed"
