// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Handle.h"

#include <cjose/cjose.h>
#include <nlohmann/json.hpp>
#include <string>

namespace velmora {

/// The keys of a provider that a test plays: RSA of 2048 bits ("rsa-NAME") and EC on P-256 ("ec-NAME").
class SigningKeys {
public:
    explicit SigningKeys(const std::string& name);

    /// The public parts, as a JSON Web Key Set.
    nlohmann::json publicKeys() const;
    /// A token. The header's "alg" says how it is signed: RS256, PS256, ES256; HS256 with what everybody
    /// knows of the RSA key; "none", or anything else, not at all. "kid" is added where the header has none.
    std::string sign(nlohmann::json header, const std::string& payload) const;

private:
    using Key = Handle<cjose_jwk_t, cjose_jwk_release>;

    Key rsa_, ec_, shared_;
};

} // namespace velmora
