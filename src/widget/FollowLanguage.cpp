#include "FollowLanguage.h"

#include <QEvent>
#include <QWidget>

namespace zelmor::widget {

namespace {

class LanguageFollower : public QObject
{
public:
    LanguageFollower(QWidget* widget, std::function<void()> apply)
        : QObject(widget), m_apply(std::move(apply))
    {
        widget->installEventFilter(this);
        m_apply();
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::LanguageChange) m_apply();
        return false;
    }

private:
    std::function<void()> m_apply;
};

} // namespace

void followLanguage(QWidget* widget, std::function<void()> apply)
{
    new LanguageFollower(widget, std::move(apply));
}

} // namespace zelmor::widget
