#include "MainWindow.h"

#include "HistoryPanel.h"
#include "chat/AiChatPanel.h"
#include "core/Log.h"
#include "settings/SettingsDialog.h"

#include <QCloseEvent>
#include <QElapsedTimer>
#include <QScrollArea>
#include <QStackedWidget>
#include <QTimer>

namespace zelmor::widget {

namespace {

// A panel that needs more room than a small screen gives scrolls, instead of making the whole
// window too big to fit.
QScrollArea* scrollable(QWidget* panel)
{
    auto* area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(panel);
    return area;
}

} // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), m_stack(new QStackedWidget(this))
{
    setWindowTitle(tr("Zelmor", "main.title"));
    resize(1200, 740);
    setMinimumSize(640, 480);
    setCentralWidget(m_stack);
    setVisible(false);
}

QWidget* MainWindow::pageWidget(int page) const
{
    switch (page) {
    case SettingsPage:
        return m_settingsPanel;
    case HistoryPage:
        return m_historyPanel;
    case AiChatPage:
        return m_aiChatPanel;
    }
    return nullptr;
}

HistoryPanel* MainWindow::historyPanel() const
{
    return qobject_cast<HistoryPanel*>(m_historyPanel);
}

AiChatPanel* MainWindow::aiChatPanel() const
{
    return qobject_cast<AiChatPanel*>(m_aiChatPanel);
}

void MainWindow::buildPanels()
{
    QElapsedTimer timer;
    timer.start();
    const auto trace = [&timer](const char* panel) {
        core::writeLogLine(QStringLiteral("[startup]   build %1 dt=%2ms")
                               .arg(QLatin1String(panel))
                               .arg(timer.restart()));
    };
    auto* history = new HistoryPanel(m_stack);
    trace("HistoryPanel");
    m_settingsPanel = new SettingsDialog(m_stack);
    trace("SettingsDialog");
    auto* chat = new AiChatPanel(m_stack);
    trace("AiChatPanel");
    connect(chat, &AiChatPanel::captureRegionRequested, this,
            &MainWindow::captureForAiChatRequested);
    connect(chat, &AiChatPanel::settingsRequested, this, &MainWindow::showAiSettings);
    connect(history, &HistoryPanel::pinRequested, this, &MainWindow::pinFromHistoryRequested);
    connect(history, &HistoryPanel::copyRequested, this, &MainWindow::copyFromHistoryRequested);
    connect(history, &HistoryPanel::reeditRequested, this, &MainWindow::reeditFromHistoryRequested);
    m_historyPanel = history;
    m_aiChatPanel = chat;
    // Stack index equals page number; the frames of panels built before go with them.
    while (QWidget* old = m_stack->widget(0))
        delete old;
    for (QWidget* panel : {static_cast<QWidget*>(m_settingsPanel), m_historyPanel, m_aiChatPanel})
        m_stack->addWidget(scrollable(panel));
    showCurrentPage();
}

void MainWindow::showCurrentPage()
{
    const bool known = m_currentPage >= SettingsPage && m_currentPage <= AiChatPage;
    m_stack->setCurrentIndex(known ? m_currentPage : SettingsPage);
}

void MainWindow::setPage(int page)
{
    if (!m_panelsBuilt) {
        buildPanels();
        m_panelsBuilt = true;
    }
    m_currentPage = page;
    showCurrentPage();
    // A minimized window would stay an icon: show() maps nothing that is already shown.
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void MainWindow::showSettings()
{
    setPage(SettingsPage);
}

void MainWindow::showHistory()
{
    setPage(HistoryPage);
}

void MainWindow::showAiChat()
{
    setPage(AiChatPage);
}

void MainWindow::showAiSettings()
{
    setPage(SettingsPage);
    m_settingsPanel->showPage(SettingsDialog::AiPage);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    hide();
    event->ignore();
}

// Panels have no retranslation of their own: they are rebuilt. Later, on the event loop,
// so that the panel whose signal started the language change is not deleted under it.
void MainWindow::retranslateUi()
{
    const int page = m_currentPage;
    QTimer::singleShot(0, this, [this, page] {
        if (!m_panelsBuilt) return;
        setWindowTitle(tr("Zelmor", "main.title"));
        QObject::disconnect(m_aiChatPanel, nullptr, this, nullptr);
        QObject::disconnect(m_historyPanel, nullptr, this, nullptr);
        delete m_settingsPanel;
        m_settingsPanel = nullptr;
        for (QWidget** panel : {&m_historyPanel, &m_aiChatPanel}) {
            delete *panel;
            *panel = nullptr;
        }
        m_panelsBuilt = false;
        buildPanels();
        m_panelsBuilt = true;
        m_currentPage = page;
        showCurrentPage();
        if (isVisible()) {
            raise();
            activateWindow();
        }
    });
}

} // namespace zelmor::widget
