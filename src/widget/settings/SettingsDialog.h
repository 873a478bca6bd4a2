#pragma once

#include <QList>
#include <QWidget>

class QListWidget;
class QStackedWidget;

namespace zelmor::widget {

// The settings panel: a navigation list beside a stack of pages. Every control writes its
// setting the moment it changes, so the panel has no OK or Cancel and closing it loses nothing.
class SettingsDialog : public QWidget
{
    Q_OBJECT
public:
    enum PageId {
        GeneralPage,
        HotkeysPage,
        CapturePage,
        PinPage,
        AiPage,
        McpPage,
        PrivacyPage,
        AboutPage
    };

    explicit SettingsDialog(QWidget* parent = nullptr);

    // Makes the page current; false, with nothing changed, when this build has no such page.
    bool showPage(PageId page);
    bool hasPage(PageId page) const { return m_pages.contains(page); }
    QWidget* page(PageId page) const;
    QListWidget* navigation() const { return m_navigation; }

private:
    QWidget* makeTitleBar();
    QWidget* makeBody();
    QWidget* makeFooter();

    QListWidget* m_navigation = nullptr;
    QStackedWidget* m_stack = nullptr;
    QList<PageId> m_pages; // the page of each navigation row
};

} // namespace zelmor::widget
