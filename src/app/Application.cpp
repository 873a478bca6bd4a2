#include "Application.h"

#include "core/ConfigManager.h"
#include "core/Log.h"
#include "manager/TrayService.h"
#include "widget/MainWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QTranslator>

namespace zelmor::app {

namespace {
void logI18n(const QString& text)
{
    core::writeLogLine(QStringLiteral("[i18n] ") + text);
}
} // namespace

Application::Application(int& argc, char** argv) : QApplication(argc, argv)
{
    setOrganizationName(QStringLiteral("Zelmor"));
    setApplicationName(QStringLiteral("Zelmor"));
    setApplicationVersion(QStringLiteral("1.0.20"));
    setQuitOnLastWindowClosed(false);
    if (QStyle* fusion = QStyleFactory::create(QStringLiteral("Fusion"))) setStyle(fusion);
}

QString Application::translationLocale(const QString& language, const QLocale& system)
{
    if (language.isEmpty() || language == QLatin1String("system")) return system.name();
    return language;
}

QStringList Application::translationDirectories()
{
    // An installed copy keeps its files in <prefix>/share, beside <prefix>/bin.
    const QString installed =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/zelmor/translations");
    return {QStandardPaths::writableLocation(QStandardPaths::AppDataLocation),
            QCoreApplication::applicationDirPath(), QDir::cleanPath(installed),
            QStringLiteral(":/translations")};
}

void Application::reloadTranslators()
{
    const QString language = core::ConfigManager::instance().language();
    const QString actual = translationLocale(language, QLocale::system());
    logI18n(QStringLiteral("--- reloadTranslators --- lang=%1 actualLocale=%2 sysName=%3")
                .arg(language, actual, QLocale::system().name()));

    if (m_translator) {
        removeTranslator(m_translator);
        delete m_translator;
        m_translator = nullptr;
    }
    m_translator = new QTranslator(this);

    const QString fileName = QStringLiteral("zelmor_") + actual + QStringLiteral(".qm");
    bool loaded = false;
    for (const QString& dir : translationDirectories()) {
        // QTranslator would fall back to shorter names (zelmor_de.qm); only the exact file counts.
        loaded = QFileInfo::exists(dir + QLatin1Char('/') + fileName) &&
                 m_translator->load(fileName, dir, QString(), QString());
        logI18n(QStringLiteral("  dir=%1 -> %2")
                    .arg(dir, loaded ? QStringLiteral("LOADED") : QStringLiteral("miss")));
        if (loaded) break;
    }
    if (!loaded) {
        logI18n(QStringLiteral("  NO qm loaded"));
        return;
    }
    installTranslator(m_translator);
    logI18n(QStringLiteral("  tr(Language:)= ") +
            QCoreApplication::translate("zelmor::widget::SettingsDialog",
                                        "Language:", "settings.general.language"));
}

void Application::followLanguage(manager::TrayService& tray, widget::MainWindow& window)
{
    core::ConfigManager& config = core::ConfigManager::instance();
    connect(&config, &core::ConfigManager::languageChanged, this, &Application::reloadTranslators);
    connect(&config, &core::ConfigManager::languageChanged, &tray,
            &manager::TrayService::retranslate);
    connect(&config, &core::ConfigManager::languageChanged, &window,
            &widget::MainWindow::retranslateUi);
}

} // namespace zelmor::app
