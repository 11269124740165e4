// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

namespace velmora {

/// Whether the log-in session of this process is the one in use on its seat: false while another user, or
/// another session of this one, is in front. A process outside of any session, as a user's unit is, counts to
/// the one that XDG_SESSION_ID names, else to the one of the user's desktop. True where nobody keeps
/// sessions. Reads a few files of logind; any thread.
bool isOwnSessionActive();

} // namespace velmora
