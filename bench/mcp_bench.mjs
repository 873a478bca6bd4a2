// Start-up to the initialize reply, and the round trip of a ping request, for zelmor-mcp and
// for a minimal server on the official SDK, side by side.
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

async function measure(command, args) {
  const startups = [];
  for (let i = 0; i < starts; i++) {
    const start = process.hrtime.bigint();
    const { child, request } = open(command, args);
    await request("initialize", initialize);
    startups.push(ms(start));
    child.stdin.end();
    await new Promise((resolve) => child.on("exit", resolve));
  }
  const { child, request } = open(command, args);
  await request("initialize", initialize);
  const trips = [];
  for (let i = 0; i < pings; i++) {
    const start = process.hrtime.bigint();
    await request("ping");
    trips.push(ms(start));
  }
  child.stdin.end();
  return { startup: median(startups), ping: median(trips) };
}

const sdkServer = join(dirname(fileURLToPath(import.meta.url)), "mcp_sdk_server.mjs");
const ours = await measure(zelmorMcp, []);
const sdk = await measure(process.execPath, [sdkServer]);
rmSync(home, { recursive: true, force: true });
console.log(`medians: ${starts} starts, ${pings} pings (ms)`);
console.log(`${"server".padEnd(24)}${"start to initialize".padStart(22)}${"ping round trip".padStart(18)}`);
for (const [name, r] of [["zelmor-mcp", ours], ["official SDK, minimal", sdk]])
  console.log(`${name.padEnd(24)}${r.startup.toFixed(1).padStart(22)}${r.ping.toFixed(3).padStart(18)}`);
