// Drives the Windows zelmor-mcp.exe under Wine with the official MCP TypeScript client:
// handshake, the tool list, ping, a GDI capture of a window of known colour, an annotation, the
// history in SQLite, and the window, input, hotkey and hook paths on the window of
// zelmor-win-probe.exe, a Windows program that reports what reaches it.
//   node sdk_wine.mjs <zelmor-mcp.exe> <zelmor-test-window> <zelmor-win-probe.exe>
// Needs WINEPREFIX set to a prefix made with `wineboot -i`, and an X display.
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import assert from "node:assert/strict";
import { spawn, spawnSync } from "node:child_process";
import { once } from "node:events";
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
  const waitFor = async (pattern, what) => {
    for (const deadline = Date.now() + 20000; Date.now() < deadline; await sleep(50)) {
      const line = lines.find((l) => pattern.test(l));
      if (line !== undefined) return line;
    }
    throw new Error(`probe: no ${what} in ${JSON.stringify(lines)}`);
  };
  return { probe, lines, waitFor };
}

// A white window of another (Linux) program at a known place.
const marker = spawn(markerProgram, ["Wine marker", "200", "200", "400", "100"]);
await once(marker.stdout, "data");

const transport = new StdioClientTransport({ command: "wine", args: [server], stderr: "pipe",
  env: { ...process.env, WINEDEBUG: "-all", WINEDLLOVERRIDES: "mscoree,mshtml=" } });
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
  toolData(await call("send_hotkey", { hotkey: "ctrl+shift+k" }));
  await probe.waitFor(/^hotkey 1$/, "hotkey");
  await probe.waitFor(/^hook 75$/, "the hotkey's K in the hook");
  console.log("ok - window, input, hotkey and hook paths on a Wine window");

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
process.exit(failed ? 1 : 0);
