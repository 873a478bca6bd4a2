// Drives the real zelmor-mcp with the official MCP TypeScript client: handshake, the tool
// list, calls, and a start with no display in the environment.
//   node sdk_client.mjs <path to zelmor-mcp>
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import Ajv from "ajv";
import assert from "node:assert/strict";
import { once } from "node:events";
import { existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { crc32, deflateSync } from "node:zlib";

const server = process.argv[2];
if (!server) {
  console.error("usage: node sdk_client.mjs <path to zelmor-mcp>");
  process.exit(2);
}

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

let listedTools = 0;
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
    listedTools = tools.length;
    assert.ok(listedTools > 0);
    assert.equal(new Set(tools.map((t) => t.name)).size, listedTools, "names are unique");
    const ajv = new Ajv({ strict: true });
    for (const tool of tools) {
      assert.ok(tool.description.length > 0, tool.name);
      assert.equal(tool.inputSchema.type, "object", tool.name);
      assert.ok(ajv.validateSchema(tool.inputSchema), `${tool.name}: ${ajv.errorsText()}`);
      const validate = ajv.compile(tool.inputSchema);
      assert.equal(validate({}), !tool.inputSchema.required, tool.name);
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

// As a client starts it by default: no DISPLAY; even a platform asked for by name is
// replaced by one that needs no screen.
await check("no display", async (stderr) => {
  const client = await connect({ ...sandbox, QT_QPA_PLATFORM: "xcb" }, stderr);
  try {
    const { tools } = await client.listTools();
    assert.equal(tools.length, listedTools);
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
    assert.ok(existsSync(fullData.path));
    assert.deepEqual(historyItems(await call("list_history")).map((i) => [i.path, i.kind, i.width, i.height]),
      [[fullData.path, "image", 1920, 1080]]);

    const bad = await call("capture_region", { x: 0, y: 0, w: 0, h: 10 });
    assert.equal(bad.isError, true);
    assert.equal(firstText(bad), "invalid region");
    const region = toolData(await call("capture_region", { x: 10.9, y: 20, w: 30, h: 40 }));
    assert.deepEqual([region.width, region.height], [30, 40]);
    const active = toolData(await call("screenshot_active_window"));
    assert.ok(active.width > 0 && active.height > 0 && existsSync(active.path));

    const annotated = toolData(await call("annotate_image", {
      image: encodePng(200, 100, () => [255, 255, 255]).toString("base64"), id: 999999,
      annotations: [{ kind: "Arrow", points: [[20, 50], [180, 50]], color: "#0000FF", penWidth: 4 }],
    }));
    assert.deepEqual([annotated.width, annotated.height], [200, 100]);
    assert.ok(Buffer.from(annotated.base64, "base64").subarray(1, 4).toString() === "PNG");
    assert.ok(existsSync(annotated.path));

    const pin = await call("pin_last");
    assert.equal(pin.isError ?? false, false);
    assert.match(firstText(pin), /^Image resolved \(200x100\) but pin window requires/);

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

    const noQuery = await call("search_history", { query: "  " });
    assert.equal(noQuery.isError, true);
    assert.equal(firstText(noQuery), "query required");
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
