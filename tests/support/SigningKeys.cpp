// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SigningKeys.h"

#include "identity/openid/Encoding.h"

#include <cstdlib>
#include <jansson.h>
#include <stdexcept>

namespace velmora {

namespace {

using Json = nlohmann::json;
using Text = Handle<char, std::free>;

Json publicPart(const cjose_jwk_t* key)
{
    const Text text(cjose_jwk_to_json(key, /*priv=*/false, nullptr));
    auto json = Json::parse(text.get());
    json["use"] = "sig";
    return json;
}

} // namespace

SigningKeys::SigningKeys(const std::string& name)
{
    constexpr std::uint8_t exponent[]{1, 0, 1};
    rsa_.reset(cjose_jwk_create_RSA_random(2048, exponent, sizeof exponent, nullptr));
    ec_.reset(cjose_jwk_create_EC_random(CJOSE_JWK_EC_P_256, nullptr));
    if (!rsa_ || !ec_) throw std::runtime_error("No keys were made");
    cjose_jwk_set_kid(rsa_.get(), ("rsa-" + name).c_str(), name.size() + 4, nullptr);
    cjose_jwk_set_kid(ec_.get(), ("ec-" + name).c_str(), name.size() + 3, nullptr);
    const auto known = publicPart(rsa_.get())["n"].get<std::string>();
    shared_.reset(cjose_jwk_create_oct_spec(reinterpret_cast<const std::uint8_t*>(known.data()), known.size(),
                                            nullptr));
}

Json SigningKeys::publicKeys() const
{
    return {{"keys", {publicPart(rsa_.get()), publicPart(ec_.get())}}};
}

std::string SigningKeys::sign(Json header, const std::string& payload) const
{
    const auto algorithm = header.at("alg").get<std::string>();
    const auto* key = algorithm == "ES256" ? ec_.get() : algorithm == "HS256" ? shared_.get() : rsa_.get();
    if (!header.contains("kid"))
        header["kid"] = cjose_jwk_get_kid(algorithm == "ES256" ? ec_.get() : rsa_.get(), nullptr);
    const Handle<json_t, cjose_header_release> made(json_loads(header.dump().c_str(), 0, nullptr));
    const Handle<cjose_jws_t, cjose_jws_release> token(cjose_jws_sign(
        key, made.get(), reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size(), nullptr));
    const char* text = nullptr;
    if (token && cjose_jws_export(token.get(), &text, nullptr)) return text;
    return openid::base64Url(header.dump()) + "." + openid::base64Url(payload) + ".";
}

} // namespace velmora
