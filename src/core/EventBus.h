#pragma once

#include <QObject>
#include <QVariantMap>

namespace zelmor::core {

// A named broadcast: publishing is emitting `emitted`; receivers filter by name.
class EventBus : public QObject
{
    Q_OBJECT
public:
    static EventBus& instance();

Q_SIGNALS:
    void emitted(const QString& name, const QVariantMap& payload);
};

// Reserved for commands addressed by name; nothing emits or receives it yet.
class CommandBus : public QObject
{
    Q_OBJECT
public:
    static CommandBus& instance();

Q_SIGNALS:
    void commandInvoked(const QString& name, const QVariantMap& args);
};

} // namespace zelmor::core
