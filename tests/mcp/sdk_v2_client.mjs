// Drives the real zelmor-mcp with the official client of the stateless protocol revision in
// its pinned, auto and legacy modes, on a 3840x2160 screen of its own.
//   node sdk_v2_client.mjs <path to zelmor-mcp>
import { Client } from "@modelcontextprotocol/client";
import { StdioClientTransport } from "@modelcontextprotocol/client/stdio";
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const server = process.argv[2];
if (!server) {
  console.error("usage: node sdk_v2_client.mjs <path to zelmor-mcp>");
  process.exit(2);
}

// The server never sees the user's real files.
const home = mkdtempSync(join(tmpdir(), "zelmor-mcp-v2-"));
const children = [];
const quit = (code) => {
  for (const child of children) child.kill();
  rmSync(home, { recursive: true, force: true });
  process.exit(code);
};

async function startScreen() {
  const xvfb = spawn("Xvfb", ["-displayfd", "3", "-screen", "0", "3840x2160x24", "-nolisten", "tcp", "-noreset"],
    { stdio: ["ignore", "ignore", "inherit", "pipe"] });
  children.push(xvfb);
  const [number] = await once(xvfb.stdio[3], "data");
  return `:${number.toString().trim()}`;
}

// Noise compresses worst: the largest picture of that screen a client can be sent.
function showNoise(display) {
  const noise = "nullsrc=s=3840x2160:r=1,geq=lum=random(1)*255:cb=random(2)*255:cr=random(3)*255," +
    "format=yuv420p,loop=loop=-1:size=1";
  children.push(spawn("ffmpeg", ["-loglevel", "error", "-re", "-f", "lavfi", "-i", noise,
    "-f", "sdl2", "-window_fullscreen", "1", "noise"], { env: { ...process.env, DISPLAY: display }, stdio: "ignore" }));
}

const display = await startScreen();
const env = { HOME: home, XDG_CONFIG_HOME: join(home, "config"), XDG_DATA_HOME: join(home, "data"),
  XDG_CACHE_HOME: join(home, "cache"), PATH: process.env.PATH, DISPLAY: display };

let failures = 0;
async function check(name, mode, body) {
  let stderr = "";
  const transport = new StdioClientTransport({ command: server, args: [], env, stderr: "pipe" });
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
function picture(result) {
  const block = result.content.find((b) => b.type === "image");
  assert.ok(block, "an image block");
  assert.equal(block.mimeType, "image/png");
  const png = Buffer.from(block.data, "base64");
  assert.equal(png.subarray(1, 4).toString(), "PNG");
  return { width: png.readUInt32BE(16), height: png.readUInt32BE(20), bytes: png.length };
}

let handshakeNames;
await check("legacy mode: the handshake era", "legacy", async (client) => {
  assert.match(client.getNegotiatedProtocolVersion(), /^2025-/);
  handshakeNames = (await client.listTools()).tools.map((t) => t.name);
  assert.equal(handshakeNames.length, 32);
});

await check("auto mode chooses the stateless era", "auto", async (client) => {
  assert.equal(client.getNegotiatedProtocolVersion(), "2026-07-28");
});

await check("pinned: tools, ping and a region with its picture", pinned, async (client, call) => {
  assert.equal(client.getNegotiatedProtocolVersion(), "2026-07-28");
  assert.equal(client.getServerVersion()?.name, "zelmor");
  assert.deepEqual((await client.listTools()).tools.map((t) => t.name), handshakeNames);
  assert.equal((await call("ping")).content[0].text, "pong");
  const region = await call("capture_region", { x: 100, y: 50, w: 300, h: 200 });
  assert.deepEqual(picture(region), { ...picture(region), width: 300, height: 200 });
  assert.equal(data(region).imageScale, 1);
});

await check("a 3840x2160 capture fits a client's line", pinned, async (_, call) => {
  showNoise(display);
  let full, shown;
  // The noise is on screen once the picture stops compressing to almost nothing.
  for (const deadline = Date.now() + 60000; Date.now() < deadline;) {
    full = await call("capture_fullscreen");
    shown = picture(full);
    if (shown.bytes > 1024 * 1024) break;
  }
  assert.ok(shown.bytes > 1024 * 1024, `noise on screen (${shown.bytes} bytes)`);
  assert.deepEqual([data(full).width, data(full).height], [3840, 2160]);
  assert.equal(Math.max(shown.width, shown.height) <= 1568, true);
  assert.equal(Math.abs(shown.width / shown.height - 3840 / 2160) < 0.01, true);
  assert.ok(Math.abs(data(full).imageScale - shown.width / 3840) < 1e-3);
  console.log(`# ${JSON.stringify(shown)} ${JSON.stringify(full).length} ${data(full).imageScale}`);
  assert.ok(JSON.stringify(full).length < 10 * 1024 * 1024);
});

quit(failures === 0 ? 0 : 1);
