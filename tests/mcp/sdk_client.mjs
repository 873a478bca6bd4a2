// Drives the real zelmor-mcp with the official MCP TypeScript client: handshake, the tool
// list, calls, starts without a display or an accessibility bus, and typing into another
// program's window read back through that program's UI elements.
//   node sdk_client.mjs <path to zelmor-mcp> <path to zelmor-ui-fixture>
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import Ajv from "ajv";
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { createServer } from "node:http";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { setTimeout as sleep } from "node:timers/promises";

const [server, fixturePath] = process.argv.slice(2);
if (!server || !fixturePath) {
  console.error("usage: node sdk_client.mjs <path to zelmor-mcp> <path to zelmor-ui-fixture>");
  process.exit(2);
}

// The server never sees the user's real files.
const home = mkdtempSync(join(tmpdir(), "zelmor-mcp-sdk-"));
const sandboxIn = (root) => ({ HOME: root, XDG_CONFIG_HOME: join(root, "config"),
  XDG_DATA_HOME: join(root, "data"), XDG_CACHE_HOME: join(root, "cache") });
const sandbox = sandboxIn(home);

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

// A connected client, closed after `body` whatever happens.
async function withClient(env, collectStderr, body) {
  const transport = new StdioClientTransport({ command: server, args: [], env, stderr: "pipe" });
  transport.stderr.on("data", (chunk) => collectStderr(chunk.toString()));
  const client = new Client({ name: "zelmor-e2e", version: "1.0.0" });
  await client.connect(transport);
  try {
    await body(client, (name, args = {}) => client.callTool({ name, arguments: args }));
  } finally {
    await client.close();
  }
}

const firstText = (result) => result.content.find((block) => block.type === "text")?.text;

// A tool's fields, which travel as the JSON of the second text block.
function toolData(result) {
  assert.equal(result.isError ?? false, false, firstText(result));
  return JSON.parse(result.content[1].text);
}

await check("handshake, tool list, calls", async (stderr) => {
  await withClient({ ...sandbox, DISPLAY: process.env.DISPLAY ?? "" }, stderr, async (client, call) => {
    assert.equal(client.getServerVersion().name, "zelmor");
    assert.ok(client.getServerCapabilities().tools);
    await client.ping();
    const { tools, nextCursor } = await client.listTools();
    assert.equal(nextCursor, undefined);
    assert.equal(new Set(tools.map((t) => t.name)).size, 32, "32 tools, each its own name");
    const ajv = new Ajv({ strict: true });
    for (const tool of tools) {
      assert.ok(tool.description.length > 0, tool.name);
      assert.equal(tool.inputSchema.type, "object", tool.name);
      assert.ok(ajv.validateSchema(tool.inputSchema), `${tool.name}: ${ajv.errorsText()}`);
      assert.equal(ajv.compile(tool.inputSchema)({}), !tool.inputSchema.required, tool.name);
    }
    const unknown = await call("no_such_tool", { a: 1 });
    assert.equal(unknown.isError, true);
    assert.equal(firstText(unknown), "unknown tool: no_such_tool");
  });
});

// As a client starts it by default, without DISPLAY (and even a platform asked for by name is
// replaced by one that needs no screen), or beside a display without an accessibility bus: the
// UI element tools say why they cannot answer, and the server lives on.
await check("UI element tools without a display or accessibility bus", async (stderr) => {
  const nowhere = "unix:path=/nonexistent/bus";
  const cases = [
    [{ ...sandbox, QT_QPA_PLATFORM: "xcb" }, /^no display/],
    [{ ...sandbox, DISPLAY: process.env.DISPLAY, XAUTHORITY: process.env.XAUTHORITY ?? "",
      AT_SPI_BUS_ADDRESS: nowhere, DBUS_SESSION_BUS_ADDRESS: nowhere },
    /^failed to initialize UIAutomation$/],
  ];
  for (const [env, message] of cases) {
    await withClient(env, stderr, async (client, call) => {
      assert.equal((await client.listTools()).tools.length, 32);
      for (const name of ["find_ui_elements", "set_ui_element_text", "inspect_ui_element"]) {
        const result = await call(name, { name: "OK", text: "x" });
        assert.equal(result.isError, true, name);
        assert.match(firstText(result), message, name);
      }
      assert.equal(firstText(await call("ping")), "pong");
    });
  }
});

// The OpenAI reply shape on a free local port.
async function startAiServer(answer) {
  const http = createServer((request, response) => {
    request.resume().on("end", () => {
      response.writeHead(200, { "content-type": "application/json" });
      response.end(JSON.stringify({ choices: [{ message: { role: "assistant", content: answer } }] }));
    });
  });
  http.listen(0, "127.0.0.1");
  await once(http, "listening");
  return { http, url: `http://127.0.0.1:${http.address().port}` };
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
  try {
    await withClient({ ...sandboxIn(root), DISPLAY: process.env.DISPLAY }, stderr, async (_, call) => {
      const full = await call("capture_fullscreen");
      const fullData = toolData(full);
      assert.equal(firstText(full), fullData.path);
      assert.equal(dirname(fullData.path), shots);
      assert.deepEqual([fullData.width, fullData.height], [1920, 1080]);
      const listed = JSON.parse(firstText(await call("list_history"))).items;
      assert.deepEqual(listed.map((i) => [i.path, i.kind, i.width, i.height]),
        [[fullData.path, "image", 1920, 1080]]);

      const bad = await call("capture_region", { x: 0, y: 0, w: 0, h: 10 });
      assert.equal(bad.isError, true);
      assert.equal(firstText(bad), "invalid region");
      const region = toolData(await call("capture_region", { x: 10.9, y: 20, w: 30, h: 40 }));
      assert.deepEqual([region.width, region.height], [30, 40]);
      const active = toolData(await call("screenshot_active_window"));
      assert.ok(active.width > 0 && active.height > 0 && existsSync(active.path));

      const annotated = toolData(await call("annotate_image", {
        image: readFileSync(region.path).toString("base64"), id: 999999,
        annotations: [{ kind: "Arrow", points: [[2, 5], [28, 35]], color: "#0000FF", penWidth: 4 }],
      }));
      assert.deepEqual([annotated.width, annotated.height], [30, 40]);
      assert.equal(Buffer.from(annotated.base64, "base64").subarray(1, 4).toString(), "PNG");
      assert.ok(existsSync(annotated.path));

      // With no picture given, the latest history image goes to the provider. (A given one,
      // and what the request holds: tst_mcpserver, tst_aiapi.)
      assert.equal(firstText(await call("ocr", {})), "recognised words");

      const noQuery = await call("search_history", { query: "  " });
      assert.equal(noQuery.isError, true);
      assert.equal(firstText(noQuery), "query required");
    });
  } finally {
    ai.http.close();
  }
});

