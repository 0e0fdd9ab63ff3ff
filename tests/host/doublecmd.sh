#!/usr/bin/env bash
# Double Commander loads the plug-in and lists an image, on an X server that nobody sees.
#
#   doublecmd.sh PLUGIN IMAGE OUT.png [ROWS]
#
# The host gets settings of its own in a temporary folder, with copies of the plug-in and of the image. Keys go to it as
# a user would press them: the list of file-system plug-ins, TARVO, and the image's path in the prompt. What its panel
# then shows comes back as text, by the host's own command that copies the rows of marked files with all columns to the
# clipboard. With ROWS, a file of such rows, these must be the same. OUT.png is a picture of the window, also of one
# where something went wrong. Then all files but the first are copied out, and one is copied in: their bytes must stand in
# the image. Ends with 0 when all of that worked, 77 when a program is missing, 1 otherwise.
. "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../checks/common.sh"

# A command and the package that brings it.
host_needs='
doublecmd   doublecmd-gtk
Xvfb        xvfb
openbox     openbox
xdotool     xdotool
xclip       xclip
import      imagemagick
'
settings=$root/tests/host/doublecmd
work=
server=
window_manager=
host=

is_gone() { # PID
    ! kill -0 "$1" 2>/dev/null
}

# A host with an open message does not heed a request to end.
end_of() { # PID
    [ -n "$1" ] || return
    kill "$1"
    wait_for 3 is_gone "$1" || kill -KILL "$1"
    wait "$1"
} 2>/dev/null

clean_up() {
    end_of "$host"
    end_of "$window_manager"
    end_of "$server"
    [ -z "$work" ] || rm -rf -- "$work"
}

fail() {
    echo "$*"
    [ -z "${DISPLAY:-}" ] || import -window root "$picture"
    [ -z "$work" ] || tail -n 20 "$work/host.log"
    exit 1
}

# Tries a command ten times a second until it succeeds; false when it didn't in the time given.
wait_for() { # SECONDS COMMAND...
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.1
    done
}

check_programs() {
    local program package missing=()
    while read -r program package; do
        [ -z "$program" ] || command -v "$program" >/dev/null 2>&1 || missing+=("$package")
    done <<<"$host_needs"
    [ "${#missing[@]}" -eq 0 ] || skip "not installed: ${missing[*]}"
}

prepare_folder() {
    local file
    work=$(mktemp -d "${TMPDIR:-/tmp}/tarvo-host.XXXXXX") || exit 1
    mkdir -p "$work/settings" "$work/home/.cache" || exit 1
    cp -- "$plugin" "$work/home/tarvo.wfx" && cp -- "$image" "$work/home/volume.lif" || exit 1
    for file in doublecmd.xml shortcuts.scf; do
        sed "s|@HOME@|$work/home|" "$settings/$file" >"$work/settings/$file" || exit 1
    done
}

# ---- the display ---------------------------------------------------------------------------------------

start_display() {
    Xvfb -displayfd 3 -screen 0 940x460x24 -dpi 96 -nolisten tcp 3>"$work/display" >"$work/server.log" 2>&1 &
    server=$!
    wait_for 20 test -s "$work/display" || {
        cat "$work/server.log"
        fail 'no display came up'
    }
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
    openbox >"$work/openbox.log" 2>&1 &
    window_manager=$!
}

start_host() {
    # The host takes the zone from the system's settings, so the plug-in must as well.
    env -u TZ -u DBUS_SESSION_BUS_ADDRESS -u XDG_CONFIG_HOME -u XDG_CACHE_HOME -u XDG_DATA_HOME HOME="$work/home" \
        TMPDIR="$work" doublecmd --config-dir="$work/settings" >"$work/host.log" 2>&1 &
    host=$!
}

window_of() { # TITLE, a pattern
    xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1
}

has_focus() { # TITLE
    local window
    window=$(window_of "$1")
    [ -n "$window" ] && [ "$(xdotool getactivewindow 2>/dev/null)" = "$window" ]
}

is_closed() { # WINDOW
    ! xdotool search --onlyvisible --name . 2>/dev/null | grep -q -x "$1"
}

# ---- the panel -----------------------------------------------------------------------------------------
# Keys without modifiers: a busy host asks for those when it comes to the key, and then they may be up again.

clipboard() {
    timeout 5 xclip -o -selection clipboard -t UTF8_STRING 2>/dev/null
}

clipboard_is_taken() {
    [ "$(clipboard)" != "$nothing" ]
}

# Prints the rows of the marked files, or of the one under the cursor. Fails when the host gives none.
copied_rows() {
    nothing="nothing $RANDOM"
    printf '%s' "$nothing" | xclip -i -selection clipboard >/dev/null 2>&1
    xdotool key F12
    wait_for 2 clipboard_is_taken && clipboard
}

panel_rows() {
    xdotool key F11
    copied_rows
}

shows_the_plugin() {
    xdotool key F9
    case $(panel_rows) in
    TARVO*) ;;
    *) false ;;
    esac
}

shows_files() {
    [ -z "$(window_of '^Tarvo Plugin$')" ] || return 1
    rows=$(panel_rows)
    case $rows in
    '' | TARVO[[:space:]]*) false ;;
    esac
}

open_message() {
    [ -z "$(window_of '^Tarvo Plugin$')" ] || printf ', but the plug-in has a message, to be seen in %s' "$picture"
}

# The cursor on the first file, and nothing marked.
shows_no_marks() {
    xdotool key F7 Home Down
    [ "$(copied_rows)" = "${rows%%$'\n'*}" ]
}

# A picture of the window's inside, once two in a row are alike.
take_picture() {
    local window
    window=$(window_of '^Double Commander')
    import -window "$window" -strip "$work/before.png"
    wait_for 10 stands_still "$window" && cp -- "$work/before.png" "$picture"
}

