#include "TrayMenu.h"

#include <QLabel>

namespace zelmor::widget {

namespace {

struct MenuColours
{
    const char* background;
    const char* border;
    const char* text;
    const char* selectedBackground;
    const char* disabled;
    const char* separator;
    const char* section;
};

constexpr MenuColours kDark{"#18181B", "#27272A", "#E4E4E7", "#2C1E14",
                            "#71717A", "#27272A", "#A1A1AA"};
constexpr MenuColours kLight{"#FFFFFF", "#E5E7EB", "#1F2937", "#FFF3E0",
                             "#9CA3AF", "#F3F4F6", "#9CA3AF"};

QString menuSheet(const MenuColours& c)
{
    return QStringLiteral(
               "QMenu { background: %1; border: 1px solid %2; border-radius: 8px; padding: 4px; "
               "font-size: 12px; }"
               "QMenu::item { padding: 3px 12px; height: 18px; font-weight: 500; color: %3; }"
               "QMenu::item:selected { background: %4; color: #F97316; font-weight: 600; }"
               "QMenu::item:disabled { color: %5; }"
               "QMenu::separator { height: 1px; background: %6; margin: 4px 8px; }"
               "QLabel#zelmorTrayHeader { color: #F97316; font-size: 12px; font-weight: 700; "
               "padding: 4px 0; }"
               "QLabel#zelmorTraySection { color: %7; font-size: 11px; font-weight: 600; }")
        .arg(QLatin1String(c.background), QLatin1String(c.border), QLatin1String(c.text),
             QLatin1String(c.selectedBackground), QLatin1String(c.disabled),
             QLatin1String(c.separator), QLatin1String(c.section));
}

} // namespace

TrayMenu::TrayMenu(const QString& themeName, QWidget* parent) : QMenu(parent)
{
    setMinimumWidth(236);
    setStyleSheet(menuSheet(themeName == QLatin1String("dark") ? kDark : kLight));
}

TrayHeaderAction::TrayHeaderAction(const QString& text, int kind, QObject* parent)
    : QWidgetAction(parent), m_text(text), m_kind(kind)
{}

QWidget* TrayHeaderAction::createWidget(QWidget* parent)
{
    auto* label = new QLabel(m_text, parent);
    label->setObjectName(m_kind == 0 ? QStringLiteral("zelmorTrayHeader")
                                     : QStringLiteral("zelmorTraySection"));
    label->setEnabled(false);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->setIndent(14);
    return label;
}

} // namespace zelmor::widget
