// Starts the zelmor entry of a client configuration file as a client would, with the official
// SDK client, and prints how many tools it lists.
//   node config_entry.mjs <configuration file>
import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import { readFileSync } from "node:fs";

const { command, args } = JSON.parse(readFileSync(process.argv[2], "utf8")).mcpServers.zelmor;
const client = new Client({ name: "config-entry", version: "1.0.0" });
await client.connect(new StdioClientTransport({ command, args, stderr: "ignore" }));
console.log((await client.listTools()).tools.length);
await client.close();
