// The desktop tools on a Wayland desktop, inside scripts/wayland-session.sh: the official client
// drives zelmor-mcp against a Wayland-native window, the chat's tool loop types into it, and on
// a compositor without the protocols (weston) each tool names what the desktop lacks.
//   node wayland_tools.mjs <path to zelmor-mcp> <folder of the test programs> [kwin]
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import assert from "node:assert/strict";
import { execFileSync, spawn } from "node:child_process";
import { existsSync, mkdtempSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join } from "node:path";
import { setTimeout as sleep } from "node:timers/promises";

const [server, bin] = process.argv.slice(2);
const { DISPLAY, ...env } = process.env; // as a console client starts it: no X server known
const native = { ...env, QT_QPA_PLATFORM: "wayland", QT_LINUX_ACCESSIBILITY_ALWAYS_ON: "1" };

let failures = 0;
async function check(name, body) {
  try {
    await body();
    console.log(`ok - ${name}`);
  } catch (error) {
    failures++;
    console.log(`not ok - ${name}\n${error.stack}`);
  }
}

async function until(found, what, ms = 10000) {
  for (const end = Date.now() + ms; Date.now() < end; await sleep(50)) if (found()) return found();
  throw new Error(`never saw ${what}`);
}

// A target window and the lines it reports.
function startTarget(...args) {
  const child = spawn(join(bin, "zelmor-wl-tool-target"), args, { env: native });
  const target = { child, lines: [], saw: (line) => until(() => target.lines.includes(line), line) };
  let rest = "";
  child.stdout.on("data", (chunk) => {
    const parts = (rest + chunk).split("\n");
    rest = parts.pop();
    target.lines.push(...parts);
  });
  return target;
}

// A control's centre on the desktop: the window's place from sway, the rest from the window.
function place(target, control, dx = 0, dy = 0) {
  const find = (n) => n.name === target.title ? n :
    [...(n.nodes ?? []), ...(n.floating_nodes ?? [])].map(find).find(Boolean);
  const node = find(JSON.parse(execFileSync("swaymsg", ["-t", "get_tree"])));
  const [x, y] = target.lines.find((l) => l.startsWith(`at ${control} `)).split(" ").slice(2).map(Number);
  return { x: node.rect.x + node.window_rect.x + x + dx, y: node.rect.y + node.window_rect.y + y + dy };
}

async function connect(extra = {}) {
  const transport = new StdioClientTransport({ command: server, args: [], env: { ...env, ...extra }, stderr: "inherit" });
  const client = new Client({ name: "zelmor-wayland", version: "1.0.0" });
  await client.connect(transport);
  return { client, call: (name, args = {}) => client.callTool({ name, arguments: args }) };
}

// A tool's fields: the JSON of its last text block.
function fields(result) {
  assert.equal(result.isError ?? false, false, result.content[0].text);
  return JSON.parse(result.content.filter((b) => b.type === "text").at(-1).text);
}

// KWin (wayland-session.sh --kwin) offers its own fake input device instead of the virtual ones.
if (process.argv[4] === "kwin") {
  const target = startTarget("Zelmor tool target");
  await until(() => target.lines.length, "the window shown");
  const { client, call } = await connect();
  try {
    await check("on KWin list_windows tells the window's place and focus_window finds it", async () => {
      const mine = fields(await call("list_windows")).windows.find((w) => w.title === "Zelmor tool target");
      assert.ok(mine.width >= 300 && mine.height >= 200, JSON.stringify(mine));
      fields(await call("focus_window", { title: "tool target" }));
    });
    await check("on KWin type_text and send_hotkey reach the focused window", async () => {
      fields(await call("type_text", { text: "Hello, KWin!" }));
      await target.saw("text Hello, KWin!");
      fields(await call("send_hotkey", { hotkey: "ctrl+alt+j" }));
      await target.saw("hotkey");
    });
    await check("on KWin clipboard text round-trips with another Wayland program", async () => {
      fields(await call("write_clipboard", { text: "剪贴板 KWin" }));
      assert.equal(execFileSync("wl-paste", ["-n"], { timeout: 5000 }).toString(), "剪贴板 KWin");
    });
    await check("on KWin a character its layout has no key for is refused", async () => {
      const answer = await call("type_text", { text: "中" });
      assert.equal(answer.isError, true);
      assert.match(answer.content[0].text, /no key for/);
    });
  } finally {
    await client.close();
    target.child.kill();
  }
  process.exit(failures ? 1 : 0);
}

