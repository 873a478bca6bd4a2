// UI Automation through its COM client (CUIAutomation). Elements of this process are left out,
// as the tools work on other programs' windows.

#include "../UiElements.h"
#include "UiAutomationCom.h"
#include "WinText.h"
#include "WindowHandleWin.h"

#include <windows.h>

#include <cstdlib>

namespace zelmor::platform {

using win32::IUIAutomation;
using win32::IUIAutomationElement;
using win32::IUIAutomationTreeWalker;

struct UiElement::Node
{
    IUIAutomationElement* element; // owned
    ~Node() { element->Release(); }
};

namespace {

// Guards against a broken tree that leads back into itself.
constexpr int kMaxDepth = 256;

// One client per thread: a COM object belongs to the apartment that made it.
IUIAutomation* automation()
{
    thread_local struct Client
    {
        IUIAutomation* client = nullptr;
        Client()
        {
            // Already initialised in another mode is fine: the client works in either.
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            CoCreateInstance(win32::kClsidCUIAutomation, nullptr, CLSCTX_INPROC_SERVER,
                             win32::kIidIUIAutomation, reinterpret_cast<void**>(&client));
        }
        ~Client()
        {
            if (client) client->Release();
        }
    } perThread;
    return perThread.client;
}

IUIAutomationElement* elementOf(const UiElement& e)
{
    return e.isNull() ? nullptr : e.node()->element;
}

UiElement wrap(IUIAutomationElement* owned)
{
    if (!owned) return {};
    int pid = 0;
    if (SUCCEEDED(owned->get_CurrentProcessId(&pid)) && DWORD(pid) == GetCurrentProcessId()) {
        owned->Release();
        return {};
    }
    return UiElement(std::shared_ptr<UiElement::Node>(new UiElement::Node{owned}));
}

std::optional<std::string> takeText(HRESULT result, BSTR text)
{
    if (FAILED(result)) return std::nullopt;
    std::string out = text ? win32::narrow(text, int(SysStringLen(text))) : std::string();
    SysFreeString(text);
    return out;
}

void collect(IUIAutomationTreeWalker* walker, IUIAutomationElement* parent, int depth,
             std::vector<UiElement>& out)
{
    if (depth > kMaxDepth) return;
    IUIAutomationElement* child = nullptr;
    walker->GetFirstChildElement(parent, &child);
    while (child) {
        IUIAutomationElement* next = nullptr;
        walker->GetNextSiblingElement(child, &next);
        const UiElement element = wrap(child);
        if (!element.isNull()) {
            out.push_back(element);
            collect(walker, elementOf(element), depth + 1, out);
        }
        child = next;
    }
}

template <typename Pattern> Pattern* pattern(const UiElement& e, int id, const IID& iid)
{
    IUnknown* unknown = nullptr;
    if (e.isNull() || FAILED(e.node()->element->GetCurrentPattern(id, &unknown)) || !unknown)
        return nullptr;
    Pattern* typed = nullptr;
    unknown->QueryInterface(iid, reinterpret_cast<void**>(&typed));
    unknown->Release();
    return typed;
}

bool parseNumber(const std::string& text, double& value)
{
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return !text.empty() && end && *end == '\0';
}

} // namespace

std::optional<std::string> UiElement::name() const
{
    if (isNull()) return std::nullopt;
    BSTR text = nullptr;
    return takeText(m_node->element->get_CurrentName(&text), text);
}

int UiElement::controlType() const
{
    int type = UiCustom;
    if (isNull() || FAILED(m_node->element->get_CurrentControlType(&type))) return UiCustom;
    return type;
}

std::optional<Rect> UiElement::rect() const
{
    RECT r{};
    if (isNull() || FAILED(m_node->element->get_CurrentBoundingRectangle(&r))) return std::nullopt;
    return Rect{r.left, r.top, r.right - r.left, r.bottom - r.top};
}

UiElementInfo UiElement::describe() const
{
    UiElementInfo info;
    if (isNull()) return info;
    info.name = name();
    BSTR id = nullptr;
    info.automationId = takeText(m_node->element->get_CurrentAutomationId(&id), id);
    info.controlType = controlType();
    info.rect = rect();
    return info;
}

std::vector<UiElement> UiElement::descendants() const
{
    std::vector<UiElement> out;
    IUIAutomation* client = automation();
    if (!client) return out;
    IUIAutomationTreeWalker* walker = nullptr;
    if (FAILED(client->get_RawViewWalker(&walker)) || !walker) return out;
    IUIAutomationElement* root = elementOf(*this);
    const bool desktop = root == nullptr;
    if (desktop) client->GetRootElement(&root);
    if (root) collect(walker, root, 0, out);
    if (desktop && root) root->Release();
    walker->Release();
    return out;
}

bool UiElement::invoke() const
{
    auto* invoker = pattern<win32::IUIAutomationInvokePattern>(*this, win32::kInvokePatternId,
                                                               win32::kIidInvokePattern);
    if (!invoker) return false;
    const bool done = SUCCEEDED(invoker->Invoke());
    invoker->Release();
    return done;
}

bool UiElement::setText(const std::string& utf8) const
{
    if (auto* value = pattern<win32::IUIAutomationValuePattern>(*this, win32::kValuePatternId,
                                                                win32::kIidValuePattern)) {
        const std::wstring wide = win32::widen(utf8);
        BSTR text = SysAllocStringLen(wide.data(), UINT(wide.size()));
        const bool done = SUCCEEDED(value->SetValue(text));
        SysFreeString(text);
        value->Release();
        return done;
    }
    double number = 0;
    auto* range = pattern<win32::IUIAutomationRangeValuePattern>(*this, win32::kRangeValuePatternId,
                                                                 win32::kIidRangeValuePattern);
    if (!range) return false;
    const bool done = parseNumber(utf8, number) && SUCCEEDED(range->SetValue(number));
    range->Release();
    return done;
}

bool UiElement::operator==(const UiElement& other) const
{
    if (isNull() || other.isNull()) return isNull() == other.isNull();
    IUIAutomation* client = automation();
    BOOL same = FALSE;
    return client &&
           SUCCEEDED(client->CompareElements(elementOf(*this), elementOf(other), &same)) && same;
}

bool uiAutomationAvailable()
{
    return automation() != nullptr;
}

UiElement uiElementAt(Point point)
{
    IUIAutomation* client = automation();
    IUIAutomationElement* element = nullptr;
    if (!client || FAILED(client->ElementFromPoint(POINT{point.x, point.y}, &element))) return {};
    return wrap(element);
}

UiElement uiElementOfWindow(WindowHandle window)
{
    IUIAutomation* client = automation();
    IUIAutomationElement* element = nullptr;
    if (!client || FAILED(client->ElementFromHandle(win32::toHwnd(window), &element))) return {};
    return wrap(element);
}

} // namespace zelmor::platform
