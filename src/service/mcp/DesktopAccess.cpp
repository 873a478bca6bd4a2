#include "DesktopAccess.h"

#include "core/DesktopClipboard.h"
#include "platform/Input.h"
#include "platform/Windows.h"

namespace zelmor::service::mcp {

namespace {

// As the session names itself; "Wayland" when it does not.
QString desktop()
{
    const QString named = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    return named.isEmpty() ? QStringLiteral("Wayland") : named;
}

McpToolResult portalError(const QString& why)
{
    return mcpToolError(QStringLiteral("this desktop (%1) takes input only through its "
                                       "RemoteDesktop portal, and %2: input was not sent")
                            .arg(desktop(), why));
}

std::optional<McpToolResult> inputUnavailable(platform::InputDevice device, const char* what,
                                              const char* protocol)
{
    switch (platform::inputBlocker(device)) {
    case platform::InputBlocker::None:
        return std::nullopt;
    case platform::InputBlocker::NoDisplay:
        return mcpToolError(QStringLiteral("no display is reachable: input goes nowhere"));
    case platform::InputBlocker::NoInjection:
        return mcpToolError(
            QStringLiteral("the X server lacks the XTest extension: input cannot be sent"));
    case platform::InputBlocker::NoVirtualDevice:
        return mcpToolError(QStringLiteral("this desktop (%1) offers no %2: its compositor lacks "
                                           "the %3 protocol and no RemoteDesktop portal is there, "
                                           "so input cannot be sent")
                                .arg(desktop(), QLatin1String(what), QLatin1String(protocol)));
    case platform::InputBlocker::PortalRefused:
        return portalError(QStringLiteral("the user refused it in the portal's dialog"));
    case platform::InputBlocker::PortalNoAnswer:
        return portalError(QStringLiteral("nobody answered the portal's dialog in time"));
    case platform::InputBlocker::PortalFailed:
        break;
    }
    return portalError(QStringLiteral("the portal could not start a remote desktop session"));
}

} // namespace

std::optional<McpToolResult> keyboardUnavailable()
{
    return inputUnavailable(platform::InputDevice::Keyboard, "virtual keyboard",
                            "virtual-keyboard (zwp_virtual_keyboard_manager_v1)");
}

std::optional<McpToolResult> pointerUnavailable()
{
    return inputUnavailable(platform::InputDevice::Pointer, "virtual pointer",
                            "wlr-virtual-pointer (zwlr_virtual_pointer_manager_v1)");
}

std::optional<McpToolResult> clipboardUnavailable()
{
    if (core::clipboardWithoutFocus()) return std::nullopt;
    return mcpToolError(
        QStringLiteral("this desktop (%1) gives its clipboard only to the program in focus: its "
                       "compositor lacks the wlr-data-control protocol "
                       "(zwlr_data_control_manager_v1)")
            .arg(desktop()));
}

std::optional<McpToolResult> windowsUnavailable()
{
    if (platform::windowManagementAvailable()) return std::nullopt;
    return mcpToolError(
        QStringLiteral("this desktop (%1) lets no other program list or manage its windows: its "
                       "compositor offers neither the wlr-foreign-toplevel-management protocol "
                       "(zwlr_foreign_toplevel_manager_v1) nor Plasma's window management")
            .arg(desktop()));
}

} // namespace zelmor::service::mcp