// Started with only HOME, PATH and USER, as clients do: the display the Zelmor window
// recorded in the data folder is the one the capture tools use.
await check("recorded session", async (stderr) => {
  assert.ok(process.env.DISPLAY, "runs in the X test session");
  const root = join(home, "session"), data = join(root, ".local/share/Zelmor/Zelmor");
  mkdirSync(data, { recursive: true });
  writeFileSync(join(data, "display-session"), `DISPLAY=${process.env.DISPLAY}\n`);
  const env = { HOME: root, PATH: process.env.PATH, USER: process.env.USER ?? "root" };
  await withClient(env, stderr, async (_, call) =>
    assert.equal(toolData(await call("capture_fullscreen")).width, 1920));
});

async function until(what, probe) {
  for (let i = 0; i < 200; i++) {
    const value = await probe();
    if (value) return value;
    await sleep(50);
  }
  throw new Error(`timed out waiting for ${what}`);
}

// A program started by launch_app has the null device for standard input: it reads none of
// the requests that follow, and each is answered.
await check("a launched program reads none of the requests", async (stderr) => {
  const bin = join(home, "bin");
  mkdirSync(bin);
  const reader = join(bin, "zelmor-stdin-reader");
  writeFileSync(reader, '#!/bin/sh\ncat > "$0.read"\ntouch "$0.ended"\n', { mode: 0o755 });
  await withClient({ ...sandbox, PATH: `${bin}:${process.env.PATH}` }, stderr, async (client, call) => {
    const launched = await call("launch_app", { target: "zelmor-stdin-reader" });
    assert.equal(launched.isError ?? false, false, firstText(launched));
    for (let i = 0; i < 5; i++) await client.ping({ timeout: 5000 });
    await until("the program's end", async () => existsSync(`${reader}.ended`));
    assert.equal(readFileSync(`${reader}.read`, "utf8"), "");
  });
});

await check("typed into another program and read back through its UI elements", async (stderr) => {
  const title = "SDK typing fixture";
  const fixture = spawn(fixturePath, [title, "200", "200", "400", "400"],
    { stdio: ["pipe", "ignore", "inherit"] });
  const exited = once(fixture, "exit");
  fixture.stdin.write("add echo 1 Echo:\n");
  const { DISPLAY, DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR = "" } = process.env;
  let ours = [];
  try {
    await withClient({ ...sandbox, DISPLAY, DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR }, stderr,
      async (_, raw) => {
        // The fields of the last text block; null for a failure when `failureIsNull`.
        const call = async (name, args = {}, failureIsNull = false) => {
          const result = await raw(name, args);
          if (result.isError && failureIsNull) return null;
          assert.notEqual(result.isError, true, `${name}: ${firstText(result)}`);
          return JSON.parse(result.content.at(-1).text);
        };
        const echoed = async () => (await call("find_ui_elements", { name: "echo:" })).elements;
        const windows = async () => (await call("list_windows")).windows
          .filter((w) => w.title.startsWith(title));
        await until("the fixture's window", async () => (await windows()).length > 0);
        // A window manager may pass over one activation request while another window is
        // mapped, so the request is repeated until the fixture is active.
        let asks = 0;
        await until("the fixture's focus", async () => {
          if (asks++ % 20 === 0) await call("focus_window", { title: "sdk typing" });
          return (await call("get_active_window_info", {}, true))?.title === title;
        });
        // The window manager names the active window before the program has the keyboard: a
        // key that lands is the sign, and select-all lets the text replace it.
        await until("a key to land", async () => {
          await call("type_text", { text: "x" });
          return (await echoed()).some((e) => e.name.startsWith("Echo: x"));
        });
        await call("send_hotkey", { hotkey: "ctrl+a" });
        const text = "typed 中文 ✓ 😀";
        assert.deepEqual(await call("type_text", { text }), { length: 13, success: true });
        const echo = await until("the typed text",
          async () => (await echoed()).find((e) => e.name === `Echo: ${text}`));
        assert.equal(echo.controlType, "Text");
        ours = (await windows()).map((w) => parseInt(w.hwnd, 16));
      });
  } finally {
    fixture.kill();
    await exited;
  }
  // The next program on the display may be given the same window ids; until the window manager
  // has let go of the fixture's windows, it takes the newcomer's windows for them.
  const managed = () => (execFileSync("xprop", ["-root", "_NET_CLIENT_LIST"]).toString()
    .match(/0x[0-9a-f]+/g) ?? []).map((id) => parseInt(id, 16));
  await until("the window manager to let go of the fixture",
    async () => !managed().some((id) => ours.includes(id)));
});

rmSync(home, { recursive: true, force: true });
process.exit(failures === 0 ? 0 : 1);
