// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

// An OpenID provider on the loopback with one client, for ./run --account and for tests. Whoever types a name
// into its form is that person, whatever the password. It prints its address once it answers, and forgets all when it ends.
//   node provider.js MODULES [PORT [CLIENT [SECRET]]]
// MODULES: the folder in which npm has installed its packages. A client with a secret has to prove that it knows it.
// What an administrator would do there is asked for by POST:
//   /control/revoke/USER       withdraws all that the user has consented to
//   /control/delete/USER       there is no such account any more
//   /control/lifetime/SECONDS  for which a refresh token that is given from now on can be used

import { generateKeyPairSync, randomBytes } from 'node:crypto';
import { createServer } from 'node:http';
import { createRequire } from 'node:module';
import { join, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';

const [modules, port = '0', client = 'velmora', secret] = process.argv.slice(2);
if (modules === undefined || !/^[0-9]{1,5}$/.test(port)) {
    console.error('usage: provider.js MODULES [PORT [CLIENT [SECRET]]]');
    process.exit(2);
}
const found = createRequire(join(resolve(modules), 'package.json')).resolve('oidc-provider');
const { default: Provider } = await import(pathToFileURL(found));

const lifetime = { seconds: 14 * 24 * 3600 };
const deleted = new Set();
const grants = new Map(); // what each user has consented to, by identifiers

/// The person of that name: "ada" is "Ada Example".
function account(id) {
    const name = id.charAt(0).toUpperCase() + id.slice(1);
    return {
        accountId: id,
        claims: () => ({
            sub: id, name: `${name} Example`, given_name: name, family_name: 'Example', email: `${id}@example.org`, email_verified: true,
        }),
    };
}

function configuration() {
    const { privateKey } = generateKeyPairSync('rsa', { modulusLength: 2048 });
    return {
        clients: [{
            client_id: client, client_name: 'Velmora', application_type: 'native',
            token_endpoint_auth_method: secret ? 'client_secret_basic' : 'none', client_secret: secret,
            redirect_uris: ['http://127.0.0.1/callback'], grant_types: ['authorization_code', 'refresh_token'], response_types: ['code'],
        }],
        claims: { openid: ['sub'], profile: ['name', 'given_name', 'family_name'], email: ['email', 'email_verified'] },
        cookies: { keys: [randomBytes(32).toString('hex')] },
        features: { devInteractions: { enabled: true }, introspection: { enabled: true }, revocation: { enabled: true } },
        findAccount: (_, id) => (deleted.has(id) ? undefined : account(id)),
        jwks: { keys: [{ ...privateKey.export({ format: 'jwk' }), alg: 'RS256', use: 'sig', kid: randomBytes(8).toString('hex') }] },
        pkce: { required: () => true },
        ttl: {
            AccessToken: 600, AuthorizationCode: 60, Grant: lifetime.seconds, IdToken: 600, Interaction: 600, Session: 3600,
            RefreshToken: () => lifetime.seconds,
        },
    };
}

async function withdraw(provider, user) {
    for (const id of grants.get(user) ?? []) {
        await provider.RefreshToken.revokeByGrantId(id);
        await (await provider.Grant.find(id))?.destroy();
    }
    grants.delete(user);
}

/// Does what is asked for; false where that is not understood.
async function control(provider, what, argument) {
    switch (what) {
        case 'revoke': await withdraw(provider, argument); return true;
        case 'delete': deleted.add(argument); return true;
        case 'lifetime': lifetime.seconds = Number(argument); return lifetime.seconds > 0;
        default: return false;
    }
}

/// For this host alone: a page in a browser could lead other names here.
function handler(provider, host) {
    const answer = provider.callback();
    return async (request, response) => {
        if (request.headers.host !== host) return response.writeHead(421).end();
        const [, what, argument] = /^\/control\/([a-z]+)\/([\w.-]+)$/.exec(request.url) ?? [];
        if (what === undefined) return answer(request, response);
        const isDone = request.method === 'POST' && await control(provider, what, argument);
        return response.writeHead(isDone ? 204 : 400).end();
    };
}

const server = createServer();
server.listen(Number(port), '127.0.0.1', () => {
    const host = `127.0.0.1:${server.address().port}`;
    const provider = new Provider(`http://${host}`, configuration());
    provider.on('grant.success', ({ oidc: { account: { accountId }, entities: { Grant } } }) => {
        grants.set(accountId, (grants.get(accountId) ?? new Set()).add(Grant.jti));
    });
    server.on('request', handler(provider, host));
    console.log(`http://${host}`);
});
server.on('error', ({ message }) => {
    console.error(message);
    process.exit(1);
});
