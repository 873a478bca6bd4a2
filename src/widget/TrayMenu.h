#pragma once

#include <QMenu>
#include <QWidgetAction>

namespace zelmor::widget {

// The tray's context menu, styled for the theme in force when it is made.
class TrayMenu : public QMenu
{
    Q_OBJECT
public:
    explicit TrayMenu(const QString& themeName, QWidget* parent = nullptr);
};

// A non-clickable label row: the menu's header (kind 0) or a section title.
class TrayHeaderAction : public QWidgetAction
{
    Q_OBJECT
public:
    TrayHeaderAction(const QString& text, int kind, QObject* parent);

protected:
    QWidget* createWidget(QWidget* parent) override;

private:
    QString m_text;
    int m_kind;
};

} // namespace zelmor::widget
