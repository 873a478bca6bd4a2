// Drives the real zelmor-mcp with the official client of the stateless protocol revision in
// its pinned, auto and legacy modes, on a 3840x2160 X server of its own.
//   node sdk_v2_client.mjs <path to zelmor-mcp>
import { Client } from "@modelcontextprotocol/client";
import { StdioClientTransport } from "@modelcontextprotocol/client/stdio";
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const home = mkdtempSync(join(tmpdir(), "zelmor-mcp-v2-")); // never the user's real files
const xvfb = spawn("Xvfb", ["-displayfd", "3", "-screen", "0", "3840x2160x24", "-nolisten", "tcp", "-noreset"],
  { stdio: ["ignore", "ignore", "inherit", "pipe"] });
const display = `:${(await once(xvfb.stdio[3], "data"))[0].toString().trim()}`;
const env = { HOME: home, XDG_CONFIG_HOME: join(home, "c"), XDG_DATA_HOME: join(home, "d"),
  XDG_CACHE_HOME: join(home, "k"), PATH: process.env.PATH, DISPLAY: display };

let failures = 0;
async function check(name, mode, body) {
  let stderr = "";
  const transport = new StdioClientTransport({ command: process.argv[2], args: [], env, stderr: "pipe" });
  transport.stderr.on("data", (chunk) => { stderr += chunk; });
  const client = new Client({ name: "zelmor-v2", version: "1.0.0" }, { versionNegotiation: { mode } });
  try {
    await client.connect(transport);
    await body(client, (name, args = {}) => client.callTool({ name, arguments: args }));
    console.log(`ok - ${name}`);
  } catch (error) {
    failures++;
    console.log(`not ok - ${name}\n${error.stack}\n--- server stderr ---\n${stderr}`);
  } finally {
    await client.close();
  }
}

const pinned = { pin: "2026-07-28" };
const data = (result) => JSON.parse(result.content[1].text);
function picture(result) { // the size in the PNG header of the image block
  const png = Buffer.from(result.content.find((b) => b.mimeType === "image/png").data, "base64");
  return { width: png.readUInt32BE(16), height: png.readUInt32BE(20) };
}

let names;
await check("legacy mode keeps the handshake", "legacy", async (client) => {
  assert.match(client.getNegotiatedProtocolVersion(), /^2025-/);
  names = (await client.listTools()).tools.map((t) => t.name);
});
await check("auto mode chooses the stateless era", "auto", async (client) =>
  assert.equal(client.getNegotiatedProtocolVersion(), "2026-07-28"));

await check("pinned: tools, ping, a region and the screen with their pictures", pinned, async (client, call) => {
  assert.equal(client.getServerVersion()?.name, "zelmor");
  const listed = (await client.listTools()).tools.map((t) => t.name);
  assert.deepEqual([listed.length, listed], [32, names]);
  assert.equal((await call("ping")).content[0].text, "pong");
  const region = await call("capture_region", { x: 100, y: 50, w: 300, h: 200 });
  assert.deepEqual([picture(region).width, picture(region).height, data(region).imageScale], [300, 200, 1]);
  // The whole 4K screen, made smaller for a model, aspect kept.
  const full = await call("capture_fullscreen");
  assert.deepEqual([data(full).width, data(full).height, picture(full).width, picture(full).height],
    [3840, 2160, 1568, 882]);
  assert.ok(Math.abs(data(full).imageScale - 1568 / 3840) < 1e-6);
});

xvfb.kill();
rmSync(home, { recursive: true, force: true });
process.exit(failures === 0 ? 0 : 1);
