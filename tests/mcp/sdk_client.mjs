// Drives the real zelmor-mcp with the official MCP TypeScript client: handshake, the tool
// list, calls, end of input, and a start with no display in the environment.
//   node sdk_client.mjs <path to zelmor-mcp>
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import Ajv from "ajv";
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { crc32, deflateSync, inflateSync } from "node:zlib";

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

// The UI element tools answer without a display, and without an accessibility bus beside
// one, and the server lives on.
await check("UI element tools without a display or accessibility bus", async (stderr) => {
  const nowhere = "unix:path=/nonexistent/bus";
  const cases = [
    [{ ...sandbox }, /^no display/],
    [{ ...sandbox, DISPLAY: process.env.DISPLAY, XAUTHORITY: process.env.XAUTHORITY ?? "",
      AT_SPI_BUS_ADDRESS: nowhere, DBUS_SESSION_BUS_ADDRESS: nowhere },
    /^failed to initialize UIAutomation$/],
  ];
  for (const [env, message] of cases) {
    const client = await connect(env, stderr);
    try {
      for (const name of ["find_ui_elements", "set_ui_element_text", "inspect_ui_element"]) {
        const result = await client.callTool({ name, arguments: { name: "OK", text: "x" } });
        assert.equal(result.isError, true, name);
        assert.match(firstText(result), message, name);
      }
      assert.equal(firstText(await client.callTool({ name: "ping", arguments: {} })), "pong");
    } finally {
      await client.close();
    }
  }
});

// PNG of 8-bit RGB rows, unfiltered: enough for a source image.
function encodePng(width, height, rgbAt) {
  const chunk = (type, data) => {
    const body = Buffer.concat([Buffer.from(type, "latin1"), data]);
    const out = Buffer.alloc(body.length + 8);
    out.writeUInt32BE(data.length, 0);
    body.copy(out, 4);
    out.writeUInt32BE(crc32(body), body.length + 4);
    return out;
  };
  const header = Buffer.alloc(13);
  header.writeUInt32BE(width, 0);
  header.writeUInt32BE(height, 4);
  header.set([8, 2, 0, 0, 0], 8);
  const raw = Buffer.alloc(height * (1 + width * 3));
  for (let y = 0; y < height; y++)
    for (let x = 0; x < width; x++) raw.set(rgbAt(x, y), y * (1 + width * 3) + 1 + x * 3);
  return Buffer.concat([Buffer.from([137, 80, 78, 71, 13, 10, 26, 10]), chunk("IHDR", header),
    chunk("IDAT", deflateSync(raw)), chunk("IEND", Buffer.alloc(0))]);
}

// Non-interlaced 8-bit RGB or RGBA, all five row filters: what Qt writes.
function decodePng(bytes) {
  let offset = 8, width, height, channels;
  const idat = [];
  while (offset < bytes.length) {
    const length = bytes.readUInt32BE(offset);
    const type = bytes.toString("latin1", offset + 4, offset + 8);
    const data = bytes.subarray(offset + 8, offset + 8 + length);
    if (type === "IHDR") {
      width = data.readUInt32BE(0);
      height = data.readUInt32BE(4);
      assert.equal(data[8], 8, "bit depth");
      assert.equal(data[12], 0, "interlace");
      channels = { 2: 3, 6: 4 }[data[9]];
      assert.ok(channels, `colour type ${data[9]}`);
    } else if (type === "IDAT") idat.push(data);
    offset += length + 12;
  }
  const raw = inflateSync(Buffer.concat(idat));
  const stride = width * channels;
  const pixels = Buffer.alloc(height * stride);
  for (let y = 0; y < height; y++) {
    const filter = raw[y * (stride + 1)];
    for (let i = 0; i < stride; i++) {
      const a = i >= channels ? pixels[y * stride + i - channels] : 0;
      const b = y > 0 ? pixels[(y - 1) * stride + i] : 0;
      const c = y > 0 && i >= channels ? pixels[(y - 1) * stride + i - channels] : 0;
      const paeth = () => {
        const p = a + b - c, pa = Math.abs(p - a), pb = Math.abs(p - b), pc = Math.abs(p - c);
        return pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
      };
      const predictor = [0, a, b, (a + b) >> 1, paeth()][filter];
      pixels[y * stride + i] = (raw[y * (stride + 1) + 1 + i] + predictor) & 0xff;
    }
  }
  return { width, height, rgb: (x, y) => [...pixels.subarray((y * width + x) * channels, (y * width + x) * channels + 3)] };
}

