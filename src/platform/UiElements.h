#pragma once

#include "Geometry.h"
#include "Windows.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zelmor::platform {

// UI Automation control-type ids, the vocabulary in which elements report their kind.
enum UiControlType : int {
    UiButton = 50000,
    UiCalendar = 50001,
    UiCheckBox = 50002,
    UiComboBox = 50003,
    UiEdit = 50004,
    UiHyperlink = 50005,
    UiImage = 50006,
    UiListItem = 50007,
    UiList = 50008,
    UiMenu = 50009,
    UiMenuBar = 50010,
    UiMenuItem = 50011,
    UiProgressBar = 50012,
    UiRadioButton = 50013,
    UiScrollBar = 50014,
    UiSlider = 50015,
    UiSpinner = 50016,
    UiStatusBar = 50017,
    UiTab = 50018,
    UiTabItem = 50019,
    UiText = 50020,
    UiToolBar = 50021,
    UiToolTip = 50022,
    UiTree = 50023,
    UiTreeItem = 50024,
    UiCustom = 50025,
    UiGroup = 50026,
    UiDataGrid = 50028,
    UiDataItem = 50029,
    UiDocument = 50030,
    UiWindow = 50032,
    UiPane = 50033,
    UiHeader = 50034,
    UiHeaderItem = 50035,
    UiTable = 50036,
    UiTitleBar = 50037,
    UiSeparator = 50038,
};

// What one element says about itself; a property that could not be read is left empty.
struct UiElementInfo
{
    std::optional<std::string> name; // UTF-8
    std::optional<std::string> automationId;
    int controlType = UiCustom;
    std::optional<Rect> rect; // screen pixels
};

// A live reference to an element of another program's user interface, released with the last
// copy. Every read asks the program again; nothing is cached. This program's own elements are
// never found.
class UiElement
{
public:
    struct Node; // the backend's own reference

    UiElement() = default;
    explicit UiElement(std::shared_ptr<Node> node) : m_node(std::move(node)) {}

    bool isNull() const { return !m_node; }
    const std::shared_ptr<Node>& node() const { return m_node; }

    std::optional<std::string> name() const;
    int controlType() const;
    std::optional<Rect> rect() const;
    UiElementInfo describe() const;

    // Every element below this one, depth first in tree order; below the desktop when null.
    std::vector<UiElement> descendants() const;

    // The element's default action, as a press of a button.
    bool invoke() const;
    // Replaces an editable text, or a numeric value given as text.
    bool setText(const std::string& utf8) const;

    bool operator==(const UiElement& other) const;

private:
    std::shared_ptr<Node> m_node;
};

// False when the accessibility service cannot be reached; every walk is then empty.
bool uiAutomationAvailable();

// The innermost element at a screen point; null when none.
UiElement uiElementAt(Point point);

// The element of a top-level window; null when its program exposes none.
UiElement uiElementOfWindow(WindowHandle window);

} // namespace zelmor::platform
