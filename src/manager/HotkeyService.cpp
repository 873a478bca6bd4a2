#include "HotkeyService.h"

#include "core/EventBus.h"
#include "platform/Hotkeys.h"

#include <QKeySequence>
#include <QSocketNotifier>

namespace zelmor::manager {

namespace {

unsigned virtualKeyFor(int key)
{
    if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z))
        return unsigned(key);
    if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return unsigned(key - 0xFFFFC0);
    switch (key) {
    case Qt::Key_Escape:
        return 27;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return 9;
    case Qt::Key_Backspace:
        return 8;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return 13;
    case Qt::Key_Insert:
        return 45;
    case Qt::Key_Delete:
        return 46;
    case Qt::Key_Pause:
        return 19;
    case Qt::Key_Print:
        return 44;
    case Qt::Key_Home:
        return 36;
    case Qt::Key_End:
        return 35;
    case Qt::Key_Left:
        return 37;
    case Qt::Key_Up:
        return 38;
    case Qt::Key_Right:
        return 39;
    case Qt::Key_Down:
        return 40;
    case Qt::Key_PageUp:
        return 33;
    case Qt::Key_PageDown:
        return 34;
    case Qt::Key_CapsLock:
        return 20;
    case Qt::Key_NumLock:
        return 144;
    case Qt::Key_ScrollLock:
        return 145;
    case Qt::Key_Space:
        return 32;
    }
    return 0; // punctuation, keypad and media keys cannot be bound
}

void publish(int id)
{
    Q_EMIT core::EventBus::instance().emitted(QStringLiteral("hotkeyTriggered"),
                                              {{QStringLiteral("id"), id}});
}

} // namespace

HotkeyService::Binding HotkeyService::translate(const QString& sequence)
{
    const QKeySequence keys(sequence, QKeySequence::NativeText);
    if (keys.isEmpty()) return {};
    const int combination = keys[0].toCombined();    // a multi-chord sequence binds its first chord
    if (combination & Qt::KeypadModifier) return {}; // keypad keys share codes with the main keys
    Binding binding;
    if (combination & Qt::AltModifier) binding.modifiers |= platform::HotkeyAlt;
    if (combination & Qt::ControlModifier) binding.modifiers |= platform::HotkeyControl;
    if (combination & Qt::ShiftModifier) binding.modifiers |= platform::HotkeyShift;
    if (combination & Qt::MetaModifier) binding.modifiers |= platform::HotkeyWin;
    binding.virtualKey = virtualKeyFor(combination & 0x1FFFFFF);
    return binding;
}

bool HotkeyService::bindsKeys()
{
    return platform::hotkeyBinder() != platform::HotkeyBinder::Desktop;
}

HotkeyService::HotkeyService(QObject* parent) : QObject(parent)
{
    connect(&core::EventBus::instance(), &core::EventBus::emitted, this,
            [this](const QString& name, const QVariantMap& payload) {
                if (name == QLatin1String("hotkeyTriggered"))
                    Q_EMIT hotkeyTriggered(payload.value(QStringLiteral("id")).toInt());
            });
    const int descriptor = platform::hotkeyEventDescriptor();
    if (descriptor >= 0) {
        m_notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
        connect(m_notifier, &QSocketNotifier::activated, this, &HotkeyService::publishPresses);
    } else {
        platform::onHotkeyPresses([this] { publishPresses(); });
        m_wakesOnMessages = true;
    }
}

HotkeyService::~HotkeyService()
{
    if (m_wakesOnMessages) platform::onHotkeyPresses(nullptr);
    unregisterAll();
}

// Presses go out on the event bus like any other.
void HotkeyService::publishPresses()
{
    for (int id : platform::takeHotkeyPresses())
        publish(id);
}

void HotkeyService::describeHotkey(int id, const QString& description)
{
    platform::describeHotkey(id, description.toStdString());
}

bool HotkeyService::registerHotkey(int id, const QString& sequence)
{
    if (m_ids.contains(id)) return false;
    const Binding binding = translate(sequence);
    if (binding.virtualKey == 0) return false;
    const bool bound = platform::registerHotkey(id, binding.modifiers | platform::HotkeyNoRepeat,
                                                binding.virtualKey);
    // Waiting for the grab's answer may have read events the notifier will not announce again.
    QMetaObject::invokeMethod(this, &HotkeyService::publishPresses, Qt::QueuedConnection);
    if (!bound) return false;
    m_ids.insert(id, 1);
    return true;
}

void HotkeyService::unregisterAll()
{
    for (auto it = m_ids.cbegin(); it != m_ids.cend(); ++it)
        platform::unregisterHotkey(it.key());
    m_ids.clear();
}

} // namespace zelmor::manager
