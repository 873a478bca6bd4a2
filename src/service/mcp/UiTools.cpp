#include "UiTools.h"

#include "platform/Input.h"
#include "platform/UiElements.h"

#include <QHash>
#include <QThread>

#include <functional>

namespace zelmor::service::mcp {

namespace {

using platform::UiElement;

constexpr int kMaxFound = 30;

McpToolResult success(McpToolResult result)
{
    result.insert(QStringLiteral("success"), true);
    return result;
}

QVariantMap describe(const UiElement& element)
{
    QVariantMap record;
    if (element.isNull()) return record;
    const platform::UiElementInfo info = element.describe();
    if (info.name) record.insert(QStringLiteral("name"), QString::fromStdString(*info.name));
    if (info.automationId)
        record.insert(QStringLiteral("automationId"), QString::fromStdString(*info.automationId));
    record.insert(QStringLiteral("controlType"), mcpControlTypeName(info.controlType));
    if (info.rect) {
        record.insert(QStringLiteral("x"), info.rect->x);
        record.insert(QStringLiteral("y"), info.rect->y);
        record.insert(QStringLiteral("width"), info.rect->width);
        record.insert(QStringLiteral("height"), info.rect->height);
    }
    return record;
}

// Walks every element of the other programs on the desktop in tree order, handing those whose
// name holds the keyword, ignoring case, to `visit` until it returns false. Each name is a
// round trip to its program, so the walk can take long: false when the caller gave up on it.
bool walkMatches(const QString& keyword,
                 const std::function<bool(const UiElement&, const QString& name)>& visit)
{
    const McpToolCancellation& cancellation = McpToolCancellation::instance();
    for (const UiElement& element : UiElement().descendants()) {
        if (cancellation.isRequested()) return false;
        const std::optional<std::string> name = element.name();
        if (!name) continue;
        const QString text = QString::fromStdString(*name);
        if (text.contains(keyword, Qt::CaseInsensitive) && !visit(element, text)) return true;
    }
    return true;
}

QString keywordOf(const McpToolArgs& args)
{
    return args.value(QStringLiteral("name")).toString().trimmed();
}

McpToolResult emptyNameError()
{
    return mcpToolError(QStringLiteral("name cannot be empty"));
}

McpToolResult noAutomationError()
{
    return mcpToolError(QStringLiteral("failed to initialize UIAutomation"));
}

} // namespace

QString mcpControlTypeName(int controlType)
{
    static const QHash<int, QString> names{
        {50000, QStringLiteral("Button")},      {50001, QStringLiteral("Calendar")},
        {50002, QStringLiteral("CheckBox")},    {50003, QStringLiteral("ComboBox")},
        {50004, QStringLiteral("Edit")},        {50005, QStringLiteral("Hyperlink")},
        {50006, QStringLiteral("Image")},       {50007, QStringLiteral("ListItem")},
        {50008, QStringLiteral("List")},        {50009, QStringLiteral("Menu")},
        {50010, QStringLiteral("MenuBar")},     {50011, QStringLiteral("MenuItem")},
        {50012, QStringLiteral("ProgressBar")}, {50013, QStringLiteral("RadioButton")},
        {50014, QStringLiteral("ScrollBar")},   {50015, QStringLiteral("Slider")},
        {50018, QStringLiteral("Tab")},         {50019, QStringLiteral("TabItem")},
        {50020, QStringLiteral("Text")},        {50021, QStringLiteral("ToolBar")},
        {50022, QStringLiteral("ToolTip")},     {50023, QStringLiteral("Tree")},
        {50024, QStringLiteral("TreeItem")},    {50032, QStringLiteral("Window")}};
    return names.value(controlType, QStringLiteral("Custom(%1)").arg(controlType));
}

McpToolResult inspectUiElementTool(const McpToolArgs& args)
{
    if (!platform::uiAutomationAvailable()) return noAutomationError();
    platform::Point point;
    if (args.contains(QStringLiteral("x")) && args.contains(QStringLiteral("y")))
        point = {mcpIntArg(args, QStringLiteral("x")), mcpIntArg(args, QStringLiteral("y"))};
    else
        point = platform::cursorPosition().value_or(platform::Point{});
    const QVariantMap element = describe(platform::uiElementAt(point));
    return {{QStringLiteral("element"), element}, {QStringLiteral("success"), !element.isEmpty()}};
}

McpToolResult findUiElementsTool(const McpToolArgs& args)
{
    const QString keyword = keywordOf(args);
    if (keyword.isEmpty()) return emptyNameError();
    if (!platform::uiAutomationAvailable()) return noAutomationError();
    QVariantList elements;
    const bool walked = walkMatches(keyword, [&](const UiElement& element, const QString&) {
        elements << describe(element);
        return elements.size() < kMaxFound;
    });
    if (!walked) return mcpToolStoppedError();
    return success(
        {{QStringLiteral("elements"), elements}, {QStringLiteral("count"), int(elements.size())}});
}

McpToolResult clickUiElementTool(const McpToolArgs& args)
{
    const QString keyword = keywordOf(args);
    if (keyword.isEmpty()) return emptyNameError();
    if (!platform::uiAutomationAvailable()) return noAutomationError();
    QString matched;
    platform::Point centre;
    const bool walked = walkMatches(keyword, [&](const UiElement& element, const QString& name) {
        const std::optional<platform::Rect> r = element.rect();
        if (!r || r->width <= 0 || r->height <= 0) return true;
        matched = name;
        centre = {r->x + r->width / 2, r->y + r->height / 2};
        return false;
    });
    if (!walked) return mcpToolStoppedError();
    if (matched.isEmpty())
        return mcpToolError(QStringLiteral("no UI element found matching '%1'").arg(keyword));

    // The click goes to whatever window is on top there, brought forward first.
    if (const platform::WindowHandle window = platform::windowAt(centre)) {
        platform::activateWindow(window);
        QThread::msleep(80);
    }
    platform::setCursorPosition(centre);
    QThread::msleep(40);
    platform::sendMouseButtons(
        {{platform::MouseButton::Left, true}, {platform::MouseButton::Left, false}});
    return success({{QStringLiteral("matchedName"), matched},
                    {QStringLiteral("x"), centre.x},
                    {QStringLiteral("y"), centre.y}});
}

McpToolResult setUiElementTextTool(const McpToolArgs& args)
{
    const QString keyword = keywordOf(args);
    if (keyword.isEmpty()) return emptyNameError();
    if (!platform::uiAutomationAvailable()) return noAutomationError();
    const QString text = args.value(QStringLiteral("text")).toString();
    const std::string utf8 = text.toStdString();
    QString matched;
    // The first match that takes the text is written: labels and buttons refuse it.
    const bool walked = walkMatches(keyword, [&](const UiElement& element, const QString& name) {
        if (!element.setText(utf8)) return true;
        matched = name;
        return false;
    });
    if (!walked) return mcpToolStoppedError();
    if (matched.isEmpty())
        return mcpToolError(
            QStringLiteral("no editable UI element found matching '%1'").arg(keyword));
    return success({{QStringLiteral("matchedName"), matched}, {QStringLiteral("text"), text}});
}

} // namespace zelmor::service::mcp
