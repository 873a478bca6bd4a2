// Connect time, spawn to the first tools/list result, in the handshake era (initialize first)
// and in the stateless one (server/discover first, as a pinned client does), and the round trip
// of a ping request, for zelmor-mcp and for a minimal server on the official SDK, side by side.
// The SDK's stdio server speaks the handshake era only.
//   node bench/mcp_bench.mjs build/bin/zelmor-mcp [starts] [pings]
import { spawn } from "node:child_process";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

const [zelmorMcp, startsArg, pingsArg] = process.argv.slice(2);
const starts = Number(startsArg ?? 7);
const pings = Number(pingsArg ?? 200);
const home = mkdtempSync(join(tmpdir(), "zelmor-mcp-bench-"));
const env = { ...process.env, HOME: home, XDG_CONFIG_HOME: join(home, "c"), XDG_DATA_HOME: join(home, "d") };

// One JSON-RPC connection over a child's stdio, one line per message.
function open(command, args) {
  const child = spawn(command, args, { env, stdio: ["pipe", "pipe", "ignore"] });
  let buffer = "";
  const waiting = new Map();
  child.stdout.on("data", (chunk) => {
    buffer += chunk;
    for (let nl; (nl = buffer.indexOf("\n")) >= 0; buffer = buffer.slice(nl + 1)) {
      const message = JSON.parse(buffer.slice(0, nl));
      waiting.get(message.id)?.(message);
      waiting.delete(message.id);
    }
  });
  let nextId = 1;
  const request = (method, params) =>
    new Promise((resolve) => {
      const id = nextId++;
      waiting.set(id, resolve);
      child.stdin.write(JSON.stringify({ jsonrpc: "2.0", id, method, ...(params ? { params } : {}) }) + "\n");
    });
  return { child, request };
}

const median = (values) => [...values].sort((a, b) => a - b)[Math.floor(values.length / 2)];
const ms = (start) => Number(process.hrtime.bigint() - start) / 1e6;
const initialize = { protocolVersion: "2025-06-18", capabilities: {}, clientInfo: { name: "bench", version: "1" } };
const stateless = {
  _meta: {
    "io.modelcontextprotocol/protocolVersion": "2026-07-28",
    "io.modelcontextprotocol/clientCapabilities": {},
    "io.modelcontextprotocol/clientInfo": { name: "bench", version: "1" },
  },
};

const connects = {
  async handshake(connection) {
    await connection.request("initialize", initialize);
    connection.child.stdin.write(JSON.stringify({ jsonrpc: "2.0", method: "notifications/initialized" }) + "\n");
    return connection.request("tools/list");
  },
  async stateless(connection) {
    await connection.request("server/discover", stateless);
    return connection.request("tools/list", stateless);
  },
};

async function connectTime(command, args, connect) {
  const times = [];
  for (let i = 0; i < starts; i++) {
    const start = process.hrtime.bigint();
    const connection = open(command, args);
    const listed = await connect(connection);
    if (!listed.result?.tools) throw new Error(`no tool list: ${JSON.stringify(listed)}`);
    times.push(ms(start));
    connection.child.stdin.end();
    await new Promise((resolve) => connection.child.on("exit", resolve));
  }
  return median(times);
}

async function pingTrip(command, args) {
  const connection = open(command, args);
  await connects.handshake(connection);
  const trips = [];
  for (let i = 0; i < pings; i++) {
    const start = process.hrtime.bigint();
    await connection.request("ping");
    trips.push(ms(start));
  }
  connection.child.stdin.end();
  return median(trips);
}

const sdkServer = join(dirname(fileURLToPath(import.meta.url)), "mcp_sdk_server.mjs");
const ours = {
  handshake: await connectTime(zelmorMcp, [], connects.handshake),
  stateless: await connectTime(zelmorMcp, [], connects.stateless),
  ping: await pingTrip(zelmorMcp, []),
};
const sdk = {
  handshake: await connectTime(process.execPath, [sdkServer], connects.handshake),
  ping: await pingTrip(process.execPath, [sdkServer]),
};
rmSync(home, { recursive: true, force: true });
const cell = (value, digits, width) => (value === undefined ? "-" : value.toFixed(digits)).padStart(width);
console.log(`medians: ${starts} connects, ${pings} pings (ms)`);
console.log(`${"server".padEnd(24)}${"handshake connect".padStart(20)}${"stateless connect".padStart(20)}${"ping round trip".padStart(18)}`);
for (const [name, r] of [["zelmor-mcp", ours], ["official SDK, minimal", sdk]])
  console.log(`${name.padEnd(24)}${cell(r.handshake, 1, 20)}${cell(r.stateless, 1, 20)}${cell(r.ping, 3, 18)}`);
console.log(`zelmor-mcp against the SDK's connect: ${(sdk.handshake / ours.handshake).toFixed(1)}x (handshake), ` +
  `${(sdk.handshake / ours.stateless).toFixed(1)}x (stateless); the goal is at least 5x`);
