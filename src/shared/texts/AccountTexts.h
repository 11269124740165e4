// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/IdentityProvider.h"

#include <string>

/// What a person reads of their account.
namespace velmora::account {

/// Why a sign-in has failed, and what helps; empty for `canceled`. Any thread.
std::string faultText(IdentityFault fault);

/// What the browser says once its part in a sign-in is done.
std::string signedInPage();
std::string canceledPage();
std::string failedPage();

} // namespace velmora::account
