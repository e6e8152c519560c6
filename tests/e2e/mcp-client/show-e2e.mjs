// The real application and bridge, driven by the official MCP client as an
// agent host would: the bridge opens `velarion --headless`, the agent builds
// a show from nothing, saves it, runs it and reads the state after each
// step, restarts the application and finds the show again, then quits it.
//
// Usage: node show-e2e.mjs BIN_DIR   (the folder with velarion and velarion-mcp)

import assert from "node:assert/strict";
import { existsSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";

const [bin] = process.argv.slice(2);
if (!bin) {
  console.error("usage: node show-e2e.mjs BIN_DIR");
  process.exit(2);
}

// A home of its own, with the operator's two switches on.
const home = mkdtempSync(join(tmpdir(), "velarion-show-e2e-"));
mkdirSync(join(home, "config", "Velarion"), { recursive: true });
writeFileSync(join(home, "config", "Velarion", "preferences.json"),
              JSON.stringify({ "live.agent.run": true, "live.agent.edit": true }));
const env = {
  PATH: process.env.PATH,
  HOME: home,
  XDG_CONFIG_HOME: join(home, "config"),
  XDG_DATA_HOME: join(home, "data"),
  VELARION_AGENT_SOCKET: join(home, "agent.sock"),
  QT_QPA_PLATFORM: "offscreen",
};
if (process.env.PULSE_SERVER) env.PULSE_SERVER = process.env.PULSE_SERVER;

const transport = new StdioClientTransport({ command: join(bin, "velarion-mcp"), env, stderr: "inherit" });
const client = new Client({ name: "velarion-show-e2e", version: "1.0.0" });

async function call(name, args = {}) {
  const result = await client.callTool({ name, arguments: args });
  assert.equal(result.content.length, 1);
  return { isError: result.isError === true, text: result.content[0].text };
}
async function succeeds(name, args = {}) {
  const result = await call(name, args);
  assert.equal(result.isError, false, `${name}: ${result.text}`);
  return JSON.parse(result.text);
}
const state = () => succeeds("get_state");
const runningNames = async () => (await state()).running.map((entry) => entry.cue.name);
// The ids of the `velarion` processes of this test's home.
function applicationPids() {
  const pids = [];
  for (const pid of readdirSync("/proc").filter((name) => /^\d+$/.test(name))) {
    try {
      if (readFileSync(`/proc/${pid}/comm`, "utf8").trim() === "velarion" &&
          readFileSync(`/proc/${pid}/environ`, "utf8").split("\0").includes(`HOME=${home}`))
        pids.push(Number(pid));
    } catch {
      // Gone, or not ours to read.
    }
  }
  return pids;
}
// Ends an application of this test's home still running after a failed step.
function endApplication() {
  for (const pid of applicationPids()) {
    try {
      process.kill(pid, "SIGKILL");
    } catch {
      // Gone already.
    }
  }
}
const pause = (seconds) => new Promise((resolve) => setTimeout(resolve, seconds * 1000));

const lyrics = "[Verse 1]\nMorning light across the hills\nEvery heart awake and still\n\n" +
  "[Chorus]\nRise, rise, the morning sings\nLift your eyes to brighter things\n";
const path = join(home, "Shows", "Sunday.velarion");

let quit = false;
try {
  await client.connect(transport);
  // The bridge opens the application; with no show open yet, the
  // application's answer is that refusal, which shows it is up.
  const launched = await call("launch_app");
  assert.equal(launched.text, "No show is open. Use new_show or open_show.");

  // Build: a show from a template, sections, a song, timers, a message, a clear, screens.
  await succeeds("new_show", { title: "Sunday", template: "blank", path });
  await succeeds("add_section", { title: "Welcome" });
  await succeeds("add_section", { title: "Worship" });
  await succeeds("add_cue", { type: "timer", name: "Doors", section: "Welcome", seconds: 600 });
  await succeeds("add_cue", { type: "message", name: "Welcome note", section: "Welcome",
                              text: "Welcome!", to: "speaker" });
  await succeeds("add_song", { lyrics, section: "Worship" });
  await succeeds("add_cue", { type: "timer", name: "Sermon", section: "Worship", seconds: 1800 });
  await succeeds("add_cue", { type: "clear", name: "Clear all", section: "Worship", target: "everything" });
  await succeeds("set_screens", { logical_screens: [
    { name: "Main", role: "audience", shows: "everything", destination: { type: "placeholder" } },
    { name: "Stage", role: "stage", shows: "clean", destination: { type: "placeholder" } }] });
  await succeeds("save_show");
  assert.ok(existsSync(join(path, "show.json")), "the show is on disk");
  const saved = JSON.parse(readFileSync(join(path, "show.json"), "utf8"));
  assert.equal(saved.title, "Sunday");

  const show = await succeeds("get_show");
  const names = show.sections.flatMap((section) => section.cues.map((cue) => cue.name));
  assert.deepEqual(names.slice(-5), ["Doors", "Welcome note", names.at(-3), "Sermon", "Clear all"]);

  // Run: GO, fire, next slide, talk-over, safe slide, Panic twice.
  await succeeds("go");
  await pause(0.3);
  const afterGo = await state();
  assert.ok(afterGo.running.some((entry) => entry.cue.name === "Doors"), "GO started the first cue");
  await succeeds("fire_cue", { cue: names.at(-3) });
  await pause(0.3);
  assert.ok((await runningNames()).includes(names.at(-3)), "the song is up");
  await succeeds("slide", { action: "next" });
  await succeeds("talk_over", { on: true });
  assert.equal((await succeeds("get_show")).title, "Sunday");
  await succeeds("safe_slide", { on: true });
  assert.equal((await state()).safe_slide_up, true);
  await succeeds("safe_slide", { on: false });
  await succeeds("panic");
  await succeeds("panic");
  await pause(0.3);
  assert.deepEqual(await runningNames(), [], "a second Panic stops everything at once");

  // Restart: the answer comes only once the application is back, as a new
  // process with the same show open and nothing playing.
  const before = applicationPids();
  assert.equal(before.length, 1, "one application runs");
  assert.deepEqual(await succeeds("restart_app"), { restarting: true });
  const back = await state();
  assert.deepEqual(back.running, [], "nothing plays after a restart");
  assert.equal((await succeeds("get_show")).title, "Sunday", "the same show is open again");
  // The old process may still be tearing down after closing its socket.
  for (let i = 0; i < 50 && applicationPids().includes(before[0]); ++i) await pause(0.1);
  const after = applicationPids();
  assert.equal(after.length, 1, "one application runs after the restart");
  assert.notEqual(after[0], before[0], "it is a new process");

  assert.deepEqual(await succeeds("quit_app"), { quitting: true });
  quit = true;
  console.log("velarion show end to end: all steps passed");
} finally {
  if (!quit) await call("quit_app", { force: true }).catch(() => {});
  await client.close();
  await pause(1);
  endApplication();
  rmSync(home, { recursive: true, force: true });
}
