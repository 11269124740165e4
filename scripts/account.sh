# An identity provider on the loopback, and a person who signs in with it. Sourced by ./run, after stage.sh.

manager_of_account=(app.velmora.Velmora /app/velmora/AppleAuthManager app.velmora.AppleAuthManager)
of_account() { [ "$(busctl --user get-property "${manager_of_account[@]}" "$1")" = "$2" ]; } # PROPERTY VALUE : whether it is that
is_signed_in() { of_account isSignedIn 'b true'; }
is_signing_in() { of_account isLoading 'b true'; }
is_revoked() { of_account isRevoked 'b true'; }

# start_provider : with what it needs in build/identity.
start_provider() {
    local node
    echo "Installing the identity provider ..."
    node=$(demo/identity/install build/identity) || { echo "npm could not install it." >&2; finish 1; }
    start "$node" demo/identity/provider.js build/identity >&5 2>"$scene/provider.log"
    await "The identity provider" "$scene/provider.log"
    issuer=$answer
    echo "An identity provider: $issuer. Its one client is velmora; any name and any password will do."
}

# spare_keyring : on a desktop the person's own secret store keeps the sign-in: one that is there is left alone, and ours does not stay.
is_kept() { secret-tool lookup service app.velmora.appleauth account apple_user_id >/dev/null; }
has_gone() { ! is_kept; }
spare_keyring() {
    if is_kept; then
        echo "Somebody is signed in with the Velmora of this desktop, and a trial would sign them out. With --screenshots it would not." >&2
        finish 1
    fi
    before_end=forget_sign_in
}
forget_sign_in() {
    busctl --user call "${manager_of_account[@]}" signOut && within 5 has_gone ||
        echo "The trial's sign-in may still be in your secret store, under app.velmora.appleauth and app.velmora.oidc." >&2
}

use_provider() {
    within 10 is_owned app.velmora.Velmora || { echo "velmora did not come up." >&2; finish 1; }
    build/bin/velmoractl account provider "$issuer" velmora >/dev/null || finish 1
}

# at_provider WHAT : as an administrator there.
at_provider() { curl --silent --fail --noproxy '*' --request POST "$issuer/control/$1"; }

# account_obeys ORDER : does it; fails where it is none of these.
account_obeys() {
    case "$1" in
        restart) restart_velmora || echo "velmora did not come up." >&2 ;;
        "revoke "*) at_provider "revoke/${1#revoke }" || echo "The provider did not take that." >&2 ;;
        *) return 1 ;;
    esac
}

# What xdg-open finds as the person's browser on our display.
provide_browser() {
    local more=()
    [ "$(id -u)" -ne 0 ] || more=(--no-sandbox --test-type) # as root it has none, and would say so
    mkdir "$scene/home"
    cat >"$scene/browser" <<SH
#!/bin/sh
echo \$\$ >$scene/browser.pid
export HOME=$scene/home
exec chromium --incognito --user-data-dir=$scene/home/browser --no-first-run --no-default-browser-check --password-store=basic \
    --disable-background-networking --disable-component-update --disable-sync --disable-gpu --no-proxy-server --window-position=644,40 \
    --window-size=612,470 ${more[*]} "\$@" >>$scene/browser.log 2>&1
SH
    chmod +x "$scene/browser"
    mkdir -p "$XDG_DATA_HOME/applications" "$XDG_CONFIG_HOME"
    printf '[Desktop Entry]\nType=Application\nName=Browser\nExec=%s %%u\n' "$scene/browser" \
        >"$XDG_DATA_HOME/applications/browser.desktop"
    printf '[Default Applications]\nx-scheme-handler/http=browser.desktop\n' >"$XDG_CONFIG_HOME/mimeapps.list"
    export BROWSER=$scene/browser # for an xdg-open that knows no entries
    before_end=end_browser
}
browser_has_ended() { ! grep -qas "$scene/hom[e]/browser" /proc/[0-9]*/cmdline; } # all of its processes
end_browser() { # it would write to its folder while that is removed
    [ ! -s "$scene/browser.pid" ] || kill "$(cat "$scene/browser.pid")" 2>/dev/null || true
    within 10 browser_has_ended
}

# Nothing has changed on the display within a second, but for a caret.
stands_still() {
    import -silent -window root "$scene/earlier.png"
    sleep 1
    import -silent -window root "$scene/later.png"
    [ "$(compare -metric AE "$scene/earlier.png" "$scene/later.png" null: 2>&1 | cut -d ' ' -f 1)" -lt 500 ]
}

# press KEY... : in the browser, once what it shows is drawn.
press() {
    sleep 1
    within 20 stands_still || true
    import -silent -window root "$pictures/desktop-signing-in-$((steps += 1)).png"
    xdotool windowfocus --sync "$(xdotool search --onlyvisible --name "^$provider_page" | tail -1)" key --delay 60 "$@"
}
provider_page='Sign-in - Chromium' steps=0 # the title of both forms: who it is, and what Velmora may know
agree() { is_signed_in || { press Return && is_signed_in; }; }

# sign_in : a click on the button of the page, and what the person does in the browser that opens.
sign_in() {
    click_in_ecosystem 364,502 && within 10 is_signing_in || {
        echo "The click on the button has begun no sign-in: it is begun over the bus." >&2
        busctl --user call "${manager_of_account[@]}" signIn 'a{sv}' 0
    }
    within 10 is_signing_in || return
    take_picture account-signing-in dashboard Ecosystem
    within 30 xdotool search --onlyvisible --name "^$provider_page" || return
    press a d a Tab s e c r e t Return
    within 30 agree || return
    sleep 2 # page and browser show it
    import -silent -window root "$pictures/desktop-signed-in.png"
}

# restart_velmora : the resident program, as after a log-in.
restart_velmora() {
    local i
    build/bin/velmora --quit
    wait "$velmora" || true
    for i in "${!started[@]}"; do [ "${started[i]}" != "$velmora" ] || unset "started[i]"; done
    started=("${started[@]}")
    start build/bin/velmora --background 2> >(logged)
    velmora=${started[-1]}
    within 10 is_owned app.velmora.Velmora
}

# expect WHAT COMMAND... : says whether it is so within half a minute; all ends where it is not.
expect() {
    local so=true
    within 30 "${@:2}" || so=false
    if $so; then echo "The account: $1. velmoractl account says:"; else echo "Not so: $1. velmoractl account says:" >&2; fi
    build/bin/velmoractl account | sed 's/^/  /'
    $so || finish 1
}

# A sign-in by a real browser, and what becomes of it; each in pictures.
take_account_pictures() {
    mkdir -p "$pictures"
    within 5 heard_of_the_battery || true
    take_picture account-before dashboard Ecosystem
    sign_in || true
    expect "Ada has signed in with a browser" is_signed_in
    take_picture account-signed-in dashboard Ecosystem
    restart_velmora
    expect "a restart has restored that, and the provider has confirmed it" is_signed_in
    take_picture account-restored dashboard Ecosystem
    at_provider revoke/ada
    echo "The account: the provider has withdrawn what Ada had consented to."
    restart_velmora
    expect "the next start shows it" is_revoked
    take_picture account-revoked dashboard Ecosystem
    echo "Pictures of the account: $pictures"
}
