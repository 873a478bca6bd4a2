// The entries that lead into the AI chat.

#include "ActionManager.h"

#include "core/Toast.h"
#include "service/ai/AiApiService.h"
#include "service/ai/AiProviderService.h"
#include "service/capture/CaptureService.h"
#include "widget/MainWindow.h"
#include "widget/chat/AiChatPanel.h"
#include "widget/overlay/CaptureOverlay.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

namespace zelmor::manager {

namespace {

// Long enough for the window manager to take the main window off the screen before the grab.
constexpr int kWindowGoneMs = 150;

} // namespace

void ActionManager::captureForAiChat()
{
    if (m_mainWindow) m_mainWindow->hide();
    QTimer::singleShot(kWindowGoneMs, this, [this] {
        const QPixmap pixmap = m_captureService->grabScreens();
        if (pixmap.isNull()) {
            reopenChat();
            toastCaptureFailed();
            return;
        }
        auto* overlay = takeOverlay(pixmap);
        connect(overlay, &widget::CaptureOverlay::copyRequested, this,
                [this](const QPixmap& cropped) {
                    reopenChat();
                    if (widget::AiChatPanel* chat = m_mainWindow->aiChatPanel())
                        chat->onCaptureForChat(cropped);
                });
        connect(overlay, &widget::CaptureOverlay::cancelled, this, &ActionManager::reopenChat);
        connect(overlay, &QObject::destroyed, this, [this] {
            if (m_mainWindow && !m_mainWindow->isVisible()) reopenChat();
        });
        overlay->show();
    });
}

void ActionManager::reopenChat()
{
    if (!m_mainWindow) return;
    m_mainWindow->showAiChat();
    m_mainWindow->raise();
    m_mainWindow->activateWindow();
}

void ActionManager::aiChat()
{
    service::ai::AiProviderService& providers = service::ai::AiProviderService::instance();
    if (providers.count() > 0 && providers.active().id > 0) {
        if (m_mainWindow) m_mainWindow->showAiChat();
        return;
    }
    core::notifyUser(tr("AI not configured", "ai.notConfigured.title"),
                     tr("Please add or configure AI Provider and API Key in Settings → AI.",
                        "ai.notConfigured.body"),
                     3000);
    showAiSettings();
}

bool ActionManager::aiProviderReady(bool recognitionOnly)
{
    const QString reason = service::ai::AiApiService::unusableReason(
        service::ai::AiProviderService::instance().active(), recognitionOnly);
    if (reason.isEmpty()) return true;
    if (!m_aiSetupPrompt) {
        m_aiSetupPrompt = new QMessageBox(QMessageBox::Information,
                                          tr("AI not configured", "ai.notConfigured.title"), reason,
                                          QMessageBox::Close, m_mainWindow);
        m_aiSetupPrompt->setAttribute(Qt::WA_DeleteOnClose);
        QPushButton* open = m_aiSetupPrompt->addButton(
            tr("Open AI Settings", "ai.notConfigured.open"), QMessageBox::AcceptRole);
        connect(open, &QPushButton::clicked, this, &ActionManager::showAiSettings);
    }
    m_aiSetupPrompt->setText(reason);
    m_aiSetupPrompt->show();
    m_aiSetupPrompt->raise();
    m_aiSetupPrompt->activateWindow();
    return false;
}

// Recognised text goes into the conversation as a message the user may answer.
void ActionManager::handTextToChat(const QString& text)
{
    if (!m_mainWindow) return;
    m_mainWindow->showAiChat();
    widget::AiChatPanel* chat = m_mainWindow->aiChatPanel();
    if (!chat) return;
    chat->onCaptureForChat(QPixmap());
    chat->addBubble(QStringLiteral("user"),
                    tr("请帮我分析或总结以下提取的文字：", "ai.ocr.chatPrompt") +
                        QLatin1Char('\n') + text,
                    QPixmap());
}

} // namespace zelmor::manager
