// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LoopbackConnection.h"
#include "ScriptedProvider.h"
#include "identity/openid/Encoding.h"
#include "identity/openid/OpenIDSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <future>
#include <thread>

namespace velmora::openid {
namespace {

using namespace std::chrono_literals;
using testing::_;
using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Key;
using testing::Not;
using testing::Pair;
using testing::VariantWith;
using Answer = ScriptedProvider::Answer;
using Behavior = ScriptedProvider::Behavior;
using Json = ScriptedProvider::Json;
using Manner = ScriptedProvider::Manner;
using Request = ScriptedProvider::Request;
using Change = std::function<void(Behavior&)>;
using Result = std::variant<OpenIDClient::SignedIn, IdentityProblem>;

Date systemTime()
{
    return Date::fromUnix(
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count());
}

/// What a problem's name in a table is: its number in a message of gtest's would tell nobody anything.
std::string nameOf(IdentityFault fault)
{
    constexpr std::array names{"canceled", "noProvider", "noModule", "noBrowser", "noListener", "unreachable",
                               "expired",  "refused",    "client",   "revoked",   "invalid",    "signature"};
    return names.at(static_cast<std::size_t>(fault));
}

template <typename Good>
std::string outcome(const std::variant<Good, IdentityProblem>& result)
{
    const auto* problem = std::get_if<IdentityProblem>(&result);
    return problem ? nameOf(problem->fault) : "done";
}

/// What a browser shows that goes to `url`, in a connection of its own.
std::string visited(const std::string& url)
{
    const LoopbackConnection connection(portOf(url));
    connection.say("GET " + url.substr(url.find('/', 8)) + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    return connection.heard();
}

std::string replaced(std::string text, const std::string& what, const std::string& by)
{
    const auto at = text.find(what);
    return at == text.npos ? text : text.replace(at, what.size(), by);
}

/// What to change so that this path answers so.
Change answering(const std::string& path, Answer answer)
{
    return [path, answer = std::move(answer)](Behavior& behavior) {
        behavior.paths[path] = [answer](const Request&) { return answer; };
    };
}

Answer json(int status, const std::string& error)
{
    return {.status = status,
            .body = Json{{"error", error}, {"error_description", "So it is.\n\x1b[31m"}}.dump()};
}

struct OpenIDClientTest : testing::Test {
    ScriptedProvider provider;
    IdentitySource source{.issuer = provider.issuer(), .clientID = "velmora"};
    std::string secret;
    double clockError = 0; ///< seconds
    SessionPatience patience{};
    /// The browser, on its way back; gives what it shows then.
    std::function<std::string(const std::string& redirect)> browse = visited;
    std::string authorization; ///< the page that it was sent to
    std::future<std::string> page;
    std::vector<std::string> kept;

    std::unique_ptr<OpenIDSession> session()
    {
        return std::make_unique<OpenIDSession>(
            IdentityAccess{.source = source,
                           .secret = [this] { return secret; },
                           .pages = {.signedIn = "In.", .canceled = "Not in.", .failed = "Failed."}},
            [this] { return systemTime() + clockError; }, patience);
    }
    /// The user signs in at once, and the browser goes where the provider sends it.
    Result signIn(OpenIDClient& client)
    {
        return client.signIn([this](const std::string& url) {
            authorization = url;
            page = std::async(std::launch::async, browse, provider.redirectFor(url));
            return true;
        });
    }
    Result signIn() { return signIn(*session()); }
    std::variant<std::string, IdentityProblem> refresh(const std::string& token)
    {
        return session()->refresh(token, [this](const std::string& fresh) { kept.push_back(fresh); });
    }
    std::string freshToken()
    {
        const auto result = signIn();
        return std::holds_alternative<IdentityProblem>(result)
                   ? ""
                   : std::get<OpenIDClient::SignedIn>(result).refreshToken;
    }
    /// By the browser, if it was opened.
    std::string shown() { return page.valid() ? page.get() : ""; }
    Request asked(const std::string& path)
    {
        for (const auto& request : provider.takeRequests())
            if (request.path == path) return request;
        return {};
    }
    /// Else the previous change would stay.
    void renew(const Change& how)
    {
        provider.change([&how](Behavior& behavior) {
            behavior = {};
            how(behavior);
        });
    }
};

TEST_F(OpenIDClientTest, SignsInAndTellsWhoTheUserIs)
{
    const auto result = signIn();
    ASSERT_EQ(outcome(result), "done") << std::get<IdentityProblem>(result).detail;
    const auto& [credential, refreshToken] = std::get<OpenIDClient::SignedIn>(result);
    EXPECT_EQ(credential.user, "user-0001-of-the-provider");
    EXPECT_EQ(credential.givenName, "Mara");
    EXPECT_EQ(credential.familyName, "Lind");
    EXPECT_EQ(credential.email, "mara@example.org");
    EXPECT_THAT(provider.secrets(), Contains(refreshToken));
    EXPECT_THAT(page.get(), AllOf(HasSubstr("200 OK"), HasSubstr("In.")));

    const auto exchange = asked("/token");
    EXPECT_EQ(exchange.authorization, "");
    EXPECT_THAT(exchange.parameters,
                AllOf(Contains(Pair("client_id", "velmora")), Not(Contains(Key("client_secret")))));
    for (const auto& hidden : provider.secrets()) EXPECT_THAT(authorization, Not(HasSubstr(hidden)));
    EXPECT_THAT(authorization, AllOf(HasSubstr("scope=openid%20profile%20email%20offline_access&"),
                                     HasSubstr("&prompt=consent"), HasSubstr("&code_challenge_method=S256")));

    // Nothing of it is used twice.
    const auto before = authorization;
    EXPECT_EQ(outcome(signIn()), "done");
    for (const auto* name : {"state=", "nonce=", "code_challenge="}) {
        const auto at = before.find(name);
        EXPECT_NE(before.substr(at, 50), authorization.substr(authorization.find(name), 50));
    }
}

TEST_F(OpenIDClientTest, AsksAsTheProviderAndThePersonWantIt)
{
    provider.change([](Behavior& behavior) {
        behavior.discovery = [](Json& said) {
            said["scopes_supported"] = {"openid"};
            said["authorization_endpoint"] =
                said["authorization_endpoint"].get<std::string>() + "?tenant=$(a);'b'";
            said.erase("userinfo_endpoint");
        };
        behavior.claims = [](Json& said) { said["given_name"] = "Token"; };
        behavior.clientSecret = "s&cret:ü";
    });
    source.parameters = "prompt=login&access_type=offline";
    secret = "s&cret:ü";
    const auto result = signIn();
    ASSERT_EQ(outcome(result), "done");
    EXPECT_EQ(std::get<OpenIDClient::SignedIn>(result).credential.givenName, "Token");
    EXPECT_EQ(std::get<OpenIDClient::SignedIn>(result).refreshToken, "");
    EXPECT_THAT(authorization,
                AllOf(HasSubstr("/authorize?tenant=%24%28a%29%3B%27b%27&response_type=code&"),
                      HasSubstr("&prompt=login&access_type=offline"), Not(HasSubstr("consent")),
                      HasSubstr("scope=openid%20profile%20email&")));
    EXPECT_EQ(asked("/token").authorization, "Basic " + base64("velmora:s%26cret%3A%C3%BC"));

    provider.change([](Behavior& behavior) {
        behavior.discovery = [](Json& said) {
            said["token_endpoint_auth_methods_supported"] = {"client_secret_post"};
        };
    });
    EXPECT_EQ(outcome(signIn()), "done");
    EXPECT_THAT(asked("/token").parameters, Contains(Pair("client_secret", "s&cret:ü")));
}

TEST_F(OpenIDClientTest, BelievesNoProviderThatLies)
{
    const auto claim = [](const std::string& name, const Json& value) {
        return
            [name, value](Behavior& behavior) { behavior.claims = [=](Json& said) { said[name] = value; }; };
    };
    const auto announces = [](const std::string& name, const Json& value) {
        return [name, value](Behavior& behavior) {
            behavior.discovery = [=](Json& said) { said[name] = value; };
        };
    };
    const auto signs = [](const std::string& algorithm) {
        return [algorithm](Behavior& behavior) { behavior.algorithm = algorithm; };
    };
    const std::string discovery = "/.well-known/openid-configuration";
    const Answer portal{.body = "<html><title>Log in to this network</title></html>",
                        .headers = {"Content-Type: text/html"}};
    const double now = systemTime().unixSeconds();
    struct Row {
        std::string fault;
        std::string name;
        Change change;
    };
    const std::vector<Row> rows{
        {"done", "nothing", [](Behavior&) {}},
        {"done", "ES256", signs("ES256")},
        {"done", "PS256", signs("PS256")},
        {"done", "several audiences",
         [](Behavior& behavior) {
             behavior.claims = [](Json& said) {
                 said["aud"] = {"velmora", "other"};
                 said["azp"] = "velmora";
             };
         }},
        {"signature", "no signature", signs("none")},
        {"signature", "signed with the public key as a secret", signs("HS256")},
        {"signature", "signed by somebody else",
         [](Behavior& behavior) {
             behavior.identityToken = [](std::string token) {
                 token[token.rfind('.') + 3] = token[token.rfind('.') + 3] == 'A' ? 'B' : 'A';
                 return token;
             };
         }},
        {"signature", "unknown key",
         [](Behavior& behavior) { behavior.header = [](Json& said) { said["kid"] = "nobody's"; }; }},
        {"signature", "the key is for something else",
         [](Behavior& behavior) {
             behavior.keys = [](Json& said) {
                 for (auto& key : said["keys"]) key["use"] = "enc";
             };
         }},
        {"invalid", "iss", claim("iss", "https://other.example")},
        {"invalid", "aud", claim("aud", "other")},
        {"invalid", "azp", claim("azp", "other")},
        {"invalid", "nonce", claim("nonce", "other")},
        {"invalid", "no nonce", claim("nonce", nullptr)},
        {"invalid", "expired", claim("exp", now - 600)},
        {"invalid", "of the future", claim("iat", now + 600)},
        {"invalid", "sub empty", claim("sub", "")},
        {"invalid", "sub no text", claim("sub", 7)},
        {"invalid", "at_hash", claim("at_hash", "AAAAAAAAAAAAAAAAAAAAAA")},
        {"invalid", "no identity token",
         [](Behavior& behavior) { behavior.tokens = [](Json& said) { said.erase("id_token"); }; }},
        {"invalid", "tokens in the clear", announces("token_endpoint", "http://id.example/token")},
        {"invalid", "a page that is no web page", announces("authorization_endpoint", "file:///etc/passwd")},
        {"unreachable", "a captive portal", answering(discovery, portal)},
        {"unreachable", "a captive portal later on", answering("/token", portal)},
        {"invalid", "discovery is elsewhere",
         answering(discovery, {.status = 302, .headers = {"Location: /other"}})},
        {"invalid", "tokens are elsewhere",
         answering("/token", {.status = 307, .headers = {"Location: /token2"}})},
        {"invalid", "no such place", answering(discovery, {.status = 404})},
        {"invalid", "huge", answering("/token", {.body = std::string(3'000'000, ' ')})},
        {"invalid", "deep", answering("/keys", {.body = std::string(200'000, '[')})},
        {"unreachable", "truncated",
         answering("/token", {.body = "{\"access_token\": 1}", .manner = Manner::truncated})},
        {"unreachable", "hangs up", answering("/keys", {.manner = Manner::reset})},
        {"invalid", "endless headers", answering("/token", {.manner = Manner::endlessHeaders})},
        {"invalid", "endless body", answering("/userinfo", {.manner = Manner::endlessBody})},
        {"unreachable", "in trouble", answering("/token", json(503, "temporarily_unavailable"))},
        {"unreachable", "too much asked", answering("/userinfo", {.status = 429})},
        {"refused", "does not know the code", answering("/token", json(400, "invalid_grant"))},
        {"client", "does not know the client", answering("/token", json(401, "invalid_client"))},
        {"client", "does not let the client in", answering("/token", json(400, "unauthorized_client"))},
    };
    for (const auto& row : rows) {
        renew(row.change);
        const auto result = signIn();
        EXPECT_EQ(outcome(result), row.fault) << row.name;
        const bool isIn = row.fault == "done";
        EXPECT_THAT(shown(), AnyOf("", HasSubstr(isIn ? "In." : "Failed."))) << row.name;
        if (isIn) continue;
        const auto& detail = std::get<IdentityProblem>(result).detail;
        EXPECT_THAT(detail, AllOf(testing::EndsWith("."), Not(HasSubstr("\n")), Not(HasSubstr("\x1b"))))
            << row.name;
        for (const auto& hidden : provider.secrets()) EXPECT_THAT(detail, Not(HasSubstr(hidden)));
    }
    // What it gave nevertheless is given back.
    const auto before = provider.validRefreshTokens();
    renew([](Behavior& behavior) { behavior.userinfo = [](Json& said) { said["sub"] = "other"; }; });
    EXPECT_EQ(outcome(signIn()), "invalid");
    EXPECT_EQ(provider.validRefreshTokens(), before);
    // Who is known to lie gets no visitors.
    for (const auto& lie : {announces("issuer", "https://other.example"),
                            announces("code_challenge_methods_supported", Json{"plain"})}) {
        renew(lie);
        authorization.clear();
        EXPECT_EQ(outcome(signIn()), "invalid");
        EXPECT_EQ(authorization, "");
    }
}

TEST_F(OpenIDClientTest, LooksOnceForANewKeyAndAllowsForClocks)
{
    // The old keys are shown once more after the change.
    auto shown = std::make_shared<int>(0);
    provider.change([shown](Behavior& behavior) {
        behavior.keys = [shown](Json& said) {
            if ((*shown)++ == 0) said["keys"] = Json::array();
        };
    });
    EXPECT_EQ(outcome(signIn()), "done");
    EXPECT_EQ(*shown, 2);
    renew([](Behavior& behavior) { behavior.header = [](Json& said) { said["kid"] = "unknown"; }; });
    const auto before = provider.count("/keys");
    EXPECT_EQ(outcome(signIn()), "signature");
    EXPECT_EQ(provider.count("/keys"), before + 2);

    renew([](Behavior&) {});
    for (const auto& [error, expected] :
         {std::pair(-100., "done"), {100., "done"}, {-200., "invalid"}, {1000., "invalid"}}) {
        clockError = error;
        EXPECT_EQ(outcome(signIn()), expected) << error;
    }
}

TEST_F(OpenIDClientTest, BelievesTheBrowserOnlyWhatTheProviderCanHaveSaid)
{
    struct Row {
        std::string fault;
        std::string shown;
        std::string was, is; ///< within the redirect
        std::string refusal{};
    };
    const auto issuer = percentEncoded(provider.issuer());
    const std::vector<Row> rows{
        {"invalid", "Failed.", "&iss=" + issuer, ""}, // announced
        {"invalid", "Failed.", "&iss=" + issuer, "&iss=https%3A%2F%2Fother.example"},
        {"invalid", "Failed.", "?code=", "?other="},
        {"refused", "Failed.", "?code=", "?code=x"},
        {"canceled", "Not in.", "", "", "access_denied"},
        {"canceled", "Not in.", "&iss=" + issuer, "", "access_denied"},
        {"invalid", "Failed.", "&iss=" + issuer, "&iss=other", "access_denied"},
        {"client", "Failed.", "", "", "unauthorized_client"},
        {"unreachable", "Failed.", "", "", "temporarily_unavailable"},
        {"refused", "Failed.", "", "", "login_required"},
    };
    for (const auto& row : rows) {
        provider.change([&row](Behavior& behavior) { behavior.refusal = row.refusal; });
        browse = [&row](const std::string& redirect) { return visited(replaced(redirect, row.was, row.is)); };
        EXPECT_EQ(outcome(signIn()), row.fault) << row.was << " " << row.is << row.refusal;
        EXPECT_THAT(page.get(), HasSubstr(row.shown)) << row.was << " " << row.is << row.refusal;
    }
}

TEST_F(OpenIDClientTest, ARedirectCountsOnceAndForItsOwnSignIn)
{
    std::string earlier;
    browse = [&earlier](const std::string& redirect) { return visited(earlier = redirect); };
    ASSERT_EQ(outcome(signIn()), "done");
    EXPECT_FALSE(LoopbackConnection(portOf(earlier)).isConnected); // there is nobody to replay it to

    browse = [&earlier](const std::string& redirect) {
        const auto here = redirect.substr(0, redirect.find('?'));
        EXPECT_THAT(visited(here + earlier.substr(earlier.find('?'))), HasSubstr("400 Bad Request"));
        EXPECT_THAT(visited(here + "?code=stolen&state=AAAA"), HasSubstr("400 Bad Request"));
        return visited(redirect);
    };
    EXPECT_EQ(outcome(signIn()), "done");
}

TEST_F(OpenIDClientTest, WaitsForNobodyLongerThanSaid)
{
    const auto toSilence = [this](const std::string& path, const SessionPatience& short_) {
        renew(answering(path, {.manner = Manner::silent}));
        patience = short_;
        EXPECT_EQ(outcome(signIn()), "unreachable") << path;
    };
    toSilence("/.well-known/openid-configuration", {.before = 100ms});
    for (const auto* path : {"/token", "/keys", "/userinfo"}) toSilence(path, {.after = 100ms});
    patience = {.refresh = 100ms, .revocation = 100ms};
    renew(answering("/token", {.body = std::string(5000, ' '), .manner = Manner::slow}));
    EXPECT_EQ(outcome(refresh("a token")), "unreachable");
    renew(answering("/revoke", {.manner = Manner::silent}));
    session()->revoke("a token");

    patience = {.after = 0ms};
    renew([](Behavior&) {});
    EXPECT_EQ(outcome(signIn()), "unreachable");
    patience = {.browser = 2s};
    std::optional<LoopbackConnection> stray; // there before anybody waits for it
    const auto result = session()->signIn([this, &stray](const std::string& url) {
        stray.emplace(portOf(provider.redirectFor(url))).say("GET /callback HTTP/1.1\r\n\r\n");
        return true;
    });
    EXPECT_EQ(outcome(result), "expired");
    EXPECT_THAT(std::get<IdentityProblem>(result).detail,
                HasSubstr("redirects of other sign-ins refused: 1"));

    EXPECT_EQ(outcome(session()->signIn([](const std::string&) { return false; })), "noBrowser");
    provider.goDown();
    EXPECT_EQ(outcome(signIn()), "unreachable");
}

TEST_F(OpenIDClientTest, ARefreshTellsWhatHasBecomeOfTheSignIn)
{
    const auto announcesNoUserinfo = [](Json& said) { said.erase("userinfo_endpoint"); };
    const auto namesNobody = [](Json& said) { said.erase("id_token"); };
    const Change goesOn = [](Behavior&) {};
    struct Row {
        std::string outcome;
        std::size_t kept; ///< new tokens
        std::string name;
        Change change;
    };
    const std::vector<Row> rows{
        {"done", 1, "rotating", goesOn},
        {"done", 0, "not rotating", [](Behavior& behavior) { behavior.rotates = false; }},
        {"done", 1, "by the page", [=](Behavior& behavior) { behavior.tokens = namesNobody; }},
        {"revoked", 0, "withdrawn", answering("/token", json(400, "invalid_grant"))},
        {"refused", 0, "not as the standard has it", answering("/token", json(401, "invalid_grant"))},
        {"unreachable", 0, "in trouble", answering("/token", json(500, "invalid_grant"))},
        {"unreachable", 0, "too much asked", answering("/token", json(429, "invalid_grant"))},
        {"client", 0, "a slip", answering("/token", json(401, "invalid_client"))},
        {"client", 0, "another slip", answering("/token", json(400, "unauthorized_client"))},
        {"refused", 0, "scope", answering("/token", json(400, "invalid_scope"))},
        {"unreachable", 0, "captive portal", answering("/token", {.body = "\n<html>"})},
        {"invalid", 0, "no answer of its", answering("/token", {.status = 403, .body = "Forbidden"})},
        {"signature", 1, "forged", [](Behavior& behavior) { behavior.algorithm = "none"; }},
        {"unreachable", 1, "half down", answering("/keys", {.status = 502})},
        {"invalid", 1, "no access token",
         [](Behavior& behavior) { behavior.tokens = [](Json& said) { said.erase("access_token"); }; }},
        {"invalid", 1, "names nobody",
         [=](Behavior& behavior) {
             behavior.tokens = namesNobody;
             behavior.discovery = announcesNoUserinfo;
         }},
    };
    for (const auto& row : rows) {
        renew(goesOn);
        const auto token = freshToken();
        renew(row.change);
        kept.clear();
        const auto result = refresh(token);
        EXPECT_EQ(outcome(result), row.outcome) << row.name;
        EXPECT_EQ(kept.size(), row.kept) << row.name;
        EXPECT_THAT(result, AnyOf(VariantWith<IdentityProblem>(_),
                                  VariantWith<std::string>("user-0001-of-the-provider")));
    }
}

TEST_F(OpenIDClientTest, ANewTokenIsKeptBeforeAnythingElse)
{
    const auto token = freshToken();
    provider.change([](Behavior& behavior) { behavior.subject = "another"; });
    const auto keysAsked = provider.count("/keys");
    const auto result = session()->refresh(token, [&](const std::string& fresh) {
        kept.push_back(fresh);
        EXPECT_EQ(provider.count("/keys"), keysAsked);
    });
    ASSERT_EQ(outcome(result), "done");
    EXPECT_EQ(std::get<std::string>(result), "another");
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(outcome(refresh(kept.back())), "done");
    // The first one again, which is void by now and ends all that came of it.
    EXPECT_EQ(outcome(refresh(token)), "revoked");
    EXPECT_EQ(outcome(refresh(kept.back())), "revoked");

    const auto last = freshToken();
    provider.takeRequests();
    session()->revoke(last);
    EXPECT_THAT(asked("/revoke").parameters,
                AllOf(Contains(Pair("token", last)), Contains(Pair("client_id", "velmora"))));
    EXPECT_EQ(outcome(refresh(last)), "revoked");
    provider.change([](Behavior& behavior) {
        behavior.discovery = [](Json& said) { said.erase("revocation_endpoint"); };
    });
    session()->revoke(last);
    EXPECT_EQ(provider.count("/revoke"), 1U);
}

TEST_F(OpenIDClientTest, CancelEndsEachPhaseAndAllThatFollows)
{
    using Work = std::function<std::string(OpenIDClient&)>;
    const Work signingIn = [this](OpenIDClient& client) { return outcome(signIn(client)); };
    const Work refreshing = [](OpenIDClient& client) {
        return outcome(client.refresh("a token", [](const std::string&) {}));
    };
    const Work revoking = [](OpenIDClient& client) {
        client.revoke("a token");
        return std::string("canceled");
    };
    const std::string discovery = "/.well-known/openid-configuration";
    const std::vector<std::pair<std::string, Work>> phases{
        {discovery, signingIn},  {"/token", signingIn},  {"/keys", signingIn},  {"/userinfo", signingIn},
        {discovery, refreshing}, {"/token", refreshing}, {"/revoke", revoking}, {"browser", signingIn}};
    for (const auto& [path, work] : phases) {
        renew(answering(path, {.manner = Manner::silent}));
        std::atomic<bool> isInBrowser = false;
        std::promise<void> end;
        if (path == "browser")
            browse = [&](const std::string&) {
                isInBrowser = true;
                end.get_future().wait();
                return std::string("Not in.");
            };
        const auto client = session();
        const auto before = provider.count(path);
        auto result = std::async(std::launch::async, work, std::ref(*client));
        while (provider.count(path) == before && !isInBrowser) std::this_thread::sleep_for(1ms);
        client->cancel();
        EXPECT_EQ(result.get(), "canceled") << path;
        end.set_value();
        EXPECT_THAT(shown(), AnyOf("", HasSubstr("Not in."))) << path;
        EXPECT_EQ(outcome(signIn(*client)), "canceled");
        EXPECT_EQ(provider.count(path), before + (path == "browser" ? 0 : 1)) << path;
    }
}

} // namespace
} // namespace velmora::openid
