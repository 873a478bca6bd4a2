#include "McpTool.h"

#include "CaptureTools.h"
#include "InputTools.h"
#include "UiTools.h"
#include "WindowTools.h"

#include "core/Utilities.h"

#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QJsonArray>
#include <QThread>

#include <algorithm>
#include <initializer_list>

namespace zelmor::service::mcp {

namespace {

struct Property
{
    const char* name;
    const char* type;
    const char* description = nullptr;
    bool required = false;
};
constexpr bool Required = true;

QJsonObject objectSchema(std::initializer_list<Property> arguments)
{
    QJsonObject properties;
    QJsonArray required;
    for (const Property& p : arguments) {
        QJsonObject property{{QStringLiteral("type"), QLatin1String(p.type)}};
        if (p.description)
            property.insert(QStringLiteral("description"), QString::fromUtf8(p.description));
        properties.insert(QLatin1String(p.name), property);
        if (p.required) required.append(QLatin1String(p.name));
    }
    QJsonObject schema{{QStringLiteral("type"), QStringLiteral("object")},
                       {QStringLiteral("properties"), properties}};
    if (!required.isEmpty()) schema.insert(QStringLiteral("required"), required);
    schema.insert(QStringLiteral("additionalProperties"), false);
    return schema;
}

QJsonObject emptySchema()
{
    return objectSchema({});
}

QJsonObject annotateImageSchema()
{
    const auto typed = [](const char* type, const char* description) {
        QJsonObject o{{QStringLiteral("type"), QLatin1String(type)}};
        if (description) o.insert(QStringLiteral("description"), QLatin1String(description));
        return o;
    };
    const QJsonObject point{{QStringLiteral("type"), QStringLiteral("array")},
                            {QStringLiteral("items"), typed("number", nullptr)},
                            {QStringLiteral("minItems"), 2}};
    QJsonObject points = typed("array", "Array of [x,y] points. 2 for rect/ellipse/arrow/line, "
                                        "N for brush/highlight, 1 for text/counter/stamp.");
    points.insert(QStringLiteral("items"), point);
    QJsonObject kind = typed("string", nullptr);
    kind.insert(QStringLiteral("enum"),
                QJsonArray{QStringLiteral("rect"), QStringLiteral("ellipse"),
                           QStringLiteral("arrow"), QStringLiteral("line"), QStringLiteral("brush"),
                           QStringLiteral("highlight"), QStringLiteral("mosaic"),
                           QStringLiteral("blur"), QStringLiteral("text"),
                           QStringLiteral("counter"), QStringLiteral("stamp")});
    const QJsonObject annotation{
        {QStringLiteral("type"), QStringLiteral("object")},
        {QStringLiteral("properties"),
         QJsonObject{{QStringLiteral("kind"), kind},
                     {QStringLiteral("points"), points},
                     {QStringLiteral("color"), typed("string", "#RRGGBB. Default #FF5252.")},
                     {QStringLiteral("penWidth"), typed("integer", "Pen width. Default 3.")},
                     {QStringLiteral("fontSize"),
                      typed("integer", "Font size (text/counter/stamp). Default 18.")},
                     {QStringLiteral("text"), typed("string", "Text label (text/counter/stamp).")},
                     {QStringLiteral("mosaicSize"),
                      typed("integer", "Mosaic/blur block size. Default 12.")}}},
        {QStringLiteral("required"), QJsonArray{QStringLiteral("kind"), QStringLiteral("points")}}};
    QJsonObject annotations = typed("array", "At most 1000.");
    annotations.insert(QStringLiteral("items"), annotation);
    annotations.insert(QStringLiteral("maxItems"), 1000);
    return {{QStringLiteral("type"), QStringLiteral("object")},
            {QStringLiteral("properties"),
             QJsonObject{
                 {QStringLiteral("id"),
                  typed("integer", "History row id of the source image. Default = most recent.")},
                 {QStringLiteral("image"),
                  typed("string", "Base64 PNG of the source image (overrides id).")},
                 {QStringLiteral("annotations"), annotations}}},
            {QStringLiteral("required"), QJsonArray{QStringLiteral("annotations")}},
            {QStringLiteral("additionalProperties"), false}};
}

McpToolResult pingTool(const McpToolArgs&)
{
    return {{QStringLiteral("text"), QStringLiteral("pong")}, {QStringLiteral("pong"), true}};
}

enum Needs { NoDisplay, Display };

McpTool tool(const char* name, const char* description, McpToolSchemaFn schema,
             McpToolHandler handler, Needs needs = NoDisplay)
{
    return {QLatin1String(name), QString::fromUtf8(description), schema, handler, needs == Display};
}

// Handlers live beside their tools' code; a row without one answers as an unknown tool.
QList<McpTool> buildTable()
{
    return {
        tool("ping", "Health-check. Returns {pong:true}.", nullptr, &pingTool),
        tool("capture_fullscreen",
             "Capture all screens silently, write to history + clipboard. Returns "
             "{path,width,height}.",
             nullptr, &captureFullscreenTool, Display),
        tool(
            "capture_region",
            "Capture a screen region (x, y, w, h in virtual screen coords). Returns "
            "{path,width,height}.",
            [] {
                return objectSchema({{"x", "number", "Left", Required},
                                     {"y", "number", "Top", Required},
                                     {"w", "number", "Width", Required},
                                     {"h", "number", "Height", Required}});
            },
            &captureRegionTool, Display),
        tool("screenshot_active_window",
             "Capture the active foreground window. Returns {path,width,height}.", &emptySchema,
             &screenshotActiveWindowTool, Display),
        tool(
            "launch_app",
            "Launch an application, open a URL, or open a file using the default system "
            "handler, then wait 1 s for it to come up.",
            [] {
                return objectSchema({{"target", "string",
                                      "The URL, file path, or application command to launch "
                                      "(e.g. 'welink', 'notepad', 'chrome')",
                                      Required}});
            },
            &launchAppTool),
        tool(
            "ocr",
            "Run OCR on an image file path, the most recent screenshot, or a specified history "
            "id, giving up after 120 s. Returns {text}.",
            [] {
                return objectSchema(
                    {{"path", "string", "Optional image file path to run OCR on."},
                     {"id", "integer", "Optional history row id; default = most recent."}});
            },
            &ocrTool),
        tool(
            "list_history",
            "Return recent history items (default 20). Returns "
            "{items:[{id,kind,path,width,height,createdAt}]}",
            [] {
                return objectSchema({{"limit", "integer", "Max items (default 20, max 200)."}});
            },
            &listHistoryTool),
        tool(
            "search_history",
            "Full-text search (FTS5) across path names and OCR text. Returns {items:[...]}.",
            [] {
                return objectSchema({{"query", "string", "Search query.", Required},
                                     {"limit", "integer", "Max items (default 20)."}});
            },
            &searchHistoryTool),
        tool("pin_last",
             "Pin the most recent screenshot (or specified id) as an always-on-top floating "
             "window.",
             nullptr, &pinLastTool),
        tool("annotate_image",
             "Draw annotations "
             "(rect/ellipse/arrow/line/brush/highlight/mosaic/blur/text/counter/stamp) onto a "
             "screenshot — by history id or inline base64 PNG, at most 1000 at once. Returns "
             "{path,width,height,base64}.",
             &annotateImageSchema, &annotateImageTool),
        tool(
            "mouse_click",
            "Perform a mouse click (left, right, or middle) at specific screen coordinates (x, "
            "y).",
            [] {
                return objectSchema(
                    {{"x", "integer", "X screen coordinate to move and click (optional)"},
                     {"y", "integer", "Y screen coordinate to move and click (optional)"},
                     {"button", "string", "Mouse button: 'left' (default), 'right', or 'middle'"},
                     {"clicks", "integer",
                      "Number of clicks: 1 (single click, default) or 2 (double click), at "
                      "most 3"}});
            },
            &mouseClickTool, Display),
        tool(
            "mouse_move", "Move the mouse cursor to specific screen coordinates (x, y).",
            [] {
                return objectSchema({{"x", "integer", "X screen coordinate", Required},
                                     {"y", "integer", "Y screen coordinate", Required}});
            },
            &mouseMoveTool, Display),
        tool(
            "mouse_scroll",
            "Scroll the mouse wheel vertically (positive = up, negative = down), at most 600000 "
            "(5000 notches) either way.",
            [] {
                return objectSchema(
                    {{"delta", "integer",
                      "Scroll amount (e.g., 120 for scroll up, -120 for scroll down), from "
                      "-600000 to 600000",
                      Required},
                     {"x", "integer", "X screen coordinate (optional)"},
                     {"y", "integer", "Y screen coordinate (optional)"}});
            },
            &mouseScrollTool, Display),
        tool(
            "type_text",
            "Type text (supports unicode, Chinese, English, numbers, and symbols) into the "
            "currently active window, at most 10000 characters at about 45 a second; cancelling "
            "the request stops the typing.",
            [] {
                return objectSchema(
                    {{"text", "string",
                      "The text content to type into the active window (at most 10000 "
                      "characters)",
                      Required}});
            },
            &typeTextTool, Display),
        tool(
            "send_hotkey",
            "Send key combinations or hotkeys (e.g., 'ctrl+c', 'ctrl+v', 'alt+tab', 'win+r', "
            "'enter', 'escape', 'tab'), at most 16 keys.",
            [] {
                return objectSchema({{"hotkey", "string",
                                      "Hotkey string to send (e.g. 'ctrl+c', 'ctrl+v', "
                                      "'alt+tab', 'win+r', 'enter', 'escape', 'tab')",
                                      Required}});
            },
            &sendHotkeyTool, Display),
        tool("list_windows",
             "List all visible top-level desktop windows including title, process name, "
             "position, and dimensions.",
             &emptySchema, &listWindowsTool, Display),
        tool(
            "focus_window",
            "Bring a specific window to front and give it focus (matches window title "
            "keywords).",
            [] {
                return objectSchema({{"title", "string",
                                      "Keywords matching the window title (e.g. 'Notepad', "
                                      "'Visual Studio Code', 'Chrome')",
                                      Required}});
            },
            &focusWindowTool, Display),
        tool("read_clipboard", "Read the current text content from the Windows system clipboard.",
             nullptr, &readClipboardTool, Display),
        tool(
            "write_clipboard", "Set text content into the Windows system clipboard.",
            [] {
                return objectSchema(
                    {{"text", "string", "Text to copy to the Windows clipboard", Required}});
            },
            &writeClipboardTool, Display),
        tool(
            "mouse_drag",
            "Press mouse button at (startX, startY), drag to (endX, endY), and release.",
            [] {
                return objectSchema(
                    {{"startX", "integer", nullptr, Required},
                     {"startY", "integer", nullptr, Required},
                     {"endX", "integer", nullptr, Required},
                     {"endY", "integer", nullptr, Required},
                     {"button", "string", "Mouse button: 'left' (default) or 'right'"}});
            },
            &mouseDragTool, Display),
        tool("get_active_window_info",
             "Get detailed information of the currently active focused window (title, process "
             "name, position, and dimensions).",
             nullptr, &getActiveWindowInfoTool, Display),
        tool(
            "window_action",
            "Perform window state action ('minimize', 'maximize', 'restore', 'close') on target "
            "window.",
            [] {
                return objectSchema(
                    {{"action", "string",
                      "Action to perform: 'minimize', 'maximize', 'restore', or 'close'", Required},
                     {"title", "string",
                      "Keywords matching window title (optional, defaults to active window)"}});
            },
            &windowActionTool, Display),
        tool(
            "inspect_ui_element",
            "Inspect the UIAutomation element under the mouse cursor or at specified "
            "coordinates.",
            [] {
                return objectSchema({{"x", "integer"}, {"y", "integer"}});
            },
            &inspectUiElementTool, Display),
        tool(
            "find_ui_elements",
            "Search UIAutomation elements across the entire Windows desktop by name or control "
            "type. Returns at most 30; cancelling the request stops the search.",
            [] {
                return objectSchema(
                    {{"name", "string", "Element name or title keyword to search", Required}});
            },
            &findUiElementsTool, Display),
        tool(
            "click_ui_element",
            "Find a UIAutomation element on the desktop by name, activate its parent window, "
            "and click its center.",
            [] {
                return objectSchema(
                    {{"name", "string", "Name of the UI element/button to find and click",
                      Required}});
            },
            &clickUiElementTool, Display),
        tool(
            "set_ui_element_text",
            "Set text value directly on an Edit/TextBox UIAutomation element across the "
            "desktop.",
            [] {
                return objectSchema(
                    {{"name", "string", "Name of the UI element/input box to find and set text",
                      Required},
                     {"text", "string", "Text value to write into the element", Required}});
            },
            &setUiElementTextTool, Display),
        tool(
            "key_down",
            "Press and hold a specific key (e.g., 'shift', 'ctrl', 'alt', 'space', 'a').",
            [] {
                return objectSchema({{"key", "string",
                                      "Key name to press down (e.g. 'shift', 'ctrl', 'alt', "
                                      "'space', 'a')",
                                      Required}});
            },
            &keyDownTool, Display),
        tool(
            "key_up", "Release a held key (e.g., 'shift', 'ctrl', 'alt', 'space', 'a').",
            [] {
                return objectSchema(
                    {{"key", "string",
                      "Key name to release (e.g. 'shift', 'ctrl', 'alt', 'space', 'a')",
                      Required}});
            },
            &keyUpTool, Display),
        tool(
            "paste_text_to_focused",
            "Set text into Windows clipboard and simulate Ctrl+V to paste into the active "
            "window instantly (100% reliable for Chinese text & symbols), at most 10000 "
            "characters.",
            [] {
                return objectSchema({{"text", "string",
                                      "Text to set to clipboard and paste via Ctrl+V", Required}});
            },
            &pasteTextToFocusedTool, Display),
        tool(
            "activate_window_and_paste",
            "Focus target window by title/process name, optionally send hotkey (e.g. 'ctrl+f') "
            "and paste text via Ctrl+V.",
            [] {
                return objectSchema(
                    {{"title", "string",
                      "Target window title or process keyword (e.g. 'WeLink', 'WeChat', "
                      "'Notepad')",
                      Required},
                     {"hotkey", "string",
                      "Optional hotkey to send after focusing window (e.g. 'ctrl+f', 'enter')"},
                     {"text", "string",
                      "Optional text to paste via Ctrl+V (at most 10000 characters)"}});
            },
            &activateWindowAndPasteTool, Display),
        tool(
            "open_folder_and_select",
            "Open Windows File Explorer and automatically highlight/select a specific file or "
            "folder.",
            [] {
                return objectSchema(
                    {{"path", "string",
                      "Absolute path to the file or directory to highlight in Explorer",
                      Required}});
            },
            &openFolderAndSelectTool),
        tool(
            "get_file_info",
            "Get file system metadata (size, created time, modified time, extension, "
            "permissions) for a target file.",
            [] {
                return objectSchema(
                    {{"path", "string", "Absolute path to the file or directory", Required}});
            },
            &getFileInfoTool),
    };
}

// False when the process runs on the offscreen platform (started without a reachable
// display).
bool mcpDisplayAvailable()
{
    const QString platform = QGuiApplication::platformName();
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) &&
           platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

McpToolResult mcpNoDisplayError()
{
    return mcpToolError(QStringLiteral(
        "no display: zelmor-mcp was started without a reachable desktop session, so this tool "
        "cannot see or drive the screen. Start the MCP client from the desktop session."));
}

} // namespace

const QList<McpTool>& mcpTools()
{
    static const QList<McpTool> table = buildTable();
    return table;
}

McpToolResult callMcpTool(const QString& name, const McpToolArgs& args)
{
    for (const McpTool& t : mcpTools()) {
        if (!t.handler || t.name != name) continue;
        if (t.needsDisplay && !mcpDisplayAvailable()) return mcpNoDisplayError();
        return t.handler(args);
    }
    return mcpToolError(QStringLiteral("unknown tool: %1").arg(name));
}

int mcpIntArg(const McpToolArgs& args, const QString& key, int fallback, bool* ok)
{
    bool number = false;
    const double value = args.value(key).toDouble(&number);
    if (ok) *ok = number;
    return number ? core::boundedInt(value) : fallback;
}

McpToolResult mcpToolError(const QString& message)
{
    return {{QStringLiteral("isError"), true}, {QStringLiteral("text"), message}};
}

QString mcpModelImageKey()
{
    return QStringLiteral("modelImage");
}

QJsonObject mcpResultJson(const McpToolResult& result)
{
    QVariantMap data = result;
    data.remove(mcpModelImageKey());
    return QJsonObject::fromVariantMap(data);
}

McpToolCancellation& McpToolCancellation::instance()
{
    static McpToolCancellation cancellation;
    return cancellation;
}

bool mcpToolPause(int ms)
{
    const QDeadlineTimer until(ms);
    McpToolCancellation& cancellation = McpToolCancellation::instance();
    while (!cancellation.isRequested() && !until.hasExpired())
        QThread::msleep(std::min<qint64>(until.remainingTime(), 10));
    return !cancellation.isRequested();
}

McpToolResult mcpToolStoppedError()
{
    return mcpToolError(QStringLiteral("stopped: the request was cancelled or input ended"));
}

} // namespace zelmor::service::mcp
