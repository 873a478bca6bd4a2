// The desktop tools through the RemoteDesktop portal, in headless KWin with its permission checks
// (wayland-session.sh --kwin-checked): zelmor-mcp gets no fake input there, as on Plasma.
//   node wayland_portal.mjs <path to zelmor-mcp> <folder of the test programs>
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { setTimeout as sleep } from "node:timers/promises";

const [server, bin] = process.argv.slice(2);
const lines = [];
const target = spawn(join(bin, "zelmor-wl-tool-target"), ["Zelmor tool target"], { env: { ...process.env, QT_QPA_PLATFORM: "wayland" } });
target.stdout.on("data", (chunk) => lines.push(...chunk.toString().split("\n").filter(Boolean)));
async function saw(line) {
  const found = typeof line === "string" ? (l) => l === line : (l) => line.test(l);
  for (const end = Date.now() + 10000; Date.now() < end; await sleep(20)) if (lines.some(found)) return;
  throw new Error(`never saw ${line}: ${lines.slice(-3)}`);
}
async function connect() {
  const client = new Client({ name: "zelmor-portal", version: "1.0.0" });
  await client.connect(new StdioClientTransport({ command: server, args: [], env: process.env, stderr: "inherit" }));
  return { client, call: async (name, args = {}) => client.callTool({ name, arguments: args }, undefined, { timeout: 90000 }) };
}
const ok = (answer) => assert.equal(answer.isError ?? false, false, answer.content[0].text);
// A control's centre on the desktop, once a KWin script put the window, frameless, at 100,100.
function at(control) {
  const [x, y] = lines.find((l) => l.startsWith(`at ${control} `)).split(" ").slice(2).map(Number);
  return { x: 100 + x, y: 100 + y };
}

let failures = 0;
async function check(name, body) {
  try { await body(); console.log(`ok - ${name}`); } catch (error) { failures++; console.log(`not ok - ${name}\n${error.stack}`); }
}

await saw(/^at list /);
const script = join(process.env.XDG_RUNTIME_DIR, "place.js");
writeFileSync(script, `for (const w of workspace.clientList()) if (w.caption == "Zelmor tool target")
  { w.noBorder = true; w.frameGeometry = { x: 100, y: 100, width: w.width, height: w.height }; }`);
const kwin = (path, method, ...args) => execFileSync("gdbus", ["call", "--session", "--dest", "org.kde.KWin", "--object-path", path, "--method", method, ...args]);
kwin("/Scripting", "org.kde.kwin.Scripting.loadScript", script, "place");
kwin("/Scripting", "org.kde.kwin.Scripting.start");

for (const [start, text] of [["first", "Hello, KDE!"], ["second", " again"]]) {
  const { client, call } = await connect();
  try {
    await check(`a ${start} zelmor-mcp types through the portal into the focused window`, async () => {
      const before = Date.now(), typed = lines.filter((l) => l.startsWith("text")).at(-1)?.slice(5) ?? "";
      const first = `text ${typed}${text[0]}`;
      const answer = call("type_text", { text });
      await saw(first).catch(async (e) => { throw new Error(`${e.message}; ${JSON.stringify(await answer)}`); });
      console.log(`# ${start} start: the first key ${Date.now() - before} ms after the call`);
      ok(await answer);
      await saw(`text ${typed}${text}`);
    });
    if (start === "first") {
      await check("a character the layout has no key for is refused, not dropped unsaid", async () => {
        const answer = await call("type_text", { text: "中" });
        assert.equal(answer.isError, true);
        assert.match(answer.content[0].text, /no key for/);
      });
      continue;
    }
    await check("send_hotkey, mouse_click and mouse_scroll reach it through the portal", async () => {
      ok(await call("send_hotkey", { hotkey: "ctrl+alt+j" }));
      await saw("hotkey");
      ok(await call("mouse_click", at("button")));
      await saw("pressed");
      ok(await call("mouse_scroll", { ...at("list"), delta: -360 }));
      ok(await call("mouse_move", { ...at("list") }));
      await saw(/^scrolled [1-9]/);
    });
  } finally {
    await client.close();
  }
}
target.kill();
process.exit(failures ? 1 : 0);