const target = Object.assign(startTarget("Zelmor tool target"), { title: "Zelmor tool target" });
const other = startTarget("Zelmor other window");
await until(() => target.lines.length && other.lines.length, "both windows shown");
const { client, call } = await connect();
try {
  await check("list_windows finds the window and says its rectangle is unknown", async () => {
    const mine = fields(await call("list_windows")).windows.find((w) => w.title === target.title);
    assert.match(mine.rectangle, /unknown/);
    assert.equal(mine.x, undefined);
  });
  await check("find_ui_elements gives its button no window-relative place", async () => {
    let buttons = [];
    for (let i = 0; i < 100 && buttons.length < 2; i++, await sleep(100)) // until both registered
      buttons = fields(await call("find_ui_elements", { name: "Press" })).elements;
    assert.deepEqual(buttons.map((b) => [b.controlType, b.x]), [["Button", undefined], ["Button", undefined]]);
  });
  await check("focus_window activates it", async () => {
    fields(await call("focus_window", { title: "tool target" }));
    assert.equal(fields(await call("get_active_window_info")).title, target.title);
  });
  await check("type_text of ASCII and Chinese arrives in its line edit", async () => {
    fields(await call("type_text", { text: "hello 中文" }));
    await target.saw("text hello 中文");
  });
  await check("paste_text_to_focused pastes into it", async () => {
    fields(await call("paste_text_to_focused", { text: "贴" }));
    await target.saw("text hello 中文贴");
  });
  await check("the chat's tool loop types into it through the fake AI server", async () => {
    const out = execFileSync(join(bin, "zelmor-wl-chat"), ["type_text", '{"text":"聊天"}'], { env: native });
    assert.match(out.toString(), /finished done/);
    await target.saw("text hello 中文贴聊天");
  });
  await check("send_hotkey reaches it", async () => {
    fields(await call("send_hotkey", { hotkey: "ctrl+alt+j" }));
    await target.saw("hotkey");
  });
  await check("mouse_click at its button presses it", async () => {
    fields(await call("mouse_click", place(target, "button")));
    await target.saw("pressed");
  });
  await check("mouse_scroll over its list scrolls it", async () => {
    fields(await call("mouse_scroll", { ...place(target, "list"), delta: -360 }));
    await until(() => target.lines.some((l) => /^scrolled [1-9]/.test(l)), "a scroll");
  });
  await check("clipboard text round-trips with another Wayland program", async () => {
    fields(await call("write_clipboard", { text: "剪贴板 round trip" }));
    assert.equal(execFileSync("wl-paste", ["-n"], { timeout: 5000 }).toString(), "剪贴板 round trip");
    // wl-copy stays to serve its copy: nothing may wait for its output to end.
    execFileSync("wl-copy", ["from wl-copy"], { stdio: "ignore" });
    assert.equal((await call("read_clipboard")).content[0].text, "from wl-copy");
  });
  await check("capture_region over it shows its pixels", async () => {
    const { x, y } = place(target, "list", 0, 150);
    const shot = fields(await call("capture_region", { x, y, w: 40, h: 40 }));
    const rgb = execFileSync("ffmpeg", ["-v", "error", "-i", shot.path, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"]);
    assert.deepEqual([rgb.length, ...new Set(rgb.toString("hex").match(/.{6}/g))], [4800, "ff8000"]);
  });
  await check("in a GTK entry send_hotkey edits what type_text typed", async () => {
    // GTK finds a key's bindings through the keymap, where Qt reads the key's keysym alone.
    const zenity = spawn("zenity", ["--entry", "--title", "GTK target"], { env: { ...env, GDK_BACKEND: "wayland" } });
    const answer = new Promise((done) => zenity.stdout.on("data", (text) => done(String(text))));
    try {
      for (let i = 0; i < 100 && (await call("focus_window", { title: "GTK target" })).isError; i++) await sleep(100);
      for (const [tool, args] of [["type_text", { text: "old" }], ["send_hotkey", { hotkey: "ctrl+a" }], ["type_text", { text: "hellox" }],
        ["send_hotkey", { hotkey: "BackSpace" }], ["send_hotkey", { hotkey: "Left" }], ["type_text", { text: "X" }], ["send_hotkey", { hotkey: "Return" }]])
        fields(await call(tool, args));
      assert.equal(await Promise.race([answer, sleep(10000, "no answer")]), "hellXo\n");
    } finally {
      zenity.kill();
    }
  });
} finally {
  await client.close();
}

await check("on weston each tool names the protocol the desktop lacks", async () => {
  const weston = spawn("weston", ["--backend=headless-backend.so", "--socket=wayland-weston", "--idle-time=0"]);
  try {
    await until(() => existsSync(join(env.XDG_RUNTIME_DIR, "wayland-weston")), "weston");
    const { client, call } = await connect({ WAYLAND_DISPLAY: "wayland-weston" });
    try {
      for (const [tool, args, lacks] of [["type_text", { text: "x" }, /no virtual keyboard.*virtual-keyboard/],
        ["mouse_click", { x: 1, y: 1 }, /no virtual pointer.*wlr-virtual-pointer/],
        ["list_windows", {}, /wlr-foreign-toplevel-management/], ["read_clipboard", {}, /wlr-data-control/]]) {
        const answer = await call(tool, args);
        assert.equal(answer.isError, true, tool);
        assert.match(answer.content[0].text, lacks);
      }
    } finally {
      await client.close();
    }
  } finally {
    weston.kill();
  }
});

await check("a window whose title changes all the time leaves the desktop tools working", async () => {
  const { client, call } = await connect();
  try {
    fields(await call("list_windows"));
    const busy = startTarget("busy", "churn");
    await until(() => busy.lines.includes("churned"), "the title changes", 60000);
    busy.child.kill();
    fields(await call("list_windows"));
    fields(await call("capture_region", { x: 0, y: 0, w: 8, h: 8 }));
  } finally {
    await client.close();
  }
});
target.child.kill();
other.child.kill();

await check("a capture from the command line is on the clipboard, no window in focus", async () => {
  const home = mkdtempSync(join(tmpdir(), "zelmor-wl-"));
  const app = { ...native, HOME: home, XDG_CONFIG_HOME: join(home, "c"), XDG_DATA_HOME: join(home, "d") };
  const zelmor = spawn(join(dirname(server), "zelmor"), ["--capture-fullscreen"], { env: app });
  const types = () => execFileSync("wl-paste", ["--list-types"], { timeout: 5000 }).toString();
  try {
    await until(() => types().includes("image/png"), "a picture on the clipboard");
    const pixels = (png) => execFileSync("ffmpeg", ["-v", "error", "-i", "-", "-f", "rawvideo", "-pix_fmt", "rgb24", "-"], { input: png, maxBuffer: 1 << 24 });
    const pasted = execFileSync("wl-paste", ["--type", "image/png"], { timeout: 5000 });
    assert.ok(pixels(pasted).equals(pixels(execFileSync("grim", ["-"]))), "the pasted picture is grim's");
  } finally {
    execFileSync(join(dirname(server), "zelmor"), ["--quit"], { env: app, stdio: "ignore" });
    zelmor.kill();
  }
});
process.exit(failures ? 1 : 0);
