<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
<context>
    <name>zelmor::widget::SettingsDialog</name>
    <message>
        <source>Language:</source>
        <comment>settings.general.language</comment>
        <translation>Language:</translation>
    </message>
    <message>
        <source>🌐 官方网站</source>
        <comment>settings.about.website</comment>
        <translation>🌐 Website</translation>
    </message>
</context>
<context>
    <name>zelmor::widget::McpSettingsPage</name>
    <message>
        <source>MCP AI 客户端接入</source>
        <comment>settings.mcp.page.title</comment>
        <translation>MCP AI client access</translation>
    </message>
    <message>
        <source>支持通过 MCP 协议接入 AI 客户端。
接入后可直接调用 Zelmor 截图能力。
提供接入文档入口。</source>
        <comment>settings.mcp.page.desc</comment>
        <translation>Connect AI clients over the MCP protocol.
Once connected, they can use Zelmor's capture tools directly.
See the documentation for details.</translation>
    </message>
    <message>
        <source>MCP 服务路径配置</source>
        <comment>settings.mcp.path.title</comment>
        <translation>MCP server path</translation>
    </message>
    <message>
        <source>生产构建</source>
        <comment>settings.mcp.path.generate</comment>
        <translation>Copy configuration</translation>
    </message>
    <message>
        <source>生产构建</source>
        <comment>settings.mcp.build</comment>
        <translation>Configuration copied</translation>
    </message>
    <message>
        <source>MCP 配置已生成并复制到剪贴板！</source>
        <comment>settings.mcp.build.success</comment>
        <translation>The MCP configuration was generated and copied to the clipboard.</translation>
    </message>
    <message>
        <source>AI 客户端列表</source>
        <comment>settings.mcp.clients.title</comment>
        <translation>AI clients</translation>
    </message>
    <message>
        <source>➕ 添加自定义配置文件...</source>
        <comment>settings.mcp.add_custom</comment>
        <translation>➕ Add custom configuration file...</translation>
    </message>
    <message>
        <source>取消接入</source>
        <comment>settings.mcp.disconnect</comment>
        <translation>Disconnect</translation>
    </message>
    <message>
        <source>接入</source>
        <comment>settings.mcp.connect</comment>
        <translation>Connect</translation>
    </message>
    <message>
        <source>重新接入</source>
        <comment>settings.mcp.reconnect</comment>
        <translation>Reconnect</translation>
    </message>
    <message>
        <source>复制 JSON</source>
        <comment>settings.mcp.copy_json</comment>
        <translation>Copy JSON</translation>
    </message>
    <message>
        <source>删除此项</source>
        <comment>settings.mcp.delete_entry</comment>
        <translation>Remove</translation>
    </message>
    <message>
        <source>已接入</source>
        <comment>settings.mcp.status.connected</comment>
        <translation>Connected</translation>
    </message>
    <message>
        <source>未接入</source>
        <comment>settings.mcp.status.disconnected</comment>
        <translation>Not connected</translation>
    </message>
    <message>
        <source>接入成功</source>
        <comment>settings.mcp.inject.success</comment>
        <translation>Connected</translation>
    </message>
    <message>
        <source>已成功将 Zelmor MCP 注入到 %1。</source>
        <comment>settings.mcp.inject.body</comment>
        <translation>Zelmor MCP was added to %1.</translation>
    </message>
    <message>
        <source>接入失败</source>
        <comment>settings.mcp.inject.failed</comment>
        <translation>Connection failed</translation>
    </message>
    <message>
        <source>取消成功</source>
        <comment>settings.mcp.remove.success</comment>
        <translation>Disconnected</translation>
    </message>
    <message>
        <source>已从 %1 取消 Zelmor MCP 接入。</source>
        <comment>settings.mcp.remove.body</comment>
        <translation>Zelmor MCP was removed from %1.</translation>
    </message>
    <message>
        <source>取消失败</source>
        <comment>settings.mcp.remove.failed</comment>
        <translation>Disconnection failed</translation>
    </message>
    <message>
        <source>已复制</source>
        <comment>settings.mcp.copied</comment>
        <translation>Copied</translation>
    </message>
    <message>
        <source>JSON 配置已复制到剪贴板！</source>
        <comment>settings.mcp.copied.body</comment>
        <translation>The JSON configuration was copied to the clipboard.</translation>
    </message>
    <message>
        <source>选择 MCP 配置文件</source>
        <comment>settings.mcp.select_file</comment>
        <translation>Choose an MCP configuration file</translation>
    </message>
    <message>
        <source>JSON 配置文件 (*.json);;所有文件 (*.*)</source>
        <comment>settings.mcp.file_filter</comment>
        <translation>JSON configuration files (*.json);;All files (*)</translation>
    </message>
    <message>
        <source>添加成功</source>
        <comment>settings.mcp.custom_added</comment>
        <translation>Added</translation>
    </message>
    <message>
        <source>已添加自定义 MCP 配置文件路径。</source>
        <comment>settings.mcp.custom_added.body</comment>
        <translation>The custom MCP configuration file was added.</translation>
    </message>
    <message>
        <source>已删除</source>
        <comment>settings.mcp.deleted</comment>
        <translation>Removed</translation>
    </message>
    <message>
        <source>自定义 MCP 配置项已删除。</source>
        <comment>settings.mcp.deleted.body</comment>
        <translation>The custom MCP configuration entry was removed.</translation>
    </message>
</context>
</TS>
