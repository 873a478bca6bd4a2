#pragma once

// The UI Automation client interfaces this backend calls, declared here because mingw-w64's
// headers lack them. Each declares its methods in the order of the Windows SDK, up to the last
// one used; the unused ones keep their places as `slot` entries and are never called.

#include <windows.h>

#include <oleauto.h>

namespace zelmor::platform::win32 {

struct IUIAutomationElement;

struct IUIAutomationTreeWalker : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetParentElement(IUIAutomationElement*,
                                                       IUIAutomationElement**) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFirstChildElement(IUIAutomationElement* element,
                                                           IUIAutomationElement** first) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLastChildElement(IUIAutomationElement*,
                                                          IUIAutomationElement**) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNextSiblingElement(IUIAutomationElement* element,
                                                            IUIAutomationElement** next) = 0;
};

struct IUIAutomationElement : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE slot0_SetFocus() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot1_GetRuntimeId() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot2_FindFirst() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot3_FindAll() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot4_FindFirstBuildCache() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot5_FindAllBuildCache() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot6_BuildUpdatedCache() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot7_GetCurrentPropertyValue() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot8_GetCurrentPropertyValueEx() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot9_GetCachedPropertyValue() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot10_GetCachedPropertyValueEx() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot11_GetCurrentPatternAs() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot12_GetCachedPatternAs() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCurrentPattern(int patternId, IUnknown** pattern) = 0;
    virtual HRESULT STDMETHODCALLTYPE slot14_GetCachedPattern() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot15_GetCachedParent() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot16_GetCachedChildren() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CurrentProcessId(int* processId) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CurrentControlType(int* controlType) = 0;
    virtual HRESULT STDMETHODCALLTYPE slot19_CurrentLocalizedControlType() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CurrentName(BSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE slot21_CurrentAcceleratorKey() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot22_CurrentAccessKey() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot23_CurrentHasKeyboardFocus() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot24_CurrentIsKeyboardFocusable() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot25_CurrentIsEnabled() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CurrentAutomationId(BSTR* id) = 0;
    virtual HRESULT STDMETHODCALLTYPE slot27_CurrentClassName() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot28_CurrentHelpText() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot29_CurrentCulture() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot30_CurrentIsControlElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot31_CurrentIsContentElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot32_CurrentIsPassword() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot33_CurrentNativeWindowHandle() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot34_CurrentItemType() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot35_CurrentIsOffscreen() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot36_CurrentOrientation() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot37_CurrentFrameworkId() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot38_CurrentIsRequiredForForm() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot39_CurrentItemStatus() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CurrentBoundingRectangle(RECT* rect) = 0;
};

struct IUIAutomation : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE CompareElements(IUIAutomationElement* a,
                                                      IUIAutomationElement* b, BOOL* same) = 0;
    virtual HRESULT STDMETHODCALLTYPE slot1_CompareRuntimeIds() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRootElement(IUIAutomationElement** root) = 0;
    virtual HRESULT STDMETHODCALLTYPE ElementFromHandle(HWND window,
                                                        IUIAutomationElement** element) = 0;
    virtual HRESULT STDMETHODCALLTYPE ElementFromPoint(POINT point,
                                                       IUIAutomationElement** element) = 0;
    virtual HRESULT STDMETHODCALLTYPE slot5_GetFocusedElement() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot6_GetRootElementBuildCache() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot7_ElementFromHandleBuildCache() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot8_ElementFromPointBuildCache() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot9_GetFocusedElementBuildCache() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot10_CreateTreeWalker() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot11_ControlViewWalker() = 0;
    virtual HRESULT STDMETHODCALLTYPE slot12_ContentViewWalker() = 0;
    virtual HRESULT STDMETHODCALLTYPE get_RawViewWalker(IUIAutomationTreeWalker** walker) = 0;
};

struct IUIAutomationInvokePattern : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Invoke() = 0;
};

struct IUIAutomationValuePattern : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE SetValue(BSTR value) = 0;
};

struct IUIAutomationRangeValuePattern : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE SetValue(double value) = 0;
};

// {ff48dba4-60ef-4201-aa87-54103eef594e}
constexpr CLSID kClsidCUIAutomation = {
    0xff48dba4, 0x60ef, 0x4201, {0xaa, 0x87, 0x54, 0x10, 0x3e, 0xef, 0x59, 0x4e}};
// {30cbe57d-d9d0-452a-ab13-7ac5ac4825ee}
constexpr IID kIidIUIAutomation = {
    0x30cbe57d, 0xd9d0, 0x452a, {0xab, 0x13, 0x7a, 0xc5, 0xac, 0x48, 0x25, 0xee}};
// {fb377fbe-8ea6-46d5-9c73-6499642d3059}
constexpr IID kIidInvokePattern = {
    0xfb377fbe, 0x8ea6, 0x46d5, {0x9c, 0x73, 0x64, 0x99, 0x64, 0x2d, 0x30, 0x59}};
// {a94cd8b1-0844-4cd6-9d2d-640537ab39e9}
constexpr IID kIidValuePattern = {
    0xa94cd8b1, 0x0844, 0x4cd6, {0x9d, 0x2d, 0x64, 0x05, 0x37, 0xab, 0x39, 0xe9}};
// {59213f4f-7346-49e5-b120-80555987a148}
constexpr IID kIidRangeValuePattern = {
    0x59213f4f, 0x7346, 0x49e5, {0xb1, 0x20, 0x80, 0x55, 0x59, 0x87, 0xa1, 0x48}};

constexpr int kInvokePatternId = 10000;
constexpr int kValuePatternId = 10002;
constexpr int kRangeValuePatternId = 10003;

} // namespace zelmor::platform::win32
