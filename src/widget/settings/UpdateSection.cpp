#include "UpdateSection.h"

#include "SettingsBlocks.h"
#include "service/updater/UpdateService.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace zelmor::widget::settings {

namespace {

constexpr int kNotesShown = 400;
constexpr double kBytesPerMb = 1048576.0;

} // namespace

UpdateSection::UpdateSection(QWidget* parent)
    : QWidget(parent),
      m_button(makeSettingsButton(tr("Check for updates", "settings.about.checkUpdates"), true)),
      m_status(new QLabel(tr("Last checked: never", "settings.about.lastChecked"), this))
{
    m_status->setObjectName(QStringLiteral("settingRowDesc"));
    m_status->setWordWrap(true);
    m_status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_button);
    row->addWidget(m_status, 1);
    connect(m_button, &QPushButton::clicked, this, &UpdateSection::check);
}

void UpdateSection::check()
{
    using service::updater::UpdateService;
    if (!m_service) {
        m_service = new UpdateService(this);
        connect(m_service, &UpdateService::updateAvailable, this, &UpdateSection::offer);
        connect(m_service, &UpdateService::upToDate, this,
                [this] { finish(tr("You're on the latest version.", "settings.about.upToDate")); });
        connect(m_service, &UpdateService::checkFailed, this, [this](const QString& reason) {
            finish(tr("Check failed: %1", "settings.about.checkFailed").arg(reason));
        });
        connect(m_service, &UpdateService::downloadProgress, this, &UpdateSection::showProgress);
        connect(m_service, &UpdateService::installerLaunched, this, &UpdateSection::onDownloaded);
        connect(m_service, &UpdateService::downloadFailed, this, [this](const QString& reason) {
            finish(tr("Download failed: %1", "settings.about.downloadFailed").arg(reason));
        });
    }
    m_button->setEnabled(false);
    m_status->setText(tr("Checking…", "settings.about.checking"));
    m_service->checkForUpdates();
}

QString UpdateSection::question(const QString& version, const QString& notes)
{
#ifdef Q_OS_WIN
    const QString text = tr("Version %1 is available. Download and install now?\n\n%2",
                            "settings.about.availableAskInstall");
#else
    const QString text =
        tr("Version %1 is available. Download it to your download folder now?\n\n%2",
           "settings.about.availableAsk");
#endif
    return text.arg(version, notes.left(kNotesShown));
}

void UpdateSection::offer(const QString& version, const QString& url, const QString& notes)
{
    m_status->setText(tr("Update available: %1", "settings.about.available").arg(version));
    const QMessageBox::StandardButton answer = QMessageBox::question(
        this, tr("Update available", "settings.about.availableTitle"), question(version, notes));
    if (answer != QMessageBox::Yes || url.isEmpty()) {
        m_button->setEnabled(true);
        return;
    }
    m_status->setText(tr("Downloading…", "settings.about.downloading"));
    m_service->downloadAndInstall(url);
}

// Windows quits for the installer it started; on Linux nothing was installed yet, so Zelmor
// stays open.
void UpdateSection::onDownloaded(const QString& path)
{
#ifdef Q_OS_WIN
    finish(tr("Installer launched: %1. Zelmor will now quit.", "settings.about.installerLaunched")
               .arg(path));
    QCoreApplication::quit();
#else
    finish(tr("Saved to %1. Install the package from there, then restart Zelmor.",
              "settings.about.downloaded")
               .arg(path));
#endif
}

void UpdateSection::showProgress(qint64 received, qint64 total)
{
    if (total > 0)
        m_status->setText(tr("Downloading… %1%", "settings.about.downloadingPercent")
                              .arg(received * 100 / total));
    else
        m_status->setText(tr("Downloading… %1 MB", "settings.about.downloadingMb")
                              .arg(QString::number(received / kBytesPerMb, 'f', 1)));
}

void UpdateSection::finish(const QString& status)
{
    m_status->setText(status);
    m_button->setEnabled(true);
}

} // namespace zelmor::widget::settings
