// velarion-mcp as an agent host runs it: started by the official MCP client
// over standard input and output, with a stand-in application beside it.
// The client lists the tools, meets the bridge's own errors and the
// application's words, has the bridge open the stand-in, restarts it and
// quits it.
//
// Usage: node bridge-e2e.mjs VELARION_MCP STAND_IN
// Run from the build tree, where the SDK is installed beside this file.

import assert from "node:assert/strict";
import { chmodSync, copyFileSync, existsSync, mkdtempSync, readFileSync, readlinkSync, rmSync,
         writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { basename, join } from "node:path";

import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";

const [bridgeProgram, standInProgram] = process.argv.slice(2);
if (!bridgeProgram || !standInProgram) {
  console.error("usage: node bridge-e2e.mjs VELARION_MCP STAND_IN");
  process.exit(2);
}

const notRunning = "Velarion isn't running or its local connection is unavailable. Open " +
  "Velarion; check Settings → Agent control for connection errors.";
const runRefused = "Running the show isn't allowed. The operator can turn on \"Run the show\" " +
  "in Settings → Agent control.";

// The bridge opens the `velarion` in its own folder, so both go in one.
const folder = mkdtempSync(join(tmpdir(), "velarion-e2e-"));
const bridge = join(folder, "velarion-mcp");
copyFileSync(bridgeProgram, bridge);
copyFileSync(standInProgram, join(folder, "velarion"));
chmodSync(bridge, 0o755);
chmodSync(join(folder, "velarion"), 0o755);
writeFileSync(join(folder, "stand-in.conf"), "listen_after_seconds=0.3\nlifetime_seconds=90\n");

const transport = new StdioClientTransport({
  command: bridge,
  env: { VELARION_AGENT_SOCKET: join(folder, "agent.sock") },
  stderr: "inherit",
});
const client = new Client({ name: "velarion-e2e", version: "1.0.0" });

function textOf(result) {
  assert.equal(result.content.length, 1);
  assert.equal(result.content[0].type, "text");
  return result.content[0].text;
}

async function call(name, args = {}) {
  const result = await client.callTool({ name, arguments: args });
  return { isError: result.isError === true, text: textOf(result) };
}

async function succeeds(name, args = {}) {
  const result = await call(name, args);
  assert.equal(result.isError, false, `${name}: ${result.text}`);
  return JSON.parse(result.text);
}

// Ends the stand-in should a step fail before quit_app, but only while its
// process id still names the stand-in.
function endStandIn() {
  const report = join(folder, "stand-in.report");
  if (!existsSync(report)) return;
  const pid = Number(/^pid=(\d+)$/m.exec(readFileSync(report, "utf8"))?.[1]);
  try {
    if (pid > 0 && basename(readlinkSync(`/proc/${pid}/exe`)) === "velarion")
      process.kill(pid, "SIGKILL");
  } catch {
    // Already gone.
  }
}

try {
  await client.connect(transport);
  assert.deepEqual(client.getServerVersion(), { name: "velarion", version: "2.0-alpha.9" });
  assert.deepEqual(client.getServerCapabilities(), { tools: { listChanged: false } });
  assert.match(client.getInstructions(), /^Velarion runs live events/);
  await client.ping();

  const { tools } = await client.listTools();
  assert.equal(tools.length, 44);
  assert.equal(tools[0].name, "get_show");
  assert.equal(tools.at(-1).name, "redo");
  assert.equal(new Set(tools.map((tool) => tool.name)).size, 44);
  for (const tool of tools) {
    assert.equal(tool.inputSchema.type, "object", tool.name);
    assert.equal(tool.inputSchema.additionalProperties, false, tool.name);
  }
  const fireCue = tools.find((tool) => tool.name === "fire_cue");
  assert.deepEqual(fireCue.inputSchema.required, ["cue"]);

  // Nothing listens yet: the socket's words, as a tool error.
  assert.deepEqual(await call("get_state"), { isError: true, text: notRunning });
  // Bad arguments are refused by the bridge itself, as a protocol error.
  await assert.rejects(client.callTool({ name: "fire_cue", arguments: {} }), (error) => {
    assert.equal(error.code, -32602);
    assert.match(error.message, /Give cue for fire_cue\./);
    return true;
  });

  assert.deepEqual(await succeeds("launch_app"), { running: true });
  assert.deepEqual(await succeeds("get_show"), { tool: "get_show", arguments: {}, starts: 1 });
  assert.deepEqual(await call("go"), { isError: true, text: runRefused });

  // Back when it answers: the next call reaches the restarted application.
  assert.deepEqual(await succeeds("restart_app", { force: true }), { restarting: true });
  assert.deepEqual(await succeeds("get_show"), { tool: "get_show", arguments: {}, starts: 2 });

  assert.deepEqual(await succeeds("quit_app"), { quitting: true });
  console.log("velarion-mcp end to end: all steps passed");
} finally {
  await client.close();
  endStandIn();
  rmSync(folder, { recursive: true, force: true });
}
