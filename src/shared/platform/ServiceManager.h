// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// The manager of the system's services, as far as it concerns one of them: Velmora's daemon. Main thread
/// only.
class ServiceManager {
public:
    enum class Status : std::uint8_t {
        notRegistered = 0, ///< also where it is unknown
        enabled = 1,       ///< it starts with the machine
    };

    /// Why a registration failed, as far as it matters which.
    enum class ErrorCode : std::uint8_t {
        internalFailure = 2,
        invalidSignature = 3, ///< the service's definition is missing or damaged
        authorizationDenied = 4,
        alreadyRegistered = 12,
    };
    struct Error {
        ErrorCode code = ErrorCode::internalFailure;
        std::string description; ///< as the manager words it

        friend bool operator==(const Error&, const Error&) = default;
    };
    /// Called with nothing where the service is registered now.
    using Completion = std::function<void(const std::optional<Error>&)>;

    virtual ~ServiceManager() = default;

    /// Asks the manager. Blocks for a moment, never longer than a second.
    virtual Status status() = 0;

    /// Starts the daemon now and at every boot. The system asks the user for authorisation by its own prompt,
    /// without a time limit. `completion` is called once, later, unless this goes first.
    virtual void registerService(Completion completion) = 0;
};

} // namespace velmora
