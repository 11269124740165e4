// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/Encoding.h"

#include "base/Wipe.h"

#include <cerrno>
#include <openssl/crypto.h>
#include <openssl/sha.h>
#include <sys/random.h>
#include <system_error>

namespace velmora::openid {

namespace {

constexpr std::string_view urlAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr std::string_view commonAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string base64Of(std::string_view bytes, std::string_view alphabet)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::uint32_t bits = 0;
    int pending = 0;
    for (const char c : bytes) {
        bits = bits << 8 | static_cast<std::uint8_t>(c);
        for (pending += 8; pending >= 6; pending -= 6) text += alphabet[bits >> (pending - 6) & 63];
    }
    if (pending > 0) text += alphabet[bits << (6 - pending) & 63];
    return text;
}

void appendEncoded(std::string& to, std::string_view text)
{
    constexpr std::string_view plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (const char c : text) {
        const auto byte = static_cast<std::uint8_t>(c);
        if (plain.find(c) != plain.npos)
            to += c;
        else
            to.append({'%', digits[byte >> 4], digits[byte & 15]});
    }
}

} // namespace

Digest digestOf(std::string_view bytes)
{
    Digest digest;
    SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
    return digest;
}

std::string base64Url(std::string_view bytes)
{
    return base64Of(bytes, urlAlphabet);
}

std::optional<std::string> fromBase64Url(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    int pending = 0;
    for (const char c : text) {
        const auto value = urlAlphabet.find(c);
        if (value == urlAlphabet.npos) return std::nullopt;
        bits = bits << 6 | static_cast<std::uint32_t>(value);
        if ((pending += 6) < 8) continue;
        pending -= 8;
        bytes += static_cast<char>(bits >> pending & 0xff);
    }
    // What is left over are fewer than 6 bits, all of them 0: every text has one spelling.
    if (pending >= 6 || (bits & ((1U << pending) - 1)) != 0) return std::nullopt;
    return bytes;
}

std::string base64(std::string_view bytes)
{
    auto text = base64Of(bytes, commonAlphabet);
    text.append((4 - text.size() % 4) % 4, '=');
    return text;
}

std::string percentEncoded(std::string_view text)
{
    std::string encoded;
    encoded.reserve(3 * text.size());
    appendEncoded(encoded, text);
    return encoded;
}

std::string formEncoded(std::initializer_list<FormField> fields)
{
    std::string form;
    std::size_t longest = 0;
    for (const auto& [name, value] : fields) longest += 3 * (name.size() + value.value_or("").size()) + 2;
    form.reserve(longest); // a text with secrets that grows leaves them where it was
    for (const auto& [name, value] : fields) {
        if (!value) continue;
        if (!form.empty()) form += '&';
        appendEncoded(form, name);
        form += '=';
        appendEncoded(form, *value);
    }
    return form;
}

std::string randomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    for (std::size_t have = 0; have < count;) {
        const auto more = getrandom(bytes.data() + have, count - have, 0);
        if (more < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "getrandom");
        if (more > 0) have += static_cast<std::size_t>(more);
    }
    return bytes;
}

bool isSameSecret(std::string_view one, std::string_view other)
{
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

} // namespace velmora::openid
