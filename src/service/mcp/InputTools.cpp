#include "InputTools.h"

#include "DesktopAccess.h"
#include "core/DesktopClipboard.h"
#include "platform/Input.h"

#include <QHash>
#include <QThread>

#include <cstdlib>
#include <optional>
#include <vector>

namespace zelmor::service::mcp {

namespace {

using platform::ButtonEvent;
using platform::KeyEvent;
using platform::MouseButton;

constexpr unsigned kControlKey = 0x11;
constexpr unsigned kVKey = 0x56;
constexpr int kTypingPauseMs = 10;
// Typing 10,000 characters takes about four minutes; longer texts are refused, not cut.
constexpr int kMaxTextLength = 10000;
// X sends a wheel press per notch; past 5,000 notches a call would keep the display busy.
constexpr int kMaxScrollDelta = 5000 * 120;
// More keys than any combination needs; each is a press and a release.
constexpr std::size_t kMaxHotkeyKeys = 16;

QString text(const McpToolArgs& args, const char* key)
{
    return args.value(QLatin1String(key)).toString();
}

int integer(const McpToolArgs& args, const char* key)
{
    return mcpIntArg(args, QLatin1String(key));
}

bool hasPoint(const McpToolArgs& args)
{
    return args.contains(QStringLiteral("x")) && args.contains(QStringLiteral("y"));
}

QString lowered(const McpToolArgs& args, const char* key, const char* fallback)
{
    return args.value(QLatin1String(key), QLatin1String(fallback)).toString().toLower();
}

void moveTo(int x, int y)
{
    platform::setCursorPosition({x, y});
}

void press(MouseButton button, bool down)
{
    platform::sendMouseButtons({ButtonEvent{button, down}});
}

McpToolResult success(McpToolResult result)
{
    result.insert(QStringLiteral("success"), true);
    return result;
}

// Null when the text is there and not too long to type or paste.
std::optional<McpToolResult> unusableText(const QString& text)
{
    if (text.isEmpty()) return mcpToolError(QStringLiteral("text cannot be empty"));
    if (text.size() > kMaxTextLength)
        return mcpToolError(QStringLiteral("text is %1 characters long, more than the %2 allowed")
                                .arg(text.size())
                                .arg(kMaxTextLength));
    return std::nullopt;
}

McpToolResult sendKey(const McpToolArgs& args, bool down)
{
    if (auto blocked = keyboardUnavailable()) return *blocked;
    const QString key = text(args, "key").trimmed();
    const unsigned code = mcpKeyCode(key);
    if (!code) return mcpToolError(QStringLiteral("unrecognized key: %1").arg(key));
    platform::sendKeys({KeyEvent{code, down}});
    return success({{QStringLiteral("key"), key}});
}

} // namespace

unsigned mcpKeyCode(const QString& name)
{
    static const QHash<QString, unsigned> named = [] {
        QHash<QString, unsigned> keys{
            {QStringLiteral("ctrl"), 0x11},      {QStringLiteral("control"), 0x11},
            {QStringLiteral("alt"), 0x12},       {QStringLiteral("shift"), 0x10},
            {QStringLiteral("win"), 0x5B},       {QStringLiteral("super"), 0x5B},
            {QStringLiteral("enter"), 0x0D},     {QStringLiteral("return"), 0x0D},
            {QStringLiteral("escape"), 0x1B},    {QStringLiteral("esc"), 0x1B},
            {QStringLiteral("tab"), 0x09},       {QStringLiteral("space"), 0x20},
            {QStringLiteral("backspace"), 0x08}, {QStringLiteral("delete"), 0x2E},
            {QStringLiteral("del"), 0x2E},       {QStringLiteral("up"), 0x26},
            {QStringLiteral("down"), 0x28},      {QStringLiteral("left"), 0x25},
            {QStringLiteral("right"), 0x27}};
        for (unsigned f = 1; f <= 12; ++f)
            keys.insert(QStringLiteral("f%1").arg(f), 0x6F + f);
        return keys;
    }();
    const QString key = name.trimmed().toLower();
    if (const auto it = named.constFind(key); it != named.constEnd()) return *it;
    // One UTF-16 unit only, as the Windows build asks VkKeyScanW: a surrogate pair is no key.
    if (key.size() == 1) return platform::virtualKeyForCharacter(key.at(0).unicode());
    return 0;
}

McpToolResult mouseClickTool(const McpToolArgs& args)
{
    if (auto blocked = pointerUnavailable()) return *blocked;
    if (hasPoint(args)) {
        moveTo(integer(args, "x"), integer(args, "y"));
        QThread::msleep(30);
    }
    const QString button = lowered(args, "button", "left");
    const int clicks = qBound(1, mcpIntArg(args, QStringLiteral("clicks"), 1), 3);
    const MouseButton pressed = button == QLatin1String("right")    ? MouseButton::Right
                                : button == QLatin1String("middle") ? MouseButton::Middle
                                                                    : MouseButton::Left;
    for (int i = 0; i < clicks; ++i) {
        if (i > 0) QThread::msleep(50);
        platform::sendMouseButtons({{pressed, true}, {pressed, false}});
    }
    const platform::Point at = platform::cursorPosition().value_or(platform::Point{});
    return success({{QStringLiteral("x"), at.x},
                    {QStringLiteral("y"), at.y},
                    {QStringLiteral("button"), button},
                    {QStringLiteral("clicks"), clicks}});
}

McpToolResult mouseMoveTool(const McpToolArgs& args)
{
    if (auto blocked = pointerUnavailable()) return *blocked;
    const int x = integer(args, "x");
    const int y = integer(args, "y");
    moveTo(x, y);
    return success({{QStringLiteral("x"), x}, {QStringLiteral("y"), y}});
}

McpToolResult mouseScrollTool(const McpToolArgs& args)
{
    if (auto blocked = pointerUnavailable()) return *blocked;
    int delta = integer(args, "delta");
    if (delta == 0) delta = -120;
    if (std::abs(delta) > kMaxScrollDelta)
        return mcpToolError(QStringLiteral("delta %1 is out of range: at most %2 either way")
                                .arg(delta)
                                .arg(kMaxScrollDelta));
    if (hasPoint(args)) {
        moveTo(integer(args, "x"), integer(args, "y"));
        QThread::msleep(20);
    }
    // X moves the wheel in whole notches, so a part of one moves a whole one.
    platform::sendMouseWheel(delta);
    return success({{QStringLiteral("delta"), delta}});
}

McpToolResult mouseDragTool(const McpToolArgs& args)
{
    if (auto blocked = pointerUnavailable()) return *blocked;
    const int startX = integer(args, "startX");
    const int startY = integer(args, "startY");
    const int endX = integer(args, "endX");
    const int endY = integer(args, "endY");
    const MouseButton button = lowered(args, "button", "left") == QLatin1String("right")
                                   ? MouseButton::Right
                                   : MouseButton::Left;
    moveTo(startX, startY);
    QThread::msleep(40);
    press(button, true);
    QThread::msleep(40);
    for (int i = 1; i <= 10; ++i) {
        moveTo(startX + (endX - startX) * i / 10, startY + (endY - startY) * i / 10);
        QThread::msleep(15);
    }
    press(button, false);
    return success({{QStringLiteral("startX"), startX},
                    {QStringLiteral("startY"), startY},
                    {QStringLiteral("endX"), endX},
                    {QStringLiteral("endY"), endY}});
}

McpToolResult keyDownTool(const McpToolArgs& args)
{
    return sendKey(args, true);
}

McpToolResult keyUpTool(const McpToolArgs& args)
{
    return sendKey(args, false);
}

McpToolResult sendHotkeyTool(const McpToolArgs& args)
{
    const QString hotkey = text(args, "hotkey").trimmed();
    if (hotkey.isEmpty()) return mcpToolError(QStringLiteral("hotkey cannot be empty"));
    if (auto blocked = keyboardUnavailable()) return *blocked;
    std::vector<unsigned> codes;
    for (const QString& part : hotkey.split(QLatin1Char('+'), Qt::SkipEmptyParts))
        if (const unsigned code = mcpKeyCode(part)) codes.push_back(code);
    if (codes.empty()) return mcpToolError(QStringLiteral("unrecognized hotkey: %1").arg(hotkey));
    if (codes.size() > kMaxHotkeyKeys)
        return mcpToolError(QStringLiteral("hotkey has %1 keys, more than the %2 allowed")
                                .arg(codes.size())
                                .arg(kMaxHotkeyKeys));
    std::vector<KeyEvent> events;
    for (unsigned code : codes)
        events.push_back({code, true});
    for (auto it = codes.rbegin(); it != codes.rend(); ++it)
        events.push_back({*it, false});
    platform::sendKeys(events);
    return success(
        {{QStringLiteral("hotkey"), hotkey}, {QStringLiteral("keysPressed"), int(codes.size())}});
}

McpToolResult typeTextTool(const McpToolArgs& args)
{
    const QString typed = text(args, "text");
    if (auto refused = unusableText(typed)) return *refused;
    if (auto blocked = keyboardUnavailable()) return *blocked;
    // X types a character at a time through a remapped key, so a surrogate pair is one key
    // press here (Windows sends two Unicode events). The pause around each press gives a busy
    // receiver time to read the remapping.
    const McpToolCancellation& cancellation = McpToolCancellation::instance();
    const bool whole = platform::typeText(typed.toStdU16String(), kTypingPauseMs,
                                          [&cancellation] { return cancellation.isRequested(); });
    if (cancellation.isRequested()) return mcpToolStoppedError();
    if (!whole)
        return mcpToolError(QStringLiteral(
            "not all of the text could be typed: the desktop's keyboard layout has no key for "
            "some of its characters, and the desktop offers no virtual keyboard to add one"));
    return success({{QStringLiteral("length"), int(typed.size())}});
}

McpToolResult pasteTextToFocusedTool(const McpToolArgs& args)
{
    const QString pasted = text(args, "text");
    if (auto refused = unusableText(pasted)) return *refused;
    if (auto blocked = clipboardUnavailable()) return *blocked;
    if (auto blocked = keyboardUnavailable()) return *blocked;
    // On X the target fetches the text from this process once the caller's event loop runs
    // again, which it does as soon as the tool returns.
    core::setClipboardText(pasted);
    QThread::msleep(30);
    platform::sendKeys({{kControlKey, true}, {kVKey, true}, {kVKey, false}, {kControlKey, false}});
    return success({{QStringLiteral("pastedText"), pasted}});
}

McpToolResult readClipboardTool(const McpToolArgs&)
{
    // Qt reads a clipboard it could not open as an empty one.
    if (!platform::clipboardReadable())
        return mcpToolError(QStringLiteral("could not open Windows clipboard"));
    if (auto blocked = clipboardUnavailable()) return *blocked;
    const std::optional<QString> text = core::clipboardText();
    return success({{QStringLiteral("hasText"), text.has_value()},
                    {QStringLiteral("text"), text.value_or(QString())}});
}

McpToolResult writeClipboardTool(const McpToolArgs& args)
{
    const QString written = text(args, "text");
    if (auto blocked = clipboardUnavailable()) return *blocked;
    // The text stays on the clipboard only while this process runs: X keeps no copy.
    core::setClipboardText(written);
    return success({{QStringLiteral("length"), int(written.size())}});
}

} // namespace zelmor::service::mcp
