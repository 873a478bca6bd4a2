#pragma once

#include <QObject>
#include <QString>

namespace zelmor::manager {

// Turns a theme name into the application palette and the one application style sheet.
// Widgets take their colours from that sheet through their object names.
class ThemeManager : public QObject
{
    Q_OBJECT
public:
    static ThemeManager& instance();

    // "dark", "light" or "system" (also empty); any other name is applied as light but kept
    // as the current theme. Each call rebuilds and sets everything, even when nothing changed.
    void apply(const QString& name);

    // The resolved name: "dark" or "light" for "system", otherwise the name given to apply.
    QString currentTheme() const { return m_currentTheme; }

    // The process-wide flag; false before the first apply.
    static bool isDarkTheme();

Q_SIGNALS:
    void themeChanged(bool isDark);

private:
    ThemeManager() = default;

    QString m_currentTheme = QStringLiteral("light");
};

} // namespace zelmor::manager
