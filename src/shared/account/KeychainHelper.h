// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <optional>
#include <string>

namespace velmora {

/// Keeps small texts that must not lie in a plain file, each under a service and an account, in the user's
/// secret store. What fails is false, or nothing: neither says why, and nothing is logged.
///
/// Holds no state. Any thread while a platform is installed; a call blocks as those of SecretStore do.
class KeychainHelper {
public:
    static const KeychainHelper& shared();

    /// Replaces what was stored there. False where it could not be stored; what was there may be gone then.
    /// `value` is UTF-8 and may be empty.
    bool save(const std::string& value, const std::string& service, const std::string& account) const;

    /// Nothing where there is none, or what is there is not UTF-8.
    std::optional<std::string> read(const std::string& service, const std::string& account) const;

    /// Whether there was one.
    bool remove(const std::string& service, const std::string& account) const;
};

} // namespace velmora
