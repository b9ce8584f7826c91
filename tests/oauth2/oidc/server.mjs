// An OAuth server on a loopback port, for one public client that is installed on this computer. Its pages are the
// library's own, in which any name and password will do.
//
//   node server.mjs NODE_MODULES
//
// Prints "ready PORT" on standard output, and ends with its standard input.
import { createServer } from 'node:http';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const library = join(process.argv[2], 'oidc-provider', 'lib', 'index.js');
const { default: Provider } = await import(pathToFileURL(library));

const server = createServer();
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
const { port } = server.address();

const provider = new Provider(`http://127.0.0.1:${port}`, {
  clients: [{
    client_id: 'installed-program',
    application_type: 'native',
    token_endpoint_auth_method: 'none',
    redirect_uris: ['http://127.0.0.1'],
    response_types: ['code'],
    grant_types: ['authorization_code', 'refresh_token'],
  }],
  pkce: { required: () => true, methods: ['S256'] },
  scopes: ['openid', 'email'],
  claims: { openid: ['sub'], email: ['email', 'email_verified'] },
  findAccount: async (context, id) => ({
    accountId: id,
    claims: async () => ({ sub: id, email: `${id}@example.com`, email_verified: true }),
  }),
  issueRefreshToken: async () => true,
  cookies: { keys: ['of a test'] },
});

server.on('request', provider.callback());
process.stdin.on('end', () => process.exit(0)).resume();
console.log(`ready ${port}`);
