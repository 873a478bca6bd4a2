#include "SettingsDialog.h"

#include "AiSettingsPage.h"
#include "McpSettingsPage.h"
#include "SettingsPages.h"
#include "manager/ThemeManager.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace zelmor::widget {

namespace {

struct NavRow
{
    SettingsDialog::PageId page;
    const char* icon;
    struct
    {
        const char* source;
        const char* comment;
    } text;
    QWidget* (*make)();
};

template <typename PageWidget> QWidget* makeWidget()
{
    return new PageWidget;
}

// The context is written out in full: lupdate reads only literals.
const NavRow kNavRows[] = {
    {SettingsDialog::GeneralPage, ":/icons/nav/general.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "General", "settings.tab.general"),
     settings::SettingsPages::general},
    {SettingsDialog::HotkeysPage, ":/icons/nav/hotkeys.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "Hotkeys", "settings.tab.hotkeys"),
     settings::SettingsPages::hotkeys},
    {SettingsDialog::CapturePage, ":/icons/nav/capture.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "Capture", "settings.tab.capture"),
     settings::SettingsPages::capture},
    {SettingsDialog::PinPage, ":/icons/nav/pin.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "Pin", "settings.tab.pin"),
     settings::SettingsPages::pin},
    {SettingsDialog::AiPage, ":/icons/nav/ai.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "AI", "settings.tab.ai"),
     makeWidget<AiSettingsPage>},
    {SettingsDialog::McpPage, ":/icons/nav/mcp.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "MCP", "settings.tab.mcp"),
     makeWidget<McpSettingsPage>},
    {SettingsDialog::PrivacyPage, ":/icons/nav/privacy.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "Privacy", "settings.tab.privacy"),
     settings::SettingsPages::privacy},
    {SettingsDialog::AboutPage, ":/icons/nav/about.svg",
     QT_TRANSLATE_NOOP3("zelmor::widget::SettingsDialog", "About", "settings.tab.about"),
     settings::SettingsPages::about},
};

// Paints its own fill and bottom line, so that the colours follow the theme without waiting
// for the style sheet to be applied again.
class TitleBar : public QWidget
{
public:
    TitleBar()
    {
        setObjectName(QStringLiteral("settingsTitleBar"));
        setMinimumHeight(72);
        setColours(manager::ThemeManager::isDarkTheme());
        connect(&manager::ThemeManager::instance(), &manager::ThemeManager::themeChanged, this,
                [this](bool dark) { setColours(dark); });
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), m_fill);
        painter.fillRect(QRect(0, height() - 1, width(), 1), m_line);
    }

private:
    void setColours(bool dark)
    {
        m_fill = QColor(dark ? 0x222228 : 0xFFFFFF);
        m_line = QColor(dark ? 0x33333C : 0xE5E5E5);
        update();
    }

    QColor m_fill;
    QColor m_line;
};

} // namespace

SettingsDialog::SettingsDialog(QWidget* parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("settingsRoot"));
    setAttribute(Qt::WA_StyledBackground);
    resize(640, 420);
    setMinimumSize(540, 360);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeTitleBar());
    layout->addWidget(makeBody(), 1);
    layout->addWidget(makeFooter());
}

QWidget* SettingsDialog::makeTitleBar()
{
    auto* bar = new TitleBar;
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(20, 0, 20, 0);
    auto* title = new QLabel(tr("Settings", "settings.title"));
    title->setObjectName(QStringLiteral("settingsTitle"));
    layout->addWidget(title);
    return bar;
}

QWidget* SettingsDialog::makeBody()
{
    auto* body = new QWidget;
    body->setObjectName(QStringLiteral("settingsBody"));
    body->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QHBoxLayout(body);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_navigation = new QListWidget;
    m_navigation->setObjectName(QStringLiteral("settingsNav"));
    m_navigation->setAccessibleName(tr("Settings sections", "settings.nav"));
    m_navigation->setFixedWidth(128);
    m_navigation->setIconSize(QSize(16, 16));
    m_stack = new QStackedWidget;
    for (const NavRow& row : kNavRows) {
        new QListWidgetItem(QIcon(QLatin1String(row.icon)), tr(row.text.source, row.text.comment),
                            m_navigation);
        m_stack->addWidget(row.make());
        m_pages.append(row.page);
    }
    connect(m_navigation, &QListWidget::currentRowChanged, m_stack,
            &QStackedWidget::setCurrentIndex);
    // A screen reader selects a row without making it current; the page follows all the same.
    connect(m_navigation, &QListWidget::itemSelectionChanged, this, [this] {
        const QList<QListWidgetItem*> selected = m_navigation->selectedItems();
        if (!selected.isEmpty()) m_navigation->setCurrentItem(selected.first());
    });
    m_navigation->setCurrentRow(0);
    layout->addWidget(m_navigation);
    layout->addWidget(m_stack, 1);
    return body;
}

QWidget* SettingsDialog::makeFooter()
{
    auto* footer = new QWidget;
    footer->setObjectName(QStringLiteral("settingsFooter"));
    footer->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QHBoxLayout(footer);
    layout->setContentsMargins(12, 6, 12, 6);
    auto* version = new QLabel(
        tr("Zelmor %1", "settings.footer.version").arg(QCoreApplication::applicationVersion()));
    version->setObjectName(QStringLiteral("footerText"));
    layout->addWidget(version);
    layout->addStretch(1);
    layout->addWidget(new QLabel(QStringLiteral("Qt %1 · C++%2")
                                     .arg(QLatin1String(qVersion()))
                                     .arg(__cplusplus / 100 % 100)));
    return footer;
}

bool SettingsDialog::showPage(PageId page)
{
    const int row = m_pages.indexOf(page);
    if (row < 0) return false;
    m_navigation->setCurrentRow(row);
    return true;
}

QWidget* SettingsDialog::page(PageId page) const
{
    const int row = m_pages.indexOf(page);
    return row < 0 ? nullptr : m_stack->widget(row);
}

} // namespace zelmor::widget
