// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/IdentityProvider.h"

#include <string>

/// What a person reads of their account.
namespace velmora::account {

/// Why a sign-in has failed, and what helps; empty for `canceled`. Any thread.
std::string faultText(IdentityFault fault);

} // namespace velmora::account
