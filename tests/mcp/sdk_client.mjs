// Drives the real zelmor-mcp with the official MCP TypeScript client: handshake, the tool
// list, calls, end of input, and a start with no display in the environment.
//   node sdk_client.mjs <path to zelmor-mcp>
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import Ajv from "ajv";
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

const server = process.argv[2];
if (!server) {
  console.error("usage: node sdk_client.mjs <path to zelmor-mcp>");
  process.exit(2);
}

const TOOLS = [
  "ping", "capture_fullscreen", "capture_region", "screenshot_active_window", "launch_app",
  "ocr", "list_history", "search_history", "pin_last", "annotate_image", "mouse_click",
  "mouse_move", "mouse_scroll", "type_text", "send_hotkey", "list_windows", "focus_window",
  "read_clipboard", "write_clipboard", "mouse_drag", "get_active_window_info", "window_action",
  "inspect_ui_element", "find_ui_elements", "click_ui_element", "set_ui_element_text",
  "key_down", "key_up", "paste_text_to_focused", "activate_window_and_paste",
  "open_folder_and_select", "get_file_info",
];
const SCHEMA_LESS = ["ping", "capture_fullscreen", "pin_last", "read_clipboard",
  "get_active_window_info"];

// The server never sees the user's real files.
const home = mkdtempSync(join(tmpdir(), "zelmor-mcp-sdk-"));
const sandbox = {
  HOME: home,
  XDG_CONFIG_HOME: join(home, "config"),
  XDG_DATA_HOME: join(home, "data"),
  XDG_CACHE_HOME: join(home, "cache"),
};

let failures = 0;
async function check(name, body) {
  let stderr = "";
  try {
    await body((text) => { stderr += text; });
    console.log(`ok - ${name}`);
  } catch (error) {
    failures++;
    console.log(`not ok - ${name}\n${error.stack}\n--- server stderr ---\n${stderr}`);
  }
}

async function connect(env, collectStderr) {
  const transport = new StdioClientTransport({ command: server, args: [], env, stderr: "pipe" });
  transport.stderr.on("data", (chunk) => collectStderr(chunk.toString()));
  const client = new Client({ name: "zelmor-e2e", version: "1.0.0" });
  await client.connect(transport);
  return client;
}

function firstText(result) {
  return result.content.find((block) => block.type === "text")?.text;
}

await check("handshake, tool list, calls", async (stderr) => {
  const env = { ...sandbox };
  if (process.env.DISPLAY) env.DISPLAY = process.env.DISPLAY;
  const client = await connect(env, stderr);
  try {
    assert.equal(client.getServerVersion().name, "zelmor");
    assert.ok(client.getServerCapabilities().tools);
    await client.ping();

    const { tools, nextCursor } = await client.listTools();
    assert.equal(nextCursor, undefined);
    assert.deepEqual(tools.map((t) => t.name), TOOLS);
    const ajv = new Ajv({ strict: true });
    for (const tool of tools) {
      assert.ok(tool.description.length > 0, tool.name);
      assert.equal(tool.inputSchema.type, "object", tool.name);
      assert.ok(ajv.validateSchema(tool.inputSchema), `${tool.name}: ${ajv.errorsText()}`);
      const validate = ajv.compile(tool.inputSchema);
      assert.equal(validate({}), !tool.inputSchema.required, tool.name);
    }
    for (const name of SCHEMA_LESS) {
      const schema = tools.find((t) => t.name === name).inputSchema;
      assert.deepEqual(Object.keys(schema.properties ?? {}), [], name);
    }

    const pong = await client.callTool({ name: "ping", arguments: {} });
    assert.equal(pong.isError ?? false, false);
    assert.equal(firstText(pong), "pong");

    const unknown = await client.callTool({ name: "no_such_tool", arguments: { a: 1 } });
    assert.equal(unknown.isError, true);
    assert.equal(firstText(unknown), "unknown tool: no_such_tool");
  } finally {
    await client.close();
  }
});

// Closing stdin alone must end the server: no signal, exit code 0.
await check("end of input ends the process", async (stderr) => {
  const child = spawn(server, [], { env: { ...sandbox, PATH: process.env.PATH } });
  child.stderr.on("data", (chunk) => stderr(chunk.toString()));
  let stdout = "";
  child.stdout.on("data", (chunk) => { stdout += chunk; });
  const initialize = {
    jsonrpc: "2.0", id: 1, method: "initialize",
    params: { protocolVersion: "2025-06-18", capabilities: {}, clientInfo: { name: "raw", version: "1" } },
  };
  child.stdin.write(`${JSON.stringify(initialize)}\n`);
  child.stdin.end();
  const [code, signal] = await once(child, "exit");
  assert.equal(signal, null);
  assert.equal(code, 0);
  if (!child.stdout.readableEnded) await once(child.stdout, "end");
  const lines = stdout.split("\n").filter((line) => line.length > 0);
  assert.equal(lines.length, 1, stdout);
  const reply = JSON.parse(lines[0]);
  assert.equal(reply.id, 1);
  assert.equal(reply.result.protocolVersion, "2025-06-18");
});

// As a client starts it by default: no DISPLAY; even a platform asked for by name is
// replaced by one that needs no screen.
await check("no display", async (stderr) => {
  const client = await connect({ ...sandbox, QT_QPA_PLATFORM: "xcb" }, stderr);
  try {
    const { tools } = await client.listTools();
    assert.equal(tools.length, 32);
    assert.equal(firstText(await client.callTool({ name: "ping", arguments: {} })), "pong");
  } finally {
    await client.close();
  }
});

rmSync(home, { recursive: true, force: true });
process.exit(failures === 0 ? 0 : 1);
