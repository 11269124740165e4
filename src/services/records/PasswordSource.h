// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Log.h"
#include "platform/RecordStores.h"

#include <memory>

namespace velmora {

/// Where the password for the server at `place` comes from: from the file that was chosen there, and from
/// nowhere else then; else by `kept`; else, for a program that has no secret store, from the credential
/// `velmora-fleet-password` that systemd has given to it. To be made on the main thread, asked on any; empty
/// where there is none. What is wrong with a file is a line in the log, once until it is right.
RecordStores::Password passwordSource(const RecordPlace& place, RecordStores::Password kept,
                                      std::shared_ptr<Log> log);

} // namespace velmora
