// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/IdentityModule.h"
#include "identity/openid/OpenIDSession.h"

#include <chrono>

namespace {

velmora::Date systemTime()
{
    using namespace std::chrono;
    return velmora::Date::fromUnix(duration<double>(system_clock::now().time_since_epoch()).count());
}

} // namespace

VELMORA_IDENTITY_MODULE_ENTRY const velmora::IdentityModule* velmora_identity_module()
{
    static constexpr velmora::IdentityModule module{
        .version = VELMORA_VERSION,
        .open = [](velmora::IdentityAccess access) -> std::unique_ptr<velmora::OpenIDClient> {
            return std::make_unique<velmora::openid::OpenIDSession>(std::move(access), systemTime);
        }};
    return &module;
}
