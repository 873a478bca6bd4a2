#include "EventBus.h"

namespace zelmor::core {

EventBus& EventBus::instance()
{
    static EventBus bus;
    return bus;
}

CommandBus& CommandBus::instance()
{
    static CommandBus bus;
    return bus;
}

} // namespace zelmor::core
