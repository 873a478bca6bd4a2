#include "Application.h"

#include "CommandLine.h"
#include "core/ConfigManager.h"
#include "core/DisplaySession.h"
#include "core/Log.h"
#include "manager/TrayService.h"
#include "widget/MainWindow.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QLibraryInfo>
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
    setApplicationVersion(QLatin1String(kApplicationVersion));
    setQuitOnLastWindowClosed(false);
    setWindowIcon(QIcon(QStringLiteral(":/icons/app.svg")));
    if (QStyle* fusion = QStyleFactory::create(QStringLiteral("Fusion"))) setStyle(fusion);
    core::tellDisplayServer();
}

QStringList Application::translationLocales(const QString& language, const QLocale& system)
{
    const QString wanted =
        language.isEmpty() || language == QLatin1String("system") ? system.name() : language;
    const bool chinese = QLocale(wanted).language() == QLocale::Chinese;
    const QString shipped = chinese ? QStringLiteral("zh_CN") : QStringLiteral("en_US");
    return wanted == shipped ? QStringList{wanted} : QStringList{wanted, shipped};
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
    const QStringList locales = translationLocales(language, QLocale::system());
    logI18n(QStringLiteral("--- reloadTranslators --- lang=%1 actualLocale=%2 sysName=%3")
                .arg(language, locales.first(), QLocale::system().name()));

    for (QTranslator** translator : {&m_translator, &m_qtTranslator}) {
        if (*translator) removeTranslator(*translator);
        delete *translator;
        *translator = nullptr;
    }
    m_translator = new QTranslator(this);
    for (const QString& locale : locales) {
        if (!loadOwnTranslation(locale)) continue;
        installTranslator(m_translator);
        installQtTranslation(locale);
        logI18n(QStringLiteral("  tr(Language:)= ") +
                QCoreApplication::translate("zelmor::widget::SettingsDialog",
                                            "Language:", "settings.general.language"));
        return;
    }
    logI18n(QStringLiteral("  NO qm loaded"));
}

bool Application::loadOwnTranslation(const QString& locale)
{
    const QString fileName = QStringLiteral("zelmor_") + locale + QStringLiteral(".qm");
    for (const QString& dir : translationDirectories()) {
        // QTranslator would fall back to shorter names (zelmor_de.qm); only the exact file counts.
        const bool loaded = QFileInfo::exists(dir + QLatin1Char('/') + fileName) &&
                            m_translator->load(fileName, dir, QString(), QString());
        logI18n(QStringLiteral("  dir=%1 -> %2")
                    .arg(dir, loaded ? QStringLiteral("LOADED") : QStringLiteral("miss")));
        if (loaded) return true;
    }
    return false;
}

// Qt's own texts (qtbase: standard buttons, file dialogs), found where Qt is installed, or in
// "translations" beside a deployed executable.
void Application::installQtTranslation(const QString& locale)
{
    m_qtTranslator = new QTranslator(this);
    const QStringList dirs = {QLibraryInfo::path(QLibraryInfo::TranslationsPath),
                              applicationDirPath() + QStringLiteral("/translations")};
    for (const QString& dir : dirs) {
        if (m_qtTranslator->load(QStringLiteral("qtbase_") + locale, dir)) {
            installTranslator(m_qtTranslator);
            return;
        }
    }
    logI18n(QStringLiteral("  no Qt translation for %1").arg(locale));
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
