#pragma once

#include <QMainWindow>

class QStackedWidget;

namespace zelmor::widget {

class AiChatPanel;
class HistoryPanel;
class SettingsDialog;

// The one window: settings, history and AI chat as full-size pages. It starts hidden and
// builds its pages on the first show; closing only hides it.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    enum Page { SettingsPage = 0, HistoryPage = 1, AiChatPage = 2 };

    explicit MainWindow(QWidget* parent = nullptr);

    int currentPage() const { return m_currentPage; }
    bool panelsBuilt() const { return m_panelsBuilt; }
    QWidget* pageWidget(int page) const;
    // Null until the first show.
    HistoryPanel* historyPanel() const;
    AiChatPanel* aiChatPanel() const;
    SettingsDialog* settingsPanel() const { return m_settingsPanel; }

Q_SIGNALS:
    void captureForAiChatRequested();
    void pinFromHistoryRequested(const QPixmap& pm);
    void copyFromHistoryRequested(const QPixmap& pm);
    void reeditFromHistoryRequested(const QPixmap& pm);

public Q_SLOTS:
    void showSettings();
    void showHistory();
    void showAiChat();
    // The settings at the AI page, or at the page that was current when there is none.
    void showAiSettings();
    void retranslateUi();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void setPage(int page);
    void buildPanels();
    void showCurrentPage();

    QStackedWidget* m_stack;
    QWidget* m_historyPanel = nullptr;
    SettingsDialog* m_settingsPanel = nullptr;
    QWidget* m_aiChatPanel = nullptr;
    int m_currentPage = HistoryPage;
    bool m_panelsBuilt = false;
};

} // namespace zelmor::widget
