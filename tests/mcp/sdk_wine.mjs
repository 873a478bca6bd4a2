// Drives the Windows zelmor-mcp.exe under Wine with the official MCP TypeScript client:
// handshake, the tool list, ping, a GDI capture of a window of known colour, an annotation, the
// history in SQLite, the window, input, hotkey, hook and clipboard paths on the window of
// zelmor-win-probe.exe, a Windows program that reports what reaches it, a started cmd that must
// read none of the requests, and the log lock under a profile folder named outside the ANSI
// code page.
//   node sdk_wine.mjs <zelmor-mcp.exe> <zelmor-test-window> <zelmor-win-probe.exe>
// Needs WINEPREFIX set to a prefix made with `wineboot -i`, and an X display.
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import assert from "node:assert/strict";
import { spawn, spawnSync } from "node:child_process";
import { once } from "node:events";
import { existsSync, mkdirSync, mkdtempSync, rmSync, statSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";
import { setTimeout as sleep } from "node:timers/promises";

const [server, markerProgram, probeProgram] = process.argv.slice(2);
if (!server || !markerProgram || !probeProgram || !process.env.WINEPREFIX) {
  console.error("usage: WINEPREFIX=... node sdk_wine.mjs <zelmor-mcp.exe> <zelmor-test-window> " +
                "<zelmor-win-probe.exe>");
  process.exit(2);
}

const firstText = (result) => result.content.find((block) => block.type === "text")?.text;
// The JSON a tool answers with: after the image where there is one.
function toolData(result) {
  assert.equal(result.isError ?? false, false, firstText(result));
  return JSON.parse(result.content.filter((block) => block.type === "text").at(-1).text);
}

// The pixels of a PNG as RGB bytes, decoded by ffmpeg.
const rgbOf = (png) => spawnSync("ffmpeg", ["-loglevel", "error", "-f", "png_pipe", "-i", "-",
  "-f", "rawvideo", "-pix_fmt", "rgb24", "-"], { input: png }).stdout;

// The probe's report lines, and a wait for the first line that matches.
function startProbe() {
  const probe = spawn("wine", [probeProgram], { stdio: ["ignore", "pipe", "inherit"] });
  const lines = [];
  createInterface({ input: probe.stdout }).on("line", (line) => lines.push(line.replace(/\r$/, "")));
  // Only lines from index `from` on count.
  const waitFor = async (pattern, what, from = 0) => {
    for (const deadline = Date.now() + 20000; Date.now() < deadline; await sleep(50)) {
      const line = lines.slice(from).find((l) => pattern.test(l));
      if (line !== undefined) return line;
    }
    throw new Error(`probe: no ${what} in ${JSON.stringify(lines)}`);
  };
  return { probe, lines, waitFor };
}

// A white window of another (Linux) program at a known place.
const marker = spawn(markerProgram, ["Wine marker", "200", "200", "400", "100"]);
await once(marker.stdout, "data");

// The server's folder, where a program it starts works too.
const work = mkdtempSync(join(tmpdir(), "zelmor-wine-client-"));
const transport = new StdioClientTransport({ command: "wine", args: [server], stderr: "pipe",
  cwd: work, env: { ...process.env, WINEDEBUG: "-all", WINEDLLOVERRIDES: "mscoree,mshtml=" } });
let stderr = "";
transport.stderr.on("data", (chunk) => { stderr += chunk.toString(); });
const client = new Client({ name: "zelmor-wine", version: "1.0.0" });
let failed = false;
let probe = null;
try {
  await client.connect(transport);
  const call = (name, args = {}) => client.callTool({ name, arguments: args });
  assert.equal(client.getServerVersion().name, "zelmor");
  await client.ping();
  const { tools } = await client.listTools();
  assert.equal(new Set(tools.map((t) => t.name)).size, 32);
  assert.deepEqual(toolData(await call("ping")), { pong: true });

  const region = await call("capture_region", { x: 250, y: 220, w: 200, h: 50 });
  const shot = toolData(region);
  assert.deepEqual([shot.width, shot.height], [200, 50]);
  const image = region.content.find((block) => block.type === "image");
  const pixels = rgbOf(Buffer.from(image.data, "base64"));
  assert.equal(pixels.length, 200 * 50 * 3);
  assert.ok(pixels.every((byte) => byte === 255), "the marker's white");

  const annotated = toolData(await call("annotate_image", { image: image.data, id: 999999,
    annotations: [{ kind: "Arrow", points: [[2, 5], [180, 40]], color: "#0000FF", penWidth: 4 }] }));
  assert.deepEqual([annotated.width, annotated.height], [200, 50]);

  const listed = JSON.parse(firstText(await call("list_history"))).items;
  assert.ok(listed.some((item) => item.path === shot.path), "the capture is in the history");
  const found = await call("search_history", { query: "Zelmor" });
  assert.equal(found.isError ?? false, false, firstText(found));
  console.log("ok - zelmor-mcp.exe under Wine");

  probe = startProbe();
  await probe.waitFor(/^ready$/, "ready");
  const icons = Number(probe.lines.find((l) => l.startsWith("icons "))?.slice(6));
  assert.ok(icons >= 40 && !probe.lines.some((l) => /^(icon failed|hotkey not|hook not)/.test(l)),
            probe.lines.join("\n"));
  const windows = toolData(await call("list_windows")).windows;
  assert.ok(windows.some((w) => w.title === "Zelmor Wine probe"), "EnumWindows finds the probe");
  toolData(await call("focus_window", { title: "Zelmor Wine probe" }));
  toolData(await call("type_text", { text: "wine42" }));
  await probe.waitFor(/^text wine42$/, "typed text");
  // Typed text goes in as Unicode packets, which the hook sees as VK_PACKET.
  assert.equal(probe.lines.filter((l) => l === "hook 231").length, 6, probe.lines.join(","));

  // A click where the pointer was moved, then one at a point of its own.
  const pressAt = async (button, x, y) => {
    const line = await probe.waitFor(new RegExp(`^press ${button} `), `press ${button}`,
                                      probe.lines.length);
    const [px, py] = line.split(" ")[2].split(",").map(Number);
    // SendInput's absolute coordinates are normalised to 0..65535 and may round a pixel off.
    assert.ok(Math.abs(px - x) <= 1 && Math.abs(py - y) <= 1, `${line} for ${x},${y}`);
  };
  toolData(await call("mouse_move", { x: 480, y: 330 }));
  let press = pressAt(1, 480, 330);
  toolData(await call("mouse_click", {}));
  await press;
  press = pressAt(4, 400, 320);
  toolData(await call("mouse_click", { x: 400, y: 320, button: "middle" }));
  await press;

  let from = probe.lines.length;
  toolData(await call("window_action", { title: "Zelmor Wine probe", action: "minimize" }));
  await probe.waitFor(/^state minimized$/, "minimized", from);
  from = probe.lines.length;
  toolData(await call("window_action", { title: "Zelmor Wine probe", action: "restore" }));
  await probe.waitFor(/^state normal$/, "restored", from);

  // The hotkey pressed while a message box runs its own message loop.
  toolData(await call("focus_window", { title: "Zelmor Wine probe" }));
  toolData(await call("type_text", { text: "modal" }));
  await probe.waitFor(/^modal$/, "the message box");
  toolData(await call("send_hotkey", { hotkey: "ctrl+shift+k" }));
  await probe.waitFor(/^hotkey 1$/, "hotkey in the message box's loop");
  await probe.waitFor(/^hook 75$/, "the hotkey's K in the hook");
  toolData(await call("send_hotkey", { hotkey: "enter" }));
  await probe.waitFor(/^modal ended$/, "the message box answered");
  console.log("ok - window, mouse, window action, input, hotkey in a modal loop and hook paths " +
              "on a Wine window");

  // A started cmd has the null device for input: it reads none of the requests that follow,
  // which it would run as command lines where a quote leaves an & unquoted.
  toolData(await call("launch_app", { target: "cmd" }));
  for (let i = 0; i < 5; i++) await client.ping({ timeout: 10000 });
  const text = 'zelmor 中文 " & echo leaked> leaked.txt & rem "';
  // The probe reports what it read, then that it answered; the answer is read after that.
  const ask = async (what, answered = /^clipboard answered$/) => {
    const since = probe.lines.length;
    toolData(await call("write_clipboard", { text: `to probe: ${what}` }));
    await probe.waitFor({ test: (l) => l === `clipboard ${what}` }, `the probe reading ${what}`,
                        since);
    await probe.waitFor(answered, "the probe's answer", since);
    return call("read_clipboard");
  };
  // The text travels as the first block, the rest as JSON.
  const read = (result) => ({ hasText: toolData(result).hasText, text: firstText(result) });
  assert.deepEqual(read(await ask(text)), { hasText: true, text: `from probe: ${text}` });
  assert.deepEqual(read(await ask("image")), { hasText: false, text: "" });
  // A clipboard another program holds open cannot be read, and the tool says so.
  const held = await ask("hold", /^clipboard held$/);
  assert.equal(held.isError, true, firstText(held));
  assert.equal(firstText(held), "could not open Windows clipboard");
  from = probe.lines.length;
  toolData(await call("mouse_click", { x: 400, y: 320 }));
  await probe.waitFor(/^clipboard released$/, "the clipboard let go", from);
  assert.ok(!existsSync(join(work, "leaked.txt")), "cmd ran a request as a command line");
  console.log("ok - a started cmd reads none of the requests; the clipboard tools round-trip " +
              "text with the probe, see its picture, and say when it holds the clipboard open");

  for (const name of ["inspect_ui_element", "find_ui_elements", "click_ui_element",
                      "set_ui_element_text"]) {
    const answer = await call(name, { name: "Zelmor", text: "x" });
    assert.equal(answer.isError, true, `${name} without UI Automation`);
    assert.match(firstText(answer), /UIAutomation/);
  }
  console.log("ok - the UI Automation tools under Wine answer: failed to initialize UIAutomation");
} catch (error) {
  failed = true;
  console.log(`not ok - zelmor-mcp.exe under Wine\n${error.stack}\n--- server stderr ---\n${stderr}`);
} finally {
  await client.close();
  marker.kill();
  probe?.probe.kill();
}

// The roaming folder moved to a folder whose name the ANSI code page cannot spell: the log
// there, past its limit, is halved under the lock when the next line is written, by a program
// without the UTF-8 code page of the programs' manifest.
try {
  const roaming = join(process.env.WINEPREFIX, "drive_c", "José张");
  const logDir = join(roaming, "Zelmor", "Zelmor");
  mkdirSync(logDir, { recursive: true });
  const log = join(logDir, "zelmor.log");
  writeFileSync(log, "an old line of the log\n".repeat(20000));
  const reg = join(work, "roaming.reg");
  writeFileSync(reg, "\ufeffWindows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\" +
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders]\r\n" +
    '"AppData"="C:\\\\José张"\r\n', "utf16le");
  assert.equal(spawnSync("wine", ["reg", "import", reg]).status, 0, "reg import");
  assert.equal(spawnSync("wine", [probeProgram, "--log", "a new line"]).status, 0, "probe --log");
  const size = statSync(log).size;
  assert.ok(size < 200000, `the log under C:\\José张 was not halved: ${size} bytes`);
  console.log("ok - the log lock under a profile folder named José张");
} catch (error) {
  failed = true;
  console.log(`not ok - the log lock under José张\n${error.stack}`);
}
rmSync(work, { recursive: true, force: true });
process.exit(failed ? 1 : 0);
