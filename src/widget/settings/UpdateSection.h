#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

namespace zelmor::service::updater {
class UpdateService;
}

namespace zelmor::widget::settings {

// The About page's "Check for updates" button and its status line. One update service serves
// every press, so its signals are connected once.
class UpdateSection : public QWidget
{
    Q_OBJECT
public:
    explicit UpdateSection(QWidget* parent = nullptr);

    QPushButton* checkButton() const { return m_button; }
    QLabel* statusLabel() const { return m_status; }

private:
    void check();
    void offer(const QString& version, const QString& url, const QString& notes);
    static QString question(const QString& version, const QString& notes);
    void onDownloaded(const QString& path);
    void showProgress(qint64 received, qint64 total);
    void finish(const QString& status);

    QPushButton* m_button;
    QLabel* m_status;
    service::updater::UpdateService* m_service = nullptr;
};

} // namespace zelmor::widget::settings