stands_still() { # WINDOW
    import -window "$1" -strip "$work/after.png" || return 1
    cmp -s "$work/before.png" "$work/after.png" && return
    mv "$work/after.png" "$work/before.png"
    return 1
}

# ---- copies --------------------------------------------------------------------------------------------

# Whether a file's bytes stand in an image, from the begin of one of its records on.
stands_in() { # FILE IMAGE
    local bytes record
    bytes=$(stat -c %s "$1") || return 1
    for ((record = 0; record * 256 + bytes <= $(stat -c %s "$2"); record++)); do
        cmp -s -n "$bytes" -i "0:$((record * 256))" "$1" "$2" && return
    done
    return 1
}

sum() {
    awk '{ sum += $1 } END { print sum + 0 }'
}

copies() {
    find "$work/home" -maxdepth 1 -type f ! -name tarvo.wfx ! -name volume.lif "$@"
}

has_copies() { # COUNT BYTES
    [ "$(copies | wc -l)" -eq "$1" ] && [ "$(copies -printf '%s\n' | sum)" -eq "$2" ]
}

# Files under the cursor, or those marked, go to the other panel.
copy_to_other_panel() {
    xdotool key F5
    wait_for 20 has_focus '^Copy' || fail 'the host does not ask how to copy'
    xdotool key Return
}

# All but the first, which has no date: the host's copy ends behind such a file.
marks_for_copy() {
    xdotool key F11 Home Down Insert
    [ "$(copied_rows)" = "${rows#*$'\n'}" ]
}

copy_out() {
    local file marked bytes
    marked=${rows#*$'\n'}
    bytes=$(cut -f 3 <<<"$marked" | tr -cd '0-9\n' | sum)
    wait_for 20 marks_for_copy || fail 'the files are not marked'
    copy_to_other_panel
    wait_for 20 has_copies "$(wc -l <<<"$marked")" "$bytes" || fail "not all files are copied out$(open_message)"
    wait_for 20 has_focus '^Double Commander' || fail "the copy does not end$(open_message)"
    while read -r file; do
        stands_in "$file" "$image" || fail "the copy of ${file##*/} has other bytes than the image"
    done < <(copies)
}

first_row_is() { # NAME
    xdotool key Home Down
    case $(copied_rows) in
    "$1"[[:space:]]*) ;;
    *) false ;;
    esac
}

shows_folder() {
    xdotool key F4
    first_row_is '[in]'
}

shows_new_file() {
    xdotool key F4
    panel_rows | grep -q '^NEW[[:space:]]*BDAT[[:space:]]*1 024[[:space:]]'
}

# The other panel shows the folder with the copies; in it a folder with the one file comes first.
copy_in() {
    local bytes=1000
    mkdir "$work/home/in" && head -c "$bytes" /dev/urandom >"$work/home/in/NEW.BDAT" || exit 1
    xdotool key Tab
    wait_for 20 shows_folder || fail 'the other panel does not show the folder'
    xdotool key Return
    wait_for 20 first_row_is NEW || fail 'the other panel does not show the file that goes in'
    copy_to_other_panel
    wait_for 20 stands_in "$work/home/in/NEW.BDAT" "$work/home/volume.lif" || fail "nothing is copied in$(open_message)"
    wait_for 20 has_focus '^Double Commander' || fail "the copy does not end$(open_message)"
    xdotool key Tab
    wait_for 20 shows_new_file || fail 'the panel does not show the file that was copied in'
}

# ---- the steps -----------------------------------------------------------------------------------------

open_image() {
    local prompt
    wait_for 60 has_focus '^Double Commander' || fail 'the host shows no window'
    wait_for 30 shows_the_plugin || fail 'the host does not list the plug-in'
    xdotool key End Return
    wait_for 20 has_focus '^Tarvo Plugin$' || fail 'the plug-in does not ask for a target'
    prompt=$(window_of '^Tarvo Plugin$')
    xdotool type --delay 20 -- "$work/home/volume.lif"
    xdotool key Return
    wait_for 20 is_closed "$prompt" || fail 'the prompt does not go away'
    wait_for 20 shows_files || fail "the panel shows no files$(open_message)"
}

# The zone decides how the host shows times, so they are compared where it is universal time, else left out.
compare_rows() {
    local columns=1-5
    case $(cat /etc/timezone 2>/dev/null) in
    UTC | Etc/UTC) ;;
    *) columns=1-3,5 ;;
    esac
    diff <(cut -f "$columns" "$1") <(printf '%s\n' "$rows" | cut -f "$columns")
}

close_host() {
    local code
    xdotool key alt+F4
    wait_for 20 is_gone "$host" || fail 'the host does not end'
    wait "$host"
    code=$?
    host=
    [ "$code" -eq 0 ] || fail "the host ends with $code"
}

if [ $# -lt 3 ] || [ $# -gt 4 ]; then
    echo "Usage: ${0##*/} PLUGIN IMAGE OUT.png [ROWS]"
    exit 1
fi
plugin=$1
image=$2
picture=$3
need_file "$plugin"
need_file "$image"
[ $# -lt 4 ] || need_file "$4"
check_programs
unset DISPLAY
export LC_ALL=C.UTF-8
trap clean_up EXIT
trap 'exit 130' INT TERM HUP

prepare_folder
start_display
start_host
open_image
printf '%s\n' "$rows"
[ $# -lt 4 ] || compare_rows "$4" || fail 'the panel shows other rows than expected'
wait_for 20 shows_no_marks || fail 'the marks stay'
take_picture || fail 'the window does not come to rest'
copy_out
copy_in
close_host
