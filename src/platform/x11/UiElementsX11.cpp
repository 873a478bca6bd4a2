// User-interface elements of other programs through AT-SPI on the accessibility bus
// (Windows: UI Automation over COM).

#include "../Session.h"
#include "../UiElements.h"

#include <atspi/atspi.h>
#include <unistd.h>

#include <cctype>
#include <locale>
#include <sstream>

namespace zelmor::platform {

struct UiElement::Node
{
    explicit Node(AtspiAccessible* a) : accessible(a) {}
    ~Node() { g_object_unref(accessible); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    AtspiAccessible* accessible; // owns one reference
};

namespace {

struct RoleType
{
    AtspiRole role;
    int controlType;
};

// AT-SPI roles in the control-type vocabulary; any other role is a custom control.
constexpr RoleType kRoleTypes[] = {
    {ATSPI_ROLE_PUSH_BUTTON, UiButton},
    {ATSPI_ROLE_TOGGLE_BUTTON, UiButton},
    {ATSPI_ROLE_PUSH_BUTTON_MENU, UiButton},
    {ATSPI_ROLE_CALENDAR, UiCalendar},
    {ATSPI_ROLE_CHECK_BOX, UiCheckBox},
    {ATSPI_ROLE_COMBO_BOX, UiComboBox},
    {ATSPI_ROLE_ENTRY, UiEdit},
    {ATSPI_ROLE_TEXT, UiEdit},
    {ATSPI_ROLE_PASSWORD_TEXT, UiEdit},
    {ATSPI_ROLE_EDITBAR, UiEdit},
    {ATSPI_ROLE_DATE_EDITOR, UiEdit},
    {ATSPI_ROLE_LINK, UiHyperlink},
    {ATSPI_ROLE_IMAGE, UiImage},
    {ATSPI_ROLE_ICON, UiImage},
    {ATSPI_ROLE_LIST_ITEM, UiListItem},
    {ATSPI_ROLE_LIST, UiList},
    {ATSPI_ROLE_LIST_BOX, UiList},
    {ATSPI_ROLE_MENU, UiMenu},
    {ATSPI_ROLE_POPUP_MENU, UiMenu},
    {ATSPI_ROLE_MENU_BAR, UiMenuBar},
    {ATSPI_ROLE_MENU_ITEM, UiMenuItem},
    {ATSPI_ROLE_CHECK_MENU_ITEM, UiMenuItem},
    {ATSPI_ROLE_RADIO_MENU_ITEM, UiMenuItem},
    {ATSPI_ROLE_TEAROFF_MENU_ITEM, UiMenuItem},
    {ATSPI_ROLE_PROGRESS_BAR, UiProgressBar},
    {ATSPI_ROLE_LEVEL_BAR, UiProgressBar},
    {ATSPI_ROLE_RADIO_BUTTON, UiRadioButton},
    {ATSPI_ROLE_SCROLL_BAR, UiScrollBar},
    {ATSPI_ROLE_SLIDER, UiSlider},
    {ATSPI_ROLE_DIAL, UiSlider},
    {ATSPI_ROLE_SPIN_BUTTON, UiSpinner},
    {ATSPI_ROLE_STATUS_BAR, UiStatusBar},
    {ATSPI_ROLE_PAGE_TAB_LIST, UiTab},
    {ATSPI_ROLE_PAGE_TAB, UiTabItem},
    {ATSPI_ROLE_LABEL, UiText},
    {ATSPI_ROLE_STATIC, UiText},
    {ATSPI_ROLE_CAPTION, UiText},
    {ATSPI_ROLE_HEADING, UiText},
    {ATSPI_ROLE_PARAGRAPH, UiText},
    {ATSPI_ROLE_ACCELERATOR_LABEL, UiText},
    {ATSPI_ROLE_TOOL_BAR, UiToolBar},
    {ATSPI_ROLE_TOOL_TIP, UiToolTip},
    {ATSPI_ROLE_TREE, UiTree},
    {ATSPI_ROLE_TREE_TABLE, UiTree},
    {ATSPI_ROLE_TREE_ITEM, UiTreeItem},
    {ATSPI_ROLE_GROUPING, UiGroup},
    {ATSPI_ROLE_FORM, UiGroup},
    {ATSPI_ROLE_TABLE, UiTable},
    {ATSPI_ROLE_TABLE_CELL, UiDataItem},
    {ATSPI_ROLE_TABLE_ROW, UiDataItem},
    {ATSPI_ROLE_COLUMN_HEADER, UiHeaderItem},
    {ATSPI_ROLE_ROW_HEADER, UiHeaderItem},
    {ATSPI_ROLE_TABLE_COLUMN_HEADER, UiHeaderItem},
    {ATSPI_ROLE_TABLE_ROW_HEADER, UiHeaderItem},
    {ATSPI_ROLE_HEADER, UiHeader},
    {ATSPI_ROLE_DOCUMENT_FRAME, UiDocument},
    {ATSPI_ROLE_DOCUMENT_TEXT, UiDocument},
    {ATSPI_ROLE_DOCUMENT_WEB, UiDocument},
    {ATSPI_ROLE_DOCUMENT_EMAIL, UiDocument},
    {ATSPI_ROLE_DOCUMENT_SPREADSHEET, UiDataGrid},
    {ATSPI_ROLE_DOCUMENT_PRESENTATION, UiDocument},
    {ATSPI_ROLE_FRAME, UiWindow},
    {ATSPI_ROLE_WINDOW, UiWindow},
    {ATSPI_ROLE_DIALOG, UiWindow},
    {ATSPI_ROLE_ALERT, UiWindow},
    {ATSPI_ROLE_FILE_CHOOSER, UiWindow},
    {ATSPI_ROLE_COLOR_CHOOSER, UiWindow},
    {ATSPI_ROLE_FONT_CHOOSER, UiWindow},
    {ATSPI_ROLE_INTERNAL_FRAME, UiWindow},
    {ATSPI_ROLE_PANEL, UiPane},
    {ATSPI_ROLE_FILLER, UiPane},
    {ATSPI_ROLE_SCROLL_PANE, UiPane},
    {ATSPI_ROLE_SPLIT_PANE, UiPane},
    {ATSPI_ROLE_VIEWPORT, UiPane},
    {ATSPI_ROLE_LAYERED_PANE, UiPane},
    {ATSPI_ROLE_ROOT_PANE, UiPane},
    {ATSPI_ROLE_OPTION_PANE, UiPane},
    {ATSPI_ROLE_SECTION, UiPane},
    {ATSPI_ROLE_TITLE_BAR, UiTitleBar},
    {ATSPI_ROLE_SEPARATOR, UiSeparator},
};

// A walk into a container claiming more children than this asks whether they are real ones;
// tables that manage their own descendants report millions of cells.
constexpr int kLargeContainer = 1000;
// Guards against a broken tree that leads back into itself.
constexpr int kMaxDepth = 256;

// The library aborts the process on a call that needs a bus it could not reach, so nothing
// is asked of it after a failed start.
bool busReachable()
{
    static const bool reachable = atspi_init() != 2; // 2: no accessibility bus
    return reachable;
}

AtspiAccessible* desktop()
{
    return busReachable() ? atspi_get_desktop(0) : nullptr; // a new reference
}

UiElement wrap(AtspiAccessible* owned)
{
    return owned ? UiElement(std::make_shared<UiElement::Node>(owned)) : UiElement();
}

AtspiAccessible* accessibleOf(const UiElement& e)
{
    return e.isNull() ? nullptr : e.node()->accessible;
}

std::optional<std::string> takeString(gchar* text, GError* error)
{
    if (error) g_error_free(error);
    if (!text) return std::nullopt;
    std::string s(text);
    g_free(text);
    return s;
}

AtspiRole roleOf(AtspiAccessible* a)
{
    GError* error = nullptr;
    const AtspiRole role = atspi_accessible_get_role(a, &error);
    if (error) {
        g_error_free(error);
        return ATSPI_ROLE_INVALID;
    }
    return role;
}

std::int64_t processOf(AtspiAccessible* a)
{
    GError* error = nullptr;
    const guint pid = atspi_accessible_get_process_id(a, &error);
    if (error) {
        g_error_free(error);
        return 0;
    }
    return pid;
}

bool hasState(AtspiAccessible* a, AtspiStateType state)
{
    AtspiStateSet* set = atspi_accessible_get_state_set(a);
    if (!set) return false;
    const bool has = atspi_state_set_contains(set, state);
    g_object_unref(set);
    return has;
}

std::optional<Rect> toolkitExtentsOf(AtspiAccessible* a)
{
    AtspiComponent* component = atspi_accessible_get_component_iface(a);
    if (!component) return std::nullopt;
    GError* error = nullptr;
    AtspiRect* r = atspi_component_get_extents(component, ATSPI_COORD_TYPE_SCREEN, &error);
    g_object_unref(component);
    if (error) g_error_free(error);
    if (!r) return std::nullopt;
    const Rect rect{r->x, r->y, r->width, r->height};
    g_free(r);
    return rect;
}

// The element's window: the last ancestor below its application. A new reference.
AtspiAccessible* windowOf(AtspiAccessible* a)
{
    g_object_ref(a);
    for (int depth = 0; depth < kMaxDepth; ++depth) {
        AtspiAccessible* parent = atspi_accessible_get_parent(a, nullptr);
        if (!parent || roleOf(parent) == ATSPI_ROLE_APPLICATION ||
            roleOf(parent) == ATSPI_ROLE_DESKTOP_FRAME) {
            if (parent) g_object_unref(parent);
            break;
        }
        g_object_unref(a);
        a = parent;
    }
    return a;
}

// A Wayland client does not know where its windows are: its toolkit puts every window at the
// desktop's origin, and its places are the window's own. They are moved by the window's place
// where the desktop tells it, and unknown where it does not.
std::optional<Rect> extentsOf(AtspiAccessible* a)
{
    std::optional<Rect> rect = toolkitExtentsOf(a);
    if (!rect || displayServer() != DisplayServer::Wayland) return rect;
    AtspiAccessible* window = windowOf(a);
    const std::optional<Rect> origin = toolkitExtentsOf(window);
    const std::optional<std::string> title =
        takeString(atspi_accessible_get_name(window, nullptr), nullptr);
    g_object_unref(window);
    if (!origin || origin->x != 0 || origin->y != 0) return rect;
    for (const WindowRecord& w : listTopLevelWindows())
        // A frame with decorations around the window would put the places off by their size.
        if (w.frameKnown && title && w.title == *title && w.frame.width == origin->width &&
            w.frame.height == origin->height)
            return Rect{rect->x + w.frame.x, rect->y + w.frame.y, rect->width, rect->height};
    return std::nullopt;
}

// The programs on the bus, less this one: an AT-SPI call into our own process would wait for
// a reply that only this thread could give (UI Automation answers in-process calls itself).
std::vector<UiElement> applications()
{
    std::vector<UiElement> apps;
    AtspiAccessible* root = desktop();
    if (!root) return apps;
    atspi_accessible_clear_cache(root); // every walk reads the programs afresh
    GError* error = nullptr;
    const int count = atspi_accessible_get_child_count(root, &error);
    if (error) g_error_free(error);
    const std::int64_t self = getpid();
    for (int i = 0; i < count; ++i) {
        error = nullptr;
        UiElement app = wrap(atspi_accessible_get_child_at_index(root, i, &error));
        if (error) g_error_free(error);
        if (!app.isNull() && processOf(accessibleOf(app)) != self) apps.push_back(std::move(app));
    }
    g_object_unref(root);
    return apps;
}

std::vector<UiElement> childrenOf(AtspiAccessible* parent)
{
    std::vector<UiElement> children;
    GError* error = nullptr;
    const int count = atspi_accessible_get_child_count(parent, &error);
    if (error) {
        g_error_free(error);
        return children;
    }
    if (count > kLargeContainer && hasState(parent, ATSPI_STATE_MANAGES_DESCENDANTS))
        return children;
    for (int i = 0; i < count; ++i) {
        error = nullptr;
        UiElement child = wrap(atspi_accessible_get_child_at_index(parent, i, &error));
        if (error) g_error_free(error);
        if (!child.isNull()) children.push_back(std::move(child));
    }
    return children;
}

void collect(AtspiAccessible* parent, int depth, std::vector<UiElement>& out)
{
    if (depth > kMaxDepth) return;
    for (UiElement& child : childrenOf(parent)) {
        AtspiAccessible* a = accessibleOf(child);
        out.push_back(std::move(child));
        collect(a, depth + 1, out);
    }
}

bool parseNumber(const std::string& text, double& value)
{
    std::istringstream in(text);
    in.imbue(std::locale::classic()); // "2.5" whatever the program's locale
    in >> value;
    if (in.fail()) return false;
    in >> std::ws;
    return in.eof();
}

bool sameText(const std::optional<std::string>& a, const std::string& b)
{
    return a && *a == b;
}

} // namespace

std::optional<std::string> UiElement::name() const
{
    if (isNull()) return std::nullopt;
    GError* error = nullptr;
    gchar* text = atspi_accessible_get_name(m_node->accessible, &error);
    return takeString(text, error);
}

int UiElement::controlType() const
{
    if (isNull()) return UiCustom;
    const AtspiRole role = roleOf(m_node->accessible);
    int type = UiCustom;
    for (const RoleType& entry : kRoleTypes)
        if (entry.role == role) {
            type = entry.controlType;
            break;
        }
    // A bare top-level widget is a filler or a panel to AT-SPI, and a window to everyone else.
    if (type == UiPane) {
        GError* error = nullptr;
        AtspiAccessible* parent = atspi_accessible_get_parent(m_node->accessible, &error);
        if (error) g_error_free(error);
        if (parent) {
            if (roleOf(parent) == ATSPI_ROLE_APPLICATION) type = UiWindow;
            g_object_unref(parent);
        }
    }
    return type;
}

std::optional<Rect> UiElement::rect() const
{
    return isNull() ? std::nullopt : extentsOf(m_node->accessible);
}

UiElementInfo UiElement::describe() const
{
    UiElementInfo info;
    if (isNull()) return info;
    info.name = name();
    GError* error = nullptr;
    gchar* id = atspi_accessible_get_accessible_id(m_node->accessible, &error);
    info.automationId = takeString(id, error);
    if (info.automationId && info.automationId->empty()) info.automationId.reset();
    info.controlType = controlType();
    info.rect = rect();
    return info;
}

std::vector<UiElement> UiElement::descendants() const
{
    std::vector<UiElement> out;
    if (!isNull()) {
        atspi_accessible_clear_cache(m_node->accessible);
        collect(m_node->accessible, 0, out);
        return out;
    }
    // The programs themselves are no elements, as the desktop's top-level windows have none.
    for (const UiElement& app : applications())
        collect(accessibleOf(app), 0, out);
    return out;
}

bool UiElement::invoke() const
{
    if (isNull()) return false;
    AtspiAction* action = atspi_accessible_get_action_iface(m_node->accessible);
    if (!action) return false;
    GError* error = nullptr;
    const int count = atspi_action_get_n_actions(action, &error);
    if (error) g_error_free(error);
    // The first action is the default one by convention; a named press or click wins over it.
    int chosen = count > 0 ? 0 : -1;
    for (int i = 0; i < count; ++i) {
        error = nullptr;
        std::string actionName =
            takeString(atspi_action_get_action_name(action, i, &error), error).value_or("");
        for (char& ch : actionName)
            ch = char(std::tolower(static_cast<unsigned char>(ch)));
        if (actionName == "press" || actionName == "click" || actionName == "activate") {
            chosen = i;
            break;
        }
    }
    bool done = false;
    if (chosen >= 0) {
        error = nullptr;
        done = atspi_action_do_action(action, chosen, &error);
        if (error) {
            g_error_free(error);
            done = false;
        }
    }
    g_object_unref(action);
    return done;
}

bool UiElement::setText(const std::string& utf8) const
{
    if (isNull()) return false;
    GError* error = nullptr;
    if (AtspiEditableText* editable =
            atspi_accessible_get_editable_text_iface(m_node->accessible)) {
        bool done = atspi_editable_text_set_text_contents(editable, utf8.c_str(), &error);
        g_object_unref(editable);
        if (error) {
            g_error_free(error);
            done = false;
        }
        return done;
    }
    double number = 0;
    AtspiValue* value = atspi_accessible_get_value_iface(m_node->accessible);
    if (!value) return false;
    bool done = parseNumber(utf8, number) && atspi_value_set_current_value(value, number, &error);
    g_object_unref(value);
    if (error) {
        g_error_free(error);
        done = false;
    }
    return done;
}

bool UiElement::operator==(const UiElement& other) const
{
    // The library hands out one object per remote element, so identity is pointer identity.
    return accessibleOf(*this) == accessibleOf(other);
}

bool uiAutomationAvailable()
{
    return busReachable();
}

UiElement uiElementOfWindow(WindowHandle window)
{
    WindowRecord record;
    for (const WindowRecord& w : listTopLevelWindows())
        if (w.handle == window) record = w;
    if (!record.handle || !record.processId) return {};
    // AT-SPI knows nothing of X windows: the window's program, then its window of that title
    // (UI Automation starts from the window handle itself).
    for (const UiElement& app : applications()) {
        if (processOf(accessibleOf(app)) != record.processId) continue;
        const std::vector<UiElement> windows = childrenOf(accessibleOf(app));
        for (const UiElement& w : windows)
            if (sameText(w.name(), record.title)) return w;
        if (windows.size() == 1) return windows.front();
    }
    return {};
}

UiElement uiElementAt(Point point)
{
    UiElement current;
    if (const WindowHandle window = windowAt(point)) current = uiElementOfWindow(window);
    if (current.isNull()) {
        // A window that the window list cannot tie to its program: any shown one there.
        for (const UiElement& app : applications())
            for (const UiElement& w : childrenOf(accessibleOf(app))) {
                const std::optional<Rect> r = w.rect();
                if (current.isNull() && r && r->contains(point) &&
                    hasState(accessibleOf(w), ATSPI_STATE_SHOWING))
                    current = w;
            }
    }
    // Each answer is a child of the one asked; the innermost is where the answers stop.
    for (int depth = 0; !current.isNull() && depth < kMaxDepth; ++depth) {
        AtspiComponent* component = atspi_accessible_get_component_iface(accessibleOf(current));
        if (!component) break;
        GError* error = nullptr;
        UiElement inner = wrap(atspi_component_get_accessible_at_point(
            component, point.x, point.y, ATSPI_COORD_TYPE_SCREEN, &error));
        g_object_unref(component);
        if (error) g_error_free(error);
        if (inner.isNull() || inner == current) break;
        current = std::move(inner);
    }
    return current;
}

} // namespace zelmor::platform
