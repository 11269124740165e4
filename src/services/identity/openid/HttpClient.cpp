// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "identity/openid/HttpClient.h"

#include "base/Handle.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "base/Wipe.h"
#include "identity/openid/Memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <curl/curl.h>
#include <new>
#include <openssl/ssl.h>
#include <sys/socket.h>

namespace velmora::openid {

namespace {

using Url = Handle<CURLU, curl_url_cleanup>;
using UrlPart = Handle<char, curl_free>;
using Easy = Handle<CURL, curl_easy_cleanup>;
using Headers = Handle<curl_slist, curl_slist_free_all>;
using Clock = std::chrono::steady_clock;

std::string partOf(CURLU* url, CURLUPart which)
{
    char* text = nullptr;
    if (curl_url_get(url, which, &text, 0) != CURLUE_OK) return {};
    return UrlPart(text).get();
}

bool isLoopback(CURLU* url)
{
    constexpr std::array<std::string_view, 3> here{"localhost", "127.0.0.1", "[::1]"};
    return std::ranges::find(here, partOf(url, CURLUPART_HOST)) != here.end();
}

/// Null for what is no endpoint.
Url parsed(std::string_view text)
{
    constexpr std::size_t longest = 2000;
    const auto isPlain = [](char c) {
        return c > ' ' && c <= '~' && std::string_view("\"<>\\^`{|}#").find(c) == std::string_view::npos;
    };
    if (text.size() > longest || !std::ranges::all_of(text, isPlain)) return nullptr;
    // libcurl takes one slash for two, and three: who else reads the address may not.
    if (const auto end = text.find("://"); end == text.npos || text.substr(end + 3).starts_with('/'))
        return nullptr;
    Url url(curl_url());
    if (!url ||
        curl_url_set(url.get(), CURLUPART_URL, std::string(text).c_str(), CURLU_DISALLOW_USER) != CURLUE_OK)
        return nullptr;
    const auto scheme = partOf(url.get(), CURLUPART_SCHEME);
    return scheme == "https" || (scheme == "http" && isLoopback(url.get())) ? std::move(url) : nullptr;
}

/// An answer as it comes.
struct Incoming {
    HttpAnswer answer;
    std::size_t headerBytes = 0;
    bool isTooLong = false;
};

std::size_t takeHeader(const char*, std::size_t, std::size_t count, void* to)
{
    auto& incoming = *static_cast<Incoming*>(to);
    incoming.headerBytes += count;
    incoming.isTooLong = incoming.headerBytes > HttpClient::maximumHeaders;
    return incoming.isTooLong ? 0 : count;
}

std::size_t takeBody(const char* bytes, std::size_t, std::size_t count, void* to)
{
    auto& incoming = *static_cast<Incoming*>(to);
    incoming.isTooLong = incoming.answer.body.size() + count > HttpClient::maximumBody;
    if (incoming.isTooLong) return 0;
    appendSecret(incoming.answer.body, {bytes, count});
    return count;
}

/// As libcurl's own, but not for the programs that Velmora starts.
curl_socket_t openSocket(void*, curlsocktype, curl_sockaddr* address)
{
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

/// OpenSSL, too, overwrites what it has decrypted, and writes its keys to no file that SSLKEYLOGFILE names.
CURLcode keepSecret(CURL*, void* context, void*)
{
    SSL_CTX_set_options(static_cast<SSL_CTX*>(context), SSL_OP_CLEANSE_PLAINTEXT);
    SSL_CTX_set_keylog_callback(static_cast<SSL_CTX*>(context), nullptr);
    return CURLE_OK;
}

/// Other libraries for encryption have contexts of their own.
bool isWithOpenSsl()
{
    const auto* version = curl_version_info(CURLVERSION_NOW);
    return version->ssl_version && std::string_view(version->ssl_version).starts_with("OpenSSL/");
}

Headers headersOf(const HttpRequest& request)
{
    Headers headers;
    const auto add = [&headers](const std::string& line) {
        curl_slist* const longer = curl_slist_append(headers.get(), line.c_str());
        if (!longer) throw std::bad_alloc();
        static_cast<void>(headers.release());
        headers.reset(longer);
    };
    add("Accept: application/json");
    add("Expect:"); // no asking first whether the form may be sent
    if (request.authorization.empty()) return headers;
    auto line = "Authorization: " + request.authorization;
    add(line);
    wipe(line);
    return headers;
}

template <typename Value>
void set(CURL* easy, CURLoption option, Value value)
{
    const auto code = curl_easy_setopt(easy, option, value);
    if (code != CURLE_OK) throw std::bad_alloc(); // else all of them are known and right
}

/// What goes for all requests.
void setRules(CURL* easy, bool isLoopback)
{
    set(easy, CURLOPT_PROTOCOLS_STR, isLoopback ? "http,https" : "https");
    if (isLoopback) set(easy, CURLOPT_PROXY, "");
    set(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(easy, CURLOPT_USERAGENT, "Velmora/" VELMORA_VERSION);
    set(easy, CURLOPT_HTTP_CONTENT_DECODING, 0L);
    set(easy, CURLOPT_FRESH_CONNECT, 1L);
    set(easy, CURLOPT_FORBID_REUSE, 1L);
    set(easy, CURLOPT_NOSIGNAL, 1L);
    set(easy, CURLOPT_QUICK_EXIT, 1L); // a name look-up that hangs is left to itself
    set(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(HttpClient::maximumBody));
    set(easy, CURLOPT_OPENSOCKETFUNCTION, &openSocket);
    if (isWithOpenSsl()) set(easy, CURLOPT_SSL_CTX_FUNCTION, &keepSecret);
}

void setRequest(CURL* easy, const HttpRequest& request, CURLU* url, curl_slist* headers, Incoming& incoming)
{
    setRules(easy, isLoopback(url));
    set(easy, CURLOPT_CURLU, url);
    set(easy, CURLOPT_HTTPHEADER, headers);
    if (request.form) {
        set(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.form->size()));
        set(easy, CURLOPT_POSTFIELDS, request.form->c_str());
    }
    set(easy, CURLOPT_HEADERFUNCTION, &takeHeader);
    set(easy, CURLOPT_HEADERDATA, &incoming);
    set(easy, CURLOPT_WRITEFUNCTION, &takeBody);
    set(easy, CURLOPT_WRITEDATA, &incoming);
}

/// Of the answer as a whole or of one header, for which there is no room.
bool isTooLong(CURLcode code)
{
    constexpr int tooLarge = 100; // CURLE_TOO_LARGE, since 8.6; before, it said that there is no memory
    return code == CURLE_FILESIZE_EXCEEDED || code == CURLE_OUT_OF_MEMORY || code == tooLarge;
}

IdentityFault faultOf(CURLcode code)
{
    switch (code) {
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer without headers
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_HTTP2:
        return IdentityFault::invalid;
    default:
        return IdentityFault::unreachable;
    }
}

/// Without what follows the path, which is nobody's business.
std::string shown(const std::string& url)
{
    return printable(cleanUtf8(url.substr(0, std::min<std::size_t>(url.find('?'), 200))));
}

/// Of a transfer that libcurl has ended, for that reason if it says one.
IdentityProblem problemOf(CURLcode code, const Incoming& incoming, const std::string& where,
                          const char* reason)
{
    if (incoming.isTooLong || isTooLong(code))
        return {IdentityFault::invalid, where + " gave an answer that is too long."};
    const auto* text = *reason ? reason : curl_easy_strerror(code);
    return {faultOf(code), where + ": " + printable(cleanUtf8(text)) + "."};
}

/// A transfer that is part of `multi` as long as this lives.
class Transfer {
public:
    Transfer(CURLM* multi, CURL* easy) : multi_(multi), easy_(easy)
    {
        if (curl_multi_add_handle(multi_, easy_) != CURLM_OK) throw std::bad_alloc();
    }
    ~Transfer() { curl_multi_remove_handle(multi_, easy_); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Works on until something is to be awaited; nullopt while it has not ended.
    std::optional<CURLcode> advance()
    {
        int running = 0, messages = 0;
        if (curl_multi_perform(multi_, &running) != CURLM_OK) return CURLE_OUT_OF_MEMORY;
        if (const auto* message = curl_multi_info_read(multi_, &messages)) return message->data.result;
        return std::nullopt;
    }

private:
    CURLM* multi_;
    CURL* easy_;
};

} // namespace

struct HttpClient::State {
    Handle<CURLM, curl_multi_cleanup> multi{curl_multi_init()};
    std::atomic<bool> isCanceled{false};

    /// How the transfer ended: a problem, or libcurl's word.
    std::variant<CURLcode, IdentityProblem> run(CURL* easy, Deadline end, const std::string& where) const;
};

std::variant<CURLcode, IdentityProblem> HttpClient::State::run(CURL* easy, Deadline end,
                                                               const std::string& where) const
{
    using namespace std::chrono_literals;
    Transfer transfer(multi.get(), easy);
    while (!isCanceled) {
        if (const auto code = transfer.advance()) return *code;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left <= 0ms)
            return IdentityProblem{IdentityFault::unreachable, where + " did not answer in time."};
        curl_multi_poll(multi.get(), nullptr, 0, static_cast<int>(std::min(left, 1000ms).count()), nullptr);
    }
    return IdentityProblem{IdentityFault::canceled, {}};
}

HttpClient::HttpClient()
{
    wipeLibraryMemory();
    state_ = std::make_unique<State>();
    if (!state_->multi) throw std::bad_alloc();
}

HttpClient::~HttpClient() = default;

bool HttpClient::isEndpoint(std::string_view url)
{
    wipeLibraryMemory();
    return parsed(url) != nullptr;
}

bool HttpClient::isEncrypted(std::string_view url)
{
    wipeLibraryMemory();
    const auto known = parsed(url);
    return known && partOf(known.get(), CURLUPART_SCHEME) == "https";
}

std::variant<HttpAnswer, IdentityProblem> HttpClient::exchange(const HttpRequest& request, Deadline end)
{
    const auto where = shown(request.url);
    const auto url = parsed(request.url);
    if (!url)
        return IdentityProblem{IdentityFault::invalid, where + " is no address that Velmora speaks to."};
    Incoming incoming;
    const auto headers = headersOf(request);
    const Easy easy(curl_easy_init());
    if (!easy) throw std::bad_alloc();
    std::array<char, CURL_ERROR_SIZE> reason{};
    set(easy.get(), CURLOPT_ERRORBUFFER, reason.data());
    setRequest(easy.get(), request, url.get(), headers.get(), incoming);

    const auto ended = state_->run(easy.get(), std::min(end, Clock::now() + timeLimit), where);
    if (const auto* problem = std::get_if<IdentityProblem>(&ended)) return *problem;
    const auto code = std::get<CURLcode>(ended);
    if (code != CURLE_OK) return problemOf(code, incoming, where, reason.data());
    long status = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
    incoming.answer.status = static_cast<int>(status);
    return std::move(incoming.answer);
}

void HttpClient::cancel()
{
    state_->isCanceled = true;
    curl_multi_wakeup(state_->multi.get());
}

bool HttpClient::isCanceled() const
{
    return state_->isCanceled;
}

} // namespace velmora::openid
