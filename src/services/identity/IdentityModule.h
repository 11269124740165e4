// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "identity/OpenIDClient.h"
#include "platform/IdentityProvider.h"

#include <memory>
#include <string>

namespace velmora {

/// What the browser shows once its part in a sign-in is done: UTF-8, in the reader's language.
struct SignInPages {
    std::string signedIn{};
    std::string canceled{};
    std::string failed{};
};

/// What a provider is reached with.
struct IdentityAccess {
    IdentitySource source{};
    IdentityProvider::ClientSecret secret{}; ///< asked when it is needed, where it may take seconds
    SignInPages pages{};                     ///< for a sign-in
};

/// The part of Velmora that speaks to OpenID providers: a shared object that is loaded at its first use and
/// stays loaded, so that who never signs in is spared the libraries behind it. See RecordModule, whose rules
/// it follows.
struct IdentityModule {
    const char* version; ///< of the Velmora that it was built with; stays the first member for ever
    std::unique_ptr<OpenIDClient> (*open)(IdentityAccess access);
};

/// The one function that the module exports, and its name.
using IdentityModuleEntry = const IdentityModule*();
inline constexpr auto identityModuleEntry = "velmora_identity_module";

} // namespace velmora

/// Goes before the definition of the entry: nothing else of the module is to be seen.
#define VELMORA_IDENTITY_MODULE_ENTRY extern "C" __attribute__((visibility("default")))
