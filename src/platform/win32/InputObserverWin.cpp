// Global input through the low-level hooks WH_MOUSE_LL and WH_KEYBOARD_LL, installed on a
// thread of the observer's own with its own message loop: the hooks only watch, and every
// event goes on to its target through CallNextHookEx.

#include "../InputObserver.h"

#include <windows.h>

#include <atomic>
#include <thread>

namespace zelmor::platform {

namespace {

class InputObserverWin;
// The hook procedures take no context, and each runs on the thread that installed it.
thread_local InputObserverWin* observerOfThisThread = nullptr;

class InputObserverWin : public InputObserver
{
public:
    InputObserverWin(unsigned kinds, Callback callback)
        : m_kinds(kinds), m_callback(std::move(callback))
    {
        std::atomic<int> started{0};
        m_thread = std::thread([this, &started] { run(started); });
        while (started == 0)
            Sleep(1);
        if (started < 0) stop();
    }
    ~InputObserverWin() override { stop(); }

    bool running() const { return m_threadId != 0; }

    void stop() override
    {
        if (!m_thread.joinable()) return;
        PostThreadMessageW(m_threadId, WM_QUIT, 0, 0);
        m_thread.join();
        m_threadId = 0;
    }

    void mouse(WPARAM message, const MSLLHOOKSTRUCT& event)
    {
        const bool press =
            message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN || message == WM_MBUTTONDOWN;
        const bool release =
            message == WM_LBUTTONUP || message == WM_RBUTTONUP || message == WM_MBUTTONUP;
        const bool wanted = (press && (m_kinds & ButtonPresses)) ||
                            (release && (m_kinds & ButtonReleases)) ||
                            (message == WM_MOUSEMOVE && (m_kinds & PointerMotion));
        if (wanted) m_callback({unsigned(message), {event.pt.x, event.pt.y}, 0});
    }

    // WM_SYSKEYDOWN (keys with Alt, and Alt itself) is left out.
    void key(WPARAM message, const KBDLLHOOKSTRUCT& event)
    {
        if (message == WM_KEYDOWN && (m_kinds & KeyPresses))
            m_callback({ObservedInput::KeyDown, {}, unsigned(event.vkCode)});
    }

private:
    static LRESULT CALLBACK mouseHook(int code, WPARAM wParam, LPARAM lParam)
    {
        if (code == HC_ACTION)
            if (InputObserverWin* self = observerOfThisThread)
                self->mouse(wParam, *reinterpret_cast<const MSLLHOOKSTRUCT*>(lParam));
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static LRESULT CALLBACK keyboardHook(int code, WPARAM wParam, LPARAM lParam)
    {
        if (code == HC_ACTION)
            if (InputObserverWin* self = observerOfThisThread)
                self->key(wParam, *reinterpret_cast<const KBDLLHOOKSTRUCT*>(lParam));
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    void run(std::atomic<int>& started)
    {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE); // creates the thread's queue
        m_threadId = GetCurrentThreadId();
        const HINSTANCE module = GetModuleHandleW(nullptr);
        HHOOK mouseHandle = nullptr;
        HHOOK keyboardHandle = nullptr;
        if (m_kinds & (ButtonPresses | ButtonReleases | PointerMotion))
            mouseHandle = SetWindowsHookExW(WH_MOUSE_LL, mouseHook, module, 0);
        if (m_kinds & KeyPresses)
            keyboardHandle = SetWindowsHookExW(WH_KEYBOARD_LL, keyboardHook, module, 0);
        if (!mouseHandle && !keyboardHandle) {
            started = -1;
            return;
        }
        observerOfThisThread = this;
        started = 1;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        if (mouseHandle) UnhookWindowsHookEx(mouseHandle);
        if (keyboardHandle) UnhookWindowsHookEx(keyboardHandle);
    }

    unsigned m_kinds;
    Callback m_callback;
    std::thread m_thread;
    std::atomic<DWORD> m_threadId{0};
};

} // namespace

std::unique_ptr<InputObserver> observeInput(unsigned kinds, InputObserver::Callback callback)
{
    auto observer = std::make_unique<InputObserverWin>(kinds, std::move(callback));
    if (!observer->running()) return nullptr;
    return observer;
}

} // namespace zelmor::platform
