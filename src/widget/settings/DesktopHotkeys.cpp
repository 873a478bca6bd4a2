#include "DesktopHotkeys.h"

#include "SettingsBlocks.h"
#include "SettingsPages.h"
#include "core/ConfigManager.h"
#include "core/HotkeyActions.h"
#include "core/Toast.h"
#include "core/Utilities.h"
#include "manager/HotkeyService.h"
#include "platform/Hotkeys.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeySequence>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

namespace zelmor::widget::settings {

namespace {

// As a shell reads it: desktops run the command through one, or split it the same way.
QString shellQuoted(const QString& word)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_@%+=:,./-]+$"));
    if (plain.match(word).hasMatch()) return word;
    return QLatin1Char('\'') + QString(word).replace(QLatin1Char('\''), QStringLiteral("'\\''")) +
           QLatin1Char('\'');
}

QString commandOf(const char* name)
{
    return shellQuoted(QCoreApplication::applicationFilePath()) + QLatin1Char(' ') +
           QLatin1String(core::hotkeyActionNamed(name)->option);
}

} // namespace

QString desktopBindingsText(const QList<HotkeyLabel>& hotkeys)
{
    const bool configFile = !platform::desktopBindingFile().empty();
    QStringList lines;
    QStringList unbound; // on sway, as comments under the lines
    for (const HotkeyLabel& hotkey : hotkeys) {
        const QString stored = core::ConfigManager::instance().hotkey(hotkey.name);
        const QString command = commandOf(hotkey.name);
        if (!configFile) {
            const QString keys = QKeySequence::fromString(stored, QKeySequence::PortableText)
                                     .toString(QKeySequence::NativeText);
            lines << (keys.isEmpty()
                          ? hotkey.label
                          : hotkey.label + QStringLiteral(" (") + keys + QLatin1Char(')'))
                  << command << QString();
            continue;
        }
        const auto binding = manager::HotkeyService::translate(stored);
        const std::string line = platform::desktopBindingLine(binding.modifiers, binding.virtualKey,
                                                              command.toStdString());
        if (line.empty())
            unbound << QStringLiteral("# ") + hotkey.label + QStringLiteral(": ") + command;
        else
            lines << QString::fromStdString(line);
    }
    return (lines + unbound).join(QLatin1Char('\n')).trimmed() + QLatin1Char('\n');
}

void addDesktopBindingsCard(QVBoxLayout* page, const QList<HotkeyLabel>& hotkeys)
{
    const QString file = QString::fromStdString(platform::desktopBindingFile());
    const QString description =
        file.isEmpty()
            ? SettingsPages::tr("Zelmor cannot bind global keys on this desktop. In the "
                                "desktop's keyboard settings, bind each command below to a key; "
                                "the keys below are suggestions.",
                                "settings.hotkeys.desktop.commands")
            : SettingsPages::tr("Zelmor cannot bind global keys on this desktop. Add these lines "
                                "to %1 and reload sway (Mod4+Shift+C). They follow the keys "
                                "below.",
                                "settings.hotkeys.desktop.sway")
                  .arg(file);
    QVBoxLayout* card =
        addCard(page, SettingsPages::tr("The desktop binds the keys", "settings.hotkeys.desktop"),
                description);
    auto* text = new QPlainTextEdit;
    text->setObjectName(QStringLiteral("desktopBindings"));
    text->setAccessibleName(
        SettingsPages::tr("Commands to bind", "settings.hotkeys.desktop.commandsName"));
    text->setReadOnly(true);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text->setFixedHeight(text->fontMetrics().lineSpacing() * 11);
    const auto follow = [text, hotkeys] { text->setPlainText(desktopBindingsText(hotkeys)); };
    follow();
    QObject::connect(&core::ConfigManager::instance(), &core::ConfigManager::hotkeysChanged, text,
                     follow);
    card->addWidget(text);
    QPushButton* copy = makeSettingsButton(SettingsPages::tr("Copy", "settings.hotkeys.copy"));
    QObject::connect(copy, &QPushButton::clicked, text, [text] {
        core::copyTextToClipboard(text->toPlainText());
        core::notifyUser(
            SettingsPages::tr("Copied", "settings.hotkeys.copied"),
            SettingsPages::tr("The commands are on the clipboard.", "settings.hotkeys.copied.body"),
            3000);
    });
    auto* row = new QHBoxLayout;
    row->addWidget(copy);
    row->addStretch(1);
    card->addLayout(row);
}

} // namespace zelmor::widget::settings
