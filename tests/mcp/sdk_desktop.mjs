// The official MCP TypeScript client drives zelmor-mcp on a desktop: it types into another
// program's window and reads the result back through that program's UI elements.
//   node sdk_desktop.mjs <path to zelmor-mcp> <path to zelmor-ui-fixture>
// Needs an X session with the accessibility bus (scripts/x-session.sh); skips without one.
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { setTimeout as sleep } from "node:timers/promises";

const [server, fixturePath] = process.argv.slice(2);
if (!server || !fixturePath) {
  console.error("usage: node sdk_desktop.mjs <path to zelmor-mcp> <path to zelmor-ui-fixture>");
  process.exit(2);
}
if (!process.env.DISPLAY || !process.env.DBUS_SESSION_BUS_ADDRESS) {
  console.log("skip - no X session with a session bus");
  process.exit(77);
}

const home = mkdtempSync(join(tmpdir(), "zelmor-mcp-desktop-"));
const { DISPLAY, DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR = "" } = process.env;
const env = { HOME: home, XDG_CONFIG_HOME: join(home, "config"), XDG_DATA_HOME: join(home, "data"),
  XDG_CACHE_HOME: join(home, "cache"), DISPLAY, DBUS_SESSION_BUS_ADDRESS, XDG_RUNTIME_DIR };

const title = "SDK typing fixture";
const fixture = spawn(fixturePath, [title, "200", "200", "400", "400"],
  { stdio: ["pipe", "ignore", "inherit"] });
fixture.stdin.write("add echo 1 Echo:\n");

const transport = new StdioClientTransport({ command: server, args: [], env, stderr: "inherit" });
const client = new Client({ name: "zelmor-desktop-e2e", version: "1.0.0" });

// A tool's fields, which travel as the JSON of the last text block; null for a failure when
// `failureIsNull`, for a poll that waits for the desktop to settle.
async function call(name, args = {}, failureIsNull = false) {
  const result = await client.callTool({ name, arguments: args });
  if (result.isError && failureIsNull) return null;
  assert.notEqual(result.isError, true, `${name}: ${result.content[0]?.text}`);
  return JSON.parse(result.content.at(-1).text);
}

const echoed = async () => (await call("find_ui_elements", { name: "echo:" })).elements;

async function until(what, probe) {
  for (let i = 0; i < 200; i++) {
    const value = await probe();
    if (value) return value;
    await sleep(50);
  }
  throw new Error(`timed out waiting for ${what}`);
}

async function stop(child) {
  if (child.exitCode !== null || child.signalCode !== null) return;
  const exited = once(child, "exit");
  child.kill();
  await exited;
}

let failed = false;
try {
  await client.connect(transport);
  await until("the fixture's window", async () =>
    (await call("list_windows")).windows.some((w) => w.title === title));
  // A window manager may pass over one activation request while another window is mapped,
  // so the request is repeated until the fixture is active.
  let asks = 0;
  await until("the fixture's focus", async () => {
    if (asks++ % 20 === 0) await call("focus_window", { title: "sdk typing" });
    return (await call("get_active_window_info", {}, true))?.title === title;
  });
  // The window manager names the active window before the program has the keyboard: a key
  // that lands is the sign, and select-all lets the text replace it.
  await until("a key to land", async () => {
    await call("type_text", { text: "x" });
    return (await echoed()).some((e) => e.name.startsWith("Echo: x"));
  });
  await call("send_hotkey", { hotkey: "ctrl+a" });

  const text = "typed 中文 ✓ 😀";
  assert.deepEqual(await call("type_text", { text }), { length: 13, success: true });
  let seen = [];
  const echo = await until("the typed text", async () =>
    (seen = await echoed()).find((e) => e.name === `Echo: ${text}`)).catch((error) => {
    throw new Error(`${error.message}; found ${JSON.stringify(seen)}`);
  });
  assert.equal(echo.controlType, "Text");
  console.log("ok - typed into another program and read back through its UI elements");

  // The next program on the display may be given the same window ids; until the window manager
  // has let go of the fixture's windows, it takes the newcomer's windows for them.
  const ours = (await call("list_windows")).windows
    .filter((w) => w.title.startsWith(title)).map((w) => parseInt(w.hwnd, 16));
  await stop(fixture);
  const managed = () => (execFileSync("xprop", ["-root", "_NET_CLIENT_LIST"]).toString()
    .match(/0x[0-9a-f]+/g) ?? []).map((id) => parseInt(id, 16));
  await until("the window manager to let go of the fixture",
    async () => !managed().some((id) => ours.includes(id)));
} catch (error) {
  failed = true;
  console.log(`not ok - typed into another program and read back\n${error.stack}`);
} finally {
  await client.close();
  await stop(fixture);
  rmSync(home, { recursive: true, force: true });
}
process.exit(failed ? 1 : 0);
