#pragma once

#include <QApplication>

class QTranslator;

namespace zelmor::manager {
class TrayService;
}
namespace zelmor::widget {
class MainWindow;
}

namespace zelmor::app {

class Application : public QApplication
{
    Q_OBJECT
public:
    Application(int& argc, char** argv);

    // Replaces the translator with one for the configured language; the program runs on
    // its source texts when no file is found.
    void reloadTranslators();

    // On every language change: the translator first, then a new tray menu and new panels.
    void followLanguage(manager::TrayService& tray, widget::MainWindow& window);

    // The locales whose "zelmor_<locale>.qm" is looked for, in order: the configured
    // language, or the system's full language_COUNTRY name for "system" and empty; then the
    // shipped translation of the same language, Chinese for Chinese and English for the rest,
    // since some source texts are Chinese.
    static QStringList translationLocales(const QString& language, const QLocale& system);

    // The folders searched for translations, in order.
    static QStringList translationDirectories();

private:
    bool loadOwnTranslation(const QString& locale);
    void installQtTranslation(const QString& locale);

    QTranslator* m_translator = nullptr;
    // Qt's own texts: standard buttons, file dialogs.
    QTranslator* m_qtTranslator = nullptr;
};

} // namespace zelmor::app
