# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of velmora for fish.

set -l first "test (count (commandline -opc)) -eq 1"
complete -c velmora -f
complete -c velmora -n $first -l background -d 'Stay in the background; end at once where one runs'
complete -c velmora -n $first -l panel -d 'Open the panel'
complete -c velmora -n $first -l dashboard -d 'Open the dashboard'
complete -c velmora -n $first -l widget -x -a 'small medium' -d 'Put a widget on the desktop'
complete -c velmora -n $first -l quit -d 'End the one that runs'
complete -c velmora -n $first -l help -d 'Print how it is used'
complete -c velmora -n $first -l version -d 'Print the version'