// The OpenAI reply shape on a free local port; every request is kept for the assertions.
async function startAiServer(answer) {
  const requests = [];
  const http = createServer((request, response) => {
    let body = "";
    request.on("data", (chunk) => { body += chunk; });
    request.on("end", () => {
      requests.push({ url: request.url, headers: request.headers, body: JSON.parse(body) });
      response.writeHead(200, { "content-type": "application/json" });
      response.end(JSON.stringify({ choices: [{ message: { role: "assistant", content: answer } }] }));
    });
  });
  http.listen(0, "127.0.0.1");
  await once(http, "listening");
  return { http, requests, url: `http://127.0.0.1:${http.address().port}` };
}

function toolData(result) {
  assert.equal(result.isError ?? false, false, firstText(result));
  return JSON.parse(result.content[1].text);
}

function historyItems(result) {
  assert.equal(result.isError ?? false, false, firstText(result));
  return JSON.parse(firstText(result)).items;
}

await check("capture, annotation, OCR and history tools", async (stderr) => {
  assert.ok(process.env.DISPLAY, "runs in the X test session");
  const root = join(home, "tools");
  const shots = join(root, "shots");
  const ai = await startAiServer("recognised words");
  mkdirSync(join(root, "config", "Zelmor"), { recursive: true });
  writeFileSync(join(root, "config", "Zelmor", "Zelmor.ini"),
    `[%General]\noutputDir=${shots}\n\n[ai]\nprovider=openai\nbaseUrl=${ai.url}\n` +
    "apiKey=test-key\nmodel=test-model\n");
  const env = { HOME: root, XDG_CONFIG_HOME: join(root, "config"),
    XDG_DATA_HOME: join(root, "data"), XDG_CACHE_HOME: join(root, "cache"),
    DISPLAY: process.env.DISPLAY };
  const client = await connect(env, stderr);
  const call = (name, args = {}) => client.callTool({ name, arguments: args });
  try {
    const full = await call("capture_fullscreen");
    const fullData = toolData(full);
    assert.equal(firstText(full), fullData.path);
    assert.equal(dirname(fullData.path), shots);
    assert.deepEqual([fullData.width, fullData.height], [1920, 1080]);
    const saved = decodePng(readFileSync(fullData.path));
    assert.deepEqual([saved.width, saved.height], [1920, 1080]);
    assert.deepEqual(historyItems(await call("list_history")).map((i) => [i.path, i.kind, i.width, i.height]),
      [[fullData.path, "image", 1920, 1080]]);

    const bad = await call("capture_region", { x: 0, y: 0, w: 0, h: 10 });
    assert.equal(bad.isError, true);
    assert.equal(firstText(bad), "invalid region");
    const region = toolData(await call("capture_region", { x: 10.9, y: 20, w: 30, h: 40 }));
    assert.deepEqual([region.width, region.height], [30, 40]);
    assert.ok(existsSync(region.path));
    const active = toolData(await call("screenshot_active_window"));
    assert.ok(active.width > 0 && active.height > 0 && existsSync(active.path));

    // White 200x100; a blue arrow along y = 50 and a green frame in the top left corner.
    const source = encodePng(200, 100, () => [255, 255, 255]);
    const annotated = await call("annotate_image", {
      image: source.toString("base64"), id: 999999,
      annotations: [
        { kind: "Arrow", points: [[20, 50], [180, 50]], color: "#0000FF", penWidth: 4 },
        { kind: "rect", points: [[5, 5], [60, 30]], color: "#00FF00", penWidth: 2 },
      ],
    });
    const annotatedData = toolData(annotated);
    assert.deepEqual([annotatedData.width, annotatedData.height], [200, 100]);
    const image = decodePng(Buffer.from(annotatedData.base64, "base64"));
    assert.deepEqual([image.width, image.height], [200, 100]);
    assert.deepEqual(image.rgb(100, 50), [0, 0, 255], "arrow shaft");
    assert.deepEqual(image.rgb(176, 50), [0, 0, 255], "arrow head");
    assert.deepEqual(image.rgb(172, 47), [0, 0, 255], "arrow head, off the shaft");
    assert.deepEqual(image.rgb(30, 5), [0, 255, 0], "frame");
    assert.deepEqual(image.rgb(100, 80), [255, 255, 255], "untouched");
    assert.deepEqual(decodePng(readFileSync(annotatedData.path)).rgb(100, 50), [0, 0, 255]);

    const pin = await call("pin_last");
    assert.equal(pin.isError ?? false, false);
    assert.equal(firstText(pin), "Image resolved (200x100) but pin window requires the Zelmor " +
      "GUI process to be running. Start zelmor and try again.");
    const noPin = await call("pin_last", { id: 999999 });
    assert.equal(noPin.isError, true);
    assert.equal(firstText(noPin), "no image to pin");

    // A bad path falls back to the latest history image, which goes to the provider.
    const ocr = await call("ocr", { path: join(root, "missing.png") });
    assert.equal(ocr.isError ?? false, false);
    assert.equal(firstText(ocr), "recognised words");
    assert.equal(ai.requests.length, 1);
    const [request] = ai.requests;
    assert.equal(request.url, "/v1/chat/completions");
    assert.equal(request.headers.authorization, "Bearer test-key");
    assert.equal(request.body.model, "test-model");
    assert.match(JSON.stringify(request.body.messages), /data:image\/png;base64,/);

    assert.deepEqual(historyItems(await call("search_history", { query: 'foo"bar' })), []);
    const noQuery = await call("search_history", { query: "  " });
    assert.equal(noQuery.isError, true);
    assert.equal(firstText(noQuery), "query required");

    // Past the upper limit of 200 rows.
    const dot = encodePng(2, 2, () => [0, 0, 0]).toString("base64");
    for (let i = 0; i < 200; i++) toolData(await call("annotate_image", { image: dot, annotations: [] }));
    const all = historyItems(await call("list_history", { limit: 1000 }));
    assert.equal(all.length, 200);
    assert.equal(new Set(all.map((i) => i.id)).size, 200);
    assert.equal(historyItems(await call("list_history", { limit: 0 })).length, 1);
  } finally {
    await client.close();
    ai.http.close();
  }
});

