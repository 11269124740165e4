# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of velmoractl for fish.

set -l commands status limit auto-protect storage full pause resume history watch diagnose fleet account help
complete -c velmoractl -f
complete -c velmoractl -l json -d 'Print JSON'
complete -c velmoractl -l timeout -x -d 'Seconds to wait for an answer'
complete -c velmoractl -l help -s h -d 'Print how it is used'
complete -c velmoractl -l version -d 'Print the version'

function __velmoractl_command -V commands -a name description
    complete -c velmoractl -n "not __fish_seen_subcommand_from $commands" -a $name -d $description
end
__velmoractl_command status 'Level, limits and batteries'
__velmoractl_command limit 'Stop charging at a level'
__velmoractl_command auto-protect 'Hold the battery at the limit, or do not'
__velmoractl_command storage 'Hold the battery at 50 %'
__velmoractl_command full 'Charge to 100 % once'
__velmoractl_command pause 'Stop charging here and now'
__velmoractl_command resume 'End a pause'
__velmoractl_command history 'The past of the battery'
__velmoractl_command watch 'A line for every change'
__velmoractl_command diagnose 'All that a report of a fault needs'
__velmoractl_command fleet 'The machines that see and command each other'
__velmoractl_command account 'Who is signed in, and with which provider'
__velmoractl_command help 'Print how it is used'
functions -e __velmoractl_command

complete -c velmoractl -n '__fish_seen_subcommand_from limit' -a '60 70 80 90 100'
complete -c velmoractl -n '__fish_seen_subcommand_from limit' -l resume-below -x -d 'Charging begins again below'
complete -c velmoractl -n '__fish_seen_subcommand_from auto-protect storage' -a 'on off'
complete -c velmoractl -n '__fish_seen_subcommand_from full' -l cancel -d 'Do not after all'
complete -c velmoractl -n '__fish_seen_subcommand_from history' -l csv -d 'Print comma-separated values'

set -l fleet status devices on off test accept limit auto-protect storage remove
set -l in_fleet '__fish_seen_subcommand_from fleet'
complete -c velmoractl -n "$in_fleet; and not __fish_seen_subcommand_from $fleet" -a "$fleet"
set -l where "$in_fleet; and __fish_seen_subcommand_from on test"
complete -c velmoractl -n $where -l this-computer -d 'Records in a file on this computer'
complete -c velmoractl -n $where -l server -x -d 'Records on a server'
complete -c velmoractl -n $where -l port -x -d 'Its port'
complete -c velmoractl -n $where -l database -x -d 'Database there'
complete -c velmoractl -n $where -l user -x -d 'User there'
complete -c velmoractl -n $where -l trust -x -a 'channel-binding certificate' -d 'By what it proves who it is'
complete -c velmoractl -n $where -l password-file -r -F -d 'File that has the password'
complete -c velmoractl -n "$in_fleet; and __fish_seen_subcommand_from accept" -a 'on off'

set -l account status provider sign-in cancel sign-out check
set -l in_account '__fish_seen_subcommand_from account'
complete -c velmoractl -n "$in_account; and not __fish_seen_subcommand_from $account" -a "$account"
set -l provider "$in_account; and __fish_seen_subcommand_from provider"
complete -c velmoractl -n $provider -l none -d 'Sign in with nobody'
complete -c velmoractl -n $provider -l parameters -x -d 'Added to what the browser asks for'
complete -c velmoractl -n $provider -l secret -d 'Ask for a secret of the client'
complete -c velmoractl -n $provider -l secret-file -r -F -d 'File that has it'
