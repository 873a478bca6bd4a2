#include "WindowTools.h"

#include "DesktopAccess.h"
#include "InputTools.h"
#include "core/Utilities.h"
#include "platform/Windows.h"

#include <QDateTime>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QThread>
#include <QUrl>

#include <optional>

namespace zelmor::service::mcp {

namespace {

using platform::WindowHandle;
using platform::WindowRecord;

// As much of a title as the Windows build reads into its 512-unit buffer.
constexpr int kTitleUnits = 511;

QString argument(const McpToolArgs& args, const char* key)
{
    return args.value(QLatin1String(key)).toString();
}

QString windowText(const WindowRecord& w)
{
    return QString::fromStdString(w.title).left(kTitleUnits);
}

QString handleText(WindowHandle handle)
{
    return QString::number(handle, 16);
}

// Where the desktop keeps a window's place to itself, the answer says so instead of a place.
QVariantMap windowFields(const WindowRecord& w)
{
    QVariantMap fields{
        {QStringLiteral("title"), windowText(w).trimmed()},
        {QStringLiteral("hwnd"), handleText(w.handle)},
        {QStringLiteral("process"), QString::fromStdString(platform::windowProcessName(w.handle))}};
    if (!w.frameKnown) {
        fields.insert(QStringLiteral("rectangle"),
                      QStringLiteral("unknown: this desktop does not tell where its windows are"));
        return fields;
    }
    fields.insert(QStringLiteral("x"), w.frame.x);
    fields.insert(QStringLiteral("y"), w.frame.y);
    fields.insert(QStringLiteral("width"), w.frame.width);
    fields.insert(QStringLiteral("height"), w.frame.height);
    return fields;
}

// The topmost shown window whose title holds the keyword, ignoring case. Minimized windows
// count as shown; untitled ones are never found.
std::optional<WindowRecord> findWindow(const QString& keyword)
{
    for (const WindowRecord& w : platform::listTopLevelWindows()) {
        if (!w.visible || w.title.empty()) continue;
        if (windowText(w).contains(keyword, Qt::CaseInsensitive)) return w;
    }
    return std::nullopt;
}

McpToolResult success(McpToolResult result)
{
    result.insert(QStringLiteral("success"), true);
    return result;
}

// One program name looked up on the search path; a command line is not split. The program's
// standard streams are the null device: it must not read the client's requests.
bool startProgram(const QString& program)
{
    QProcess process;
    process.setProgram(program);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    return process.startDetached();
}

} // namespace

McpToolResult getActiveWindowInfoTool(const McpToolArgs&)
{
    if (auto blocked = windowsUnavailable()) return *blocked;
    const WindowRecord active = platform::foregroundWindow();
    if (!active.handle) return mcpToolError(QStringLiteral("no active window found"));
    return success(windowFields(active));
}

McpToolResult listWindowsTool(const McpToolArgs&)
{
    if (auto blocked = windowsUnavailable()) return *blocked;
    QVariantList windows;
    for (const WindowRecord& w : platform::listTopLevelWindows()) {
        if (!w.visible || windowText(w).trimmed().isEmpty() || (w.frameKnown && w.frame.isEmpty()))
            continue;
        windows << windowFields(w);
    }
    return success(
        {{QStringLiteral("windows"), windows}, {QStringLiteral("count"), int(windows.size())}});
}

McpToolResult focusWindowTool(const McpToolArgs& args)
{
    const QString keyword = argument(args, "title").trimmed();
    if (keyword.isEmpty()) return mcpToolError(QStringLiteral("title keyword cannot be empty"));
    if (auto blocked = windowsUnavailable()) return *blocked;
    const std::optional<WindowRecord> found = findWindow(keyword);
    if (!found)
        return mcpToolError(QStringLiteral("no visible window found matching '%1'").arg(keyword));
    // Un-minimizes, raises and focuses in one request; the window manager may still refuse.
    platform::activateWindow(found->handle);
    return success({{QStringLiteral("matchedTitle"), windowText(*found)},
                    {QStringLiteral("hwnd"), handleText(found->handle)}});
}

McpToolResult windowActionTool(const McpToolArgs& args)
{
    const QString action = argument(args, "action").trimmed().toLower();
    const QString keyword = argument(args, "title").trimmed();
    if (auto blocked = windowsUnavailable()) return *blocked;
    WindowRecord target;
    if (keyword.isEmpty())
        target = platform::foregroundWindow();
    else if (const std::optional<WindowRecord> found = findWindow(keyword))
        target = *found;
    if (!target.handle) return mcpToolError(QStringLiteral("window not found"));

    if (action == QLatin1String("minimize"))
        platform::minimizeWindow(target.handle);
    else if (action == QLatin1String("maximize"))
        platform::maximizeWindow(target.handle);
    else if (action == QLatin1String("restore"))
        platform::restoreWindow(target.handle);
    else if (action == QLatin1String("close"))
        platform::closeWindow(target.handle);
    else
        return mcpToolError(QStringLiteral("unknown action: %1").arg(action));
    return success(
        {{QStringLiteral("action"), action}, {QStringLiteral("title"), windowText(target)}});
}

McpToolResult activateWindowAndPasteTool(const McpToolArgs& args)
{
    const QString title = argument(args, "title");
    if (title.isEmpty()) return mcpToolError(QStringLiteral("title cannot be empty"));
    const McpToolResult focused = focusWindowTool({{QStringLiteral("title"), title}});
    if (focused.value(QStringLiteral("isError")).toBool()) return focused;
    QThread::msleep(80);
    const QString hotkey = argument(args, "hotkey");
    if (!hotkey.isEmpty()) {
        sendHotkeyTool({{QStringLiteral("hotkey"), hotkey}});
        QThread::msleep(60);
    }
    const QString text = argument(args, "text");
    if (!text.isEmpty()) {
        const McpToolResult pasted = pasteTextToFocusedTool({{QStringLiteral("text"), text}});
        if (pasted.value(QStringLiteral("isError")).toBool()) return pasted;
    }
    return success({{QStringLiteral("title"), title}});
}

McpToolResult launchAppTool(const McpToolArgs& args)
{
    const QString target = argument(args, "target").trimmed();
    if (target.isEmpty()) return mcpToolError(QStringLiteral("target cannot be empty"));
    bool launched = false;
    if (target.startsWith(QLatin1String("http://")) || target.startsWith(QLatin1String("https://")))
        launched = QDesktopServices::openUrl(QUrl(target));
    else if (QFileInfo::exists(target))
        launched = QDesktopServices::openUrl(QUrl::fromLocalFile(target));
    else
        launched = startProgram(target);
    if (!launched) return mcpToolError(QStringLiteral("Failed to launch target: %1").arg(target));
    // A fixed pause for the program to come up, cut short when the caller gives up; nothing
    // looks for its window.
    mcpToolPause(1000);
    return success({{QStringLiteral("text"),
                     QStringLiteral("Launched successfully: %1. App window is now ready for UI "
                                    "automation.")
                         .arg(target)}});
}

McpToolResult openFolderAndSelectTool(const McpToolArgs& args)
{
    const QString path = argument(args, "path").trimmed();
    if (path.isEmpty() || !QFileInfo::exists(path))
        return mcpToolError(QStringLiteral("file does not exist: %1").arg(path));
    const QString native = QDir::toNativeSeparators(path);
    const bool shown = core::showInFileManager(path);
    return {{QStringLiteral("path"), native}, {QStringLiteral("success"), shown}};
}

McpToolResult getFileInfoTool(const McpToolArgs& args)
{
    const QString path = argument(args, "path").trimmed();
    const QFileInfo info(path);
    if (!info.exists()) return mcpToolError(QStringLiteral("file does not exist: %1").arg(path));
    return success({{QStringLiteral("path"), info.absoluteFilePath()},
                    {QStringLiteral("fileName"), info.fileName()},
                    {QStringLiteral("sizeBytes"), info.size()},
                    {QStringLiteral("isDir"), info.isDir()},
                    {QStringLiteral("isFile"), info.isFile()},
                    {QStringLiteral("suffix"), info.suffix()},
                    {QStringLiteral("created"), info.birthTime().toString(Qt::ISODate)},
                    {QStringLiteral("lastModified"), info.lastModified().toString(Qt::ISODate)},
                    {QStringLiteral("isWritable"), info.isWritable()}});
}

} // namespace zelmor::service::mcp
