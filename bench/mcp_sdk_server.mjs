// The smallest stdio server on the official TypeScript SDK, for comparison with zelmor-mcp.
import { McpServer } from "../tests/mcp/node_modules/@modelcontextprotocol/sdk/dist/esm/server/mcp.js";
import { StdioServerTransport } from "../tests/mcp/node_modules/@modelcontextprotocol/sdk/dist/esm/server/stdio.js";

const server = new McpServer({ name: "sdk-minimal", version: "1.0.0" });
server.tool("ping", "Answers pong.", async () => ({ content: [{ type: "text", text: "pong" }] }));
await server.connect(new StdioServerTransport());
