// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "identity/openid/Answers.h"
#include "platform/IdentityProvider.h"

#include <string>

namespace velmora::openid {

/// What one sign-in is known by: bytes that nobody can guess, anew for each.
struct SignInMarks {
    std::string state; ///< comes back with the browser
    std::string nonce; ///< comes back within the identity token
    std::string
        verifier; ///< goes with the code, to be wiped then: proves that both are of one sign-in (PKCE)

    /// Throws std::system_error where the kernel has no random bytes.
    static SignInMarks make();
};

/// The page to which the browser goes for a sign-in. It is a secret to nobody, and has no character that a
/// shell would make something of within quotes: a browser is often started by a script.
std::string authorizationPage(const Discovery& discovery, const IdentitySource& source,
                              const SignInMarks& marks, const std::string& redirectAddress);

} // namespace velmora::openid
