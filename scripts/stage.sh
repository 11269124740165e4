# Programs that run together until all of them end: a bus of their own each for system and session, and a display with
# a tray where there is no desktop. Sourced by ./run, for which it makes the folder $scene.

scene=$(mktemp -d)
started=()
mkfifo "$scene/ready" "$scene/orders"
exec 5<>"$scene/ready" # a line here: what was started last can be used

before_end=true # a command that is run before all ends

# finish [STATUS] : ends all, the programs first, the buses and the laptop under them last.
finish() {
    trap - EXIT
    trap '' INT TERM
    local i
    $before_end || true
    for ((i = ${#started[@]} - 1; i >= 0; i--)); do
        kill "${started[i]}" 2>/dev/null || continue
        wait "${started[i]}" 2>/dev/null || true
    done
    rm -rf "$scene" "$scene".*
    exit "${1:-0}"
}
trap 'finish 1' EXIT
trap 'finish 0' INT TERM

start() {
    "$@" <&0 & # named, or the shell would give it an empty input
    started+=($!)
}

# await NAME [FILE] : until what was started last says that it can be used, in a line that is left in $answer; should
# it end instead, so does all, and FILE is shown.
await() {
    local part
    answer=''
    until read -r -t 0.2 -u 5 part; do
        answer+=$part # half a line, on a busy machine
        kill -0 "${started[-1]}" 2>/dev/null || {
            [ $# -lt 2 ] || cat "$2" >&2
            echo "$1 did not start." >&2
            finish 1
        }
    done
    answer+=$part
}

# within SECONDS COMMAND... : whether it succeeds in that time.
within() {
    local end=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -lt $end ] || return
        sleep 0.2
    done
}

# start_bus TYPE : a private bus like the system's or the session's, at $scene/TYPE.
start_bus() {
    cat >"$scene/$1.conf" <<XML
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>$1</type><listen>unix:path=$scene/$1</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy></busconfig>
XML
    start dbus-daemon --config-file="$scene/$1.conf" --nofork --nopidfile --print-address=5 2>"$scene/complaints"
    await "The $1 bus" "$scene/complaints"
}

# The session's secret service, with an unlocked collection; the empty line is its password.
keyring() { exec gnome-keyring-daemon --unlock --components=secrets --foreground <<<'' >/dev/null 2>&1; }

# What shows notices, until they are closed; each is a paragraph of $scene/notices, too.
notices() {
    cat >"$scene/dunstrc" <<CONF
[global]
origin = bottom-left
offset = 24x24
width = 420
font = Sans 11
icon_path = $PWD/packaging/icons
max_icon_size = 48
show_indicators = false
[urgency_low]
timeout = 0
[urgency_normal]
timeout = 0
CONF
    exec dunst -conf "$scene/dunstrc" -print >>"$scene/notices" 2>/dev/null
}

# A private display with a tray, and a private session bus with a secret service and a server for notices.
start_desktop() {
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$scene/session XAUTHORITY=$scene/Xauthority XDG_RUNTIME_DIR=$scene
    unset WAYLAND_DISPLAY
    start_bus session
    start keyring
    local cookie
    cookie=$(mcookie)
    xauth -q add :0 . "$cookie" 2>/dev/null # the server asks for the cookie alone, whatever the display's number
    start Xvfb -displayfd 5 -screen 0 1280x860x24 -nolisten tcp -auth "$XAUTHORITY" 2>"$scene/complaints"
    await "The virtual display" "$scene/complaints"
    export DISPLAY=:$answer
    xauth -q add "$DISPLAY" . "$cookie"
    start notices
    start build/bin/velmora-trayhost > >(tray_says)
    await "The tray"
}

# Where the icon is goes to a file, what its tooltip says to the terminal.
tray_says() {
    local line
    while IFS= read -r line; do
        case "$line" in
            ready) echo >&5 ;;
            "item at "*) line=${line#item at } && echo "${line%%:*}" >"$scene/icon" ;;
            "tooltip: "*) echo "${line#tooltip: }" ;;
        esac
    done
}

laptop_says() {
    local line is_ready=false
    while IFS= read -r line; do
        if ! $is_ready && [[ $line == ready* ]]; then is_ready=true; echo >&5; continue; fi
        printf 'laptop:  %s\n' "$line"
    done
}

# logged [NAME] : what the programs log, a line each, beside what they show; of the machine of that name.
logged() { sed -u "s/^<[0-7]>app\.velmora\[\(.*\)\]: /log:     ${1:+$1: }\1: /" >&2; }

# put_travel_event HOURS TITLE : into the calendar that Velmora reads here.
put_travel_event() {
    mkdir -p "$XDG_DATA_HOME/velmora/calendars"
    printf 'BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Velmora//run//EN\r\nBEGIN:VEVENT\r\nUID:%s\r\nSUMMARY:%s\r\nDTSTART:%s\r\nDURATION:PT3H\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n' \
        "$1-$2" "$2" "$(date -u -d "+$1 hours" +%Y%m%dT%H%M%SZ)" >"$XDG_DATA_HOME/velmora/calendars/travel.ics"
}
