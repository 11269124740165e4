# Pictures of all windows of the Velmora that runs, in both looks. Sourced by ./run, after stage.sh.

manager=(app.velmora.Velmora /app/velmora/InstallationManager app.velmora.InstallationManager)
model=(app.velmora.Velmora /app/velmora/Velmora app.velmora.Model)
calendar=(app.velmora.Velmora /app/velmora/CalendarContextManager app.velmora.CalendarContextManager)
is_installed() { [ "$(busctl --user get-property "${manager[@]}" isInstallationCompleted)" = 'b true' ]; }
heard_of_the_battery() { [ "$(busctl --user get-property "${model[@]}" percentage)" != 'd 50' ]; }
heard_of_the_past() {
    busctl --user call "${model[@]}" fetchHistory && [[ $(busctl --user get-property "${model[@]}" history) != 'aa{sv} 0'* ]]
}
shows() { xdotool search --onlyvisible --name "^$1\$"; }

# take_picture NAME WINDOW [PAGE] : in both looks.
take_picture() {
    local look pid takers=()
    for look in light dark; do
        VELMORA_APPEARANCE=$look QT_QPA_PLATFORM=offscreen timeout 20 build/bin/velmora-ui \
            --picture "$pictures/$1-$look.png" --window "$2" ${3:+--page "$3"} &
        takers+=($!)
    done
    for pid in "${takers[@]}"; do wait "$pid" || echo "A picture is missing: $1." >&2; done
}

# In the dashboard, whose one button is reached by the tab key; on a desktop that is not ours over the bus.
let_it_install() {
    if $has_desktop; then
        busctl --user call "${manager[@]}" install
    else
        build/bin/velmora --dashboard
        within 10 shows "Velmora Dashboard" && xdotool windowmove "$(shows "Velmora Dashboard")" 24 64
        xdotool windowfocus --sync "$(shows "Velmora Dashboard")" key Tab key space
    fi
    within 10 is_installed || echo "The daemon has not been installed." >&2
}

take_pictures() {
    local page
    mkdir -p "$pictures"
    within 10 is_owned app.velmora.Velmora || { echo "velmora did not come up." >&2; finish 1; }
    take_picture installation dashboard
    let_it_install
    within 5 heard_of_the_battery || true # 50 % may be what it shows
    ! grep -qs '"h"' "$scene/state/history.json" || within 5 heard_of_the_past || true
    take_picture panel panel
    for page in Overview Health Thermal Ecosystem Settings Notifications; do
        take_picture "dashboard-${page,,}" dashboard $page
    done
    take_picture widget-small widget-small
    take_picture widget-medium widget-medium
    $has_desktop || take_desktop
    echo "Pictures of all windows: $pictures"
    ! tells_of_everything || take_notices
}

# Of the page with the fleet: with another machine chosen there, with a command on its way, and with what came of it.
take_fleet_pictures() {
    mkdir -p "$pictures"
    choose_machine 2
    take_picture fleet dashboard Ecosystem
    $has_desktop || click_command 60 || echo "The clicks have sent no command." >&2
    is_commanded 60 || command_machine 2 60
    take_picture fleet-command-sent dashboard Ecosystem
    await_command 2 60
    within 10 is_told_as_taken || true
    take_picture fleet-command-taken dashboard Ecosystem
    build/bin/velmoractl fleet devices
    echo "Pictures of the fleet: $pictures"
}
# click_in_ecosystem X,Y... : one after the other, on that page of the dashboard on our display.
click_in_ecosystem() {
    local spot
    build/bin/velmora --dashboard
    within 10 shows "Velmora Dashboard" || return
    xdotool windowmove "$(shows "Velmora Dashboard")" 24 64
    for spot in 91,154 "$@"; do
        sleep 1.5 # it is drawn
        xdotool mousemove $((24 + ${spot%,*})) $((64 + ${spot#*,})) click 1
    done
}
# With a machine chosen: the slider where it says 60 %, and the button.
click_command() { # PERCENT : what that comes to
    local below=$(((fleet - 3) * 51)) # the list of machines stands above, of which it shows four and a half
    [ $below -le 77 ] || below=77
    click_in_ecosystem 448,$((365 + below)) 400,$((462 + below)) || return
    within 10 is_commanded "$1" || return
    echo "$(machine_name 1): a click on \"Send to that machine\""
    sleep 5 # the page has looked again
    import -silent -window root "$pictures/fleet-desktop.png"
}
choose_machine() { # NUMBER : as a click on it in the list does
    busctl --user set-property "${model[@]}" selectedDeviceID as 1 "$(on_machine "$1" build/bin/velmoractl fleet --json |
        sed 's/.*"deviceID":"\([^"]*\)".*/\1/')"
}
is_told_as_taken() { build/bin/velmoractl fleet devices | grep -qi "taken over"; }

# show_widget SIZE TITLE X Y : where the model says that it was left.
show_widget() {
    busctl --user set-property app.velmora.Velmora "/app/velmora/widgets/$1" app.velmora.Widget place ai 2 "$3" "$4"
    build/bin/velmora --widget "$1"
    within 10 shows "$2" || echo "The $1 widget has not been shown." >&2
}

# All of the display: beside the dashboard the widgets, and the panel as a click on the icon opens it.
take_desktop() {
    local spot
    show_widget small "Velmora Small Widget" 932 500
    show_widget medium "Velmora Medium Widget" 932 676
    within 5 [ -s "$scene/icon" ] || return 0
    IFS=, read -ra spot <"$scene/icon"
    xdotool mousemove "${spot[@]}" click 1
    within 10 shows Velmora && sleep 1 # it opens with an animation
    import -silent -window root "$pictures/desktop.png"
}

# The display is ours, and the laptop one that can do all that there are notices for.
tells_of_everything() { ! $has_desktop && ! $real && [ "$laptop" = thresholds ]; }

# order WORDS : to the laptop.
order() { echo "$*" >&4; }

# take_notice NAME TITLE SECONDS : as the server shows it, once it has come.
take_notice() {
    if within "$3" grep -qsF "summary: '$2'" "$scene/notices"; then
        sleep 0.5 # it is drawn
        import -silent -window "$(xdotool search --onlyvisible --class dunst | tail -1)" "$pictures/notice-$1.png"
    else
        echo "This notice has not come: $2." >&2
    fi
    dunstctl close-all
    : >"$scene/notices"
}

# What happens to the laptop, one after another.
take_notices() {
    order level 79
    take_notice limit "Charging Paused" 60
    order heat 46
    order unplug
    take_notice unplugged "Power Source Changed" 40
    order level 21
    order load 40
    take_notice low "Low Battery" 60
    order load 8
    order level 35
    order plug
    take_notice heat "Thermal Protection" 90
    order heat 30
    order level 60
    put_travel_event 5 "Flight to Lisbon"
    busctl --user set-property "${calendar[@]}" isConsentGiven b true
    busctl --user set-property "${calendar[@]}" isTravelChargeOn b true
    take_notice travel "Charging to 100% for Travel" 60
    take_picture dashboard-notifications dashboard Notifications # which says when the last ones were sent
    echo "Pictures of the notices: $pictures"
}
