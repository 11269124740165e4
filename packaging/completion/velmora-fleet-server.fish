# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of velmora-fleet-server for fish.

set -l first "test (count (commandline -opc)) -eq 1"
complete -c velmora-fleet-server -f
complete -c velmora-fleet-server -n $first -a setup -d 'Make a server ready for fleets, and check it'
complete -c velmora-fleet-server -n $first -a add -d 'Let a person in, or give a new password'
complete -c velmora-fleet-server -n $first -a remove -d 'Remove a person and the records'
complete -c velmora-fleet-server -n $first -a check -d 'Say what is right and what is wrong'
complete -c velmora-fleet-server -l host -x -a '(__fish_print_hostnames)' -d 'The server'
complete -c velmora-fleet-server -l port -x -d 'Its port'
complete -c velmora-fleet-server -l database -x -d 'The database'
complete -c velmora-fleet-server -l admin -x -d 'Who administers it'
complete -c velmora-fleet-server -l trust -x -a 'channel-binding certificate' -d 'How it proves who it is'
complete -c velmora-fleet-server -l admin-password-file -r -d 'File with the password of the administrator'
complete -c velmora-fleet-server -l password-file -r -d 'File with the password of the person'
complete -c velmora-fleet-server -n $first -l help -d 'Print how it is used'
complete -c velmora-fleet-server -n $first -l version -d 'Print the version'