// Started with only HOME, PATH and USER, as clients do: the display the Zelmor window
// recorded in the data folder is the one the capture tools use.
await check("recorded session", async (stderr) => {
  assert.ok(process.env.DISPLAY, "runs in the X test session");
  const root = mkdtempSync(join(tmpdir(), "zelmor-mcp-session-"));
  const data = join(root, ".local", "share", "Zelmor", "Zelmor");
  mkdirSync(data, { recursive: true });
  writeFileSync(join(data, "display-session"), `DISPLAY=${process.env.DISPLAY}\n`);
  const client = await connect({ HOME: root, PATH: process.env.PATH, USER: process.env.USER ?? "root" }, stderr);
  try {
    const full = toolData(await client.callTool({ name: "capture_fullscreen", arguments: {} }));
    assert.equal(full.width, 1920);
    assert.equal(full.height, 1080);
  } finally {
    await client.close();
    rmSync(root, { recursive: true, force: true });
  }
});

// A thousand calls in a row must not make the server grow.
await check("memory stays flat", async (stderr) => {
  // AddressSanitizer keeps freed memory in quarantine, so growth says nothing there.
  if (process.env.ZELMOR_SANITIZED) return;
  const client = await connect({ ...sandbox }, stderr);
  const rss = () => Number(/VmRSS:\s+(\d+)/.exec(readFileSync(`/proc/${client.transport.pid}/status`, "latin1"))[1]);
  try {
    const call = () => client.callTool({ name: "list_history", arguments: { limit: 200 } });
    for (let i = 0; i < 100; i++) await call();
    const settled = rss();
    for (let i = 0; i < 1000; i++) await call();
    const grown = rss() - settled;
    assert.ok(grown < 4096, `grew by ${grown} kB over 1000 calls`);
  } finally {
    await client.close();
  }
});

rmSync(home, { recursive: true, force: true });
process.exit(failures === 0 ? 0 : 1);
