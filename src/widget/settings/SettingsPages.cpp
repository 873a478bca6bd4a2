#include "SettingsPages.h"

#include "DesktopHotkeys.h"
#include "HotkeyEdit.h"
#include "SettingsBlocks.h"
#include "UpdateSection.h"
#include "core/ConfigManager.h"
#include "core/HotkeyState.h"
#include "core/Toast.h"
#include "platform/Autostart.h"
#include "platform/Elevation.h"
#include "platform/Hotkeys.h"
#include "service/history/HistoryService.h"
#include "widget/LicenseDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QSlider>
#include <QSpinBox>
#include <QStandardPaths>
#include <QUrl>
#include <QVBoxLayout>

#include <functional>
#include <utility>

namespace zelmor::widget::settings {

namespace {

using core::ConfigManager;

ConfigManager& config()
{
    return ConfigManager::instance();
}

struct Choice
{
    const char* data;
    QString text;
};

// A stored value missing from the list leaves the combo at no selection.
QComboBox* makeCombo(std::initializer_list<Choice> choices, const QString& current,
                     void (ConfigManager::*write)(const QString&))
{
    auto* combo = new QComboBox;
    for (const Choice& choice : choices)
        combo->addItem(choice.text, QLatin1String(choice.data));
    combo->setCurrentIndex(combo->findData(current));
    QObject::connect(combo, &QComboBox::currentIndexChanged, combo,
                     [combo, write] { (config().*write)(combo->currentData().toString()); });
    return combo;
}

QSpinBox* makeSpin(int min, int max, int value, std::function<void(int)> write, int step = 1)
{
    auto* spin = new QSpinBox;
    spin->setRange(min, max);
    spin->setSingleStep(step);
    spin->setValue(value);
    QObject::connect(spin, &QSpinBox::valueChanged, spin, std::move(write));
    return spin;
}

// Written when the user leaves the field or presses Return, not on every key.
QLineEdit* makeLineEdit(const QString& value, void (ConfigManager::*write)(const QString&))
{
    auto* edit = new QLineEdit(value);
    QObject::connect(edit, &QLineEdit::editingFinished, edit,
                     [edit, write] { (config().*write)(edit->text()); });
    return edit;
}

// Said under a hotkey field while the system refuses its combination.
void addRefusalNote(QWidget* field, QWidget* edit, const QString& name)
{
    auto* note = new QLabel(SettingsPages::tr("Not active: another program holds this "
                                              "combination, or the system does not allow it.",
                                              "settings.hotkeys.refused"),
                            field);
    field->layout()->addWidget(note);
    note->setObjectName(QStringLiteral("fieldWarning"));
    note->setWordWrap(true);
    const auto follow = [note, edit, name] {
        const bool refused = !core::HotkeyState::instance().isActive(name);
        note->setVisible(refused);
        edit->setAccessibleDescription(refused ? note->text() : QString());
    };
    follow();
    QObject::connect(&core::HotkeyState::instance(), &core::HotkeyState::refusedChanged, note,
                     follow);
}

QString dataFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

// The entry that starts Zelmor with the session is the system's own, so the switch shows and
// writes that entry; the setting follows it.
void addAutostartRow(QVBoxLayout* card)
{
    const bool windows = platform::autostartKind() == platform::AutostartKind::WindowsSignIn;
    const QString title =
        windows ? SettingsPages::tr("Start with Windows", "settings.general.autoStart")
                : SettingsPages::tr("Start with the session", "settings.general.autoStart.session");
    QCheckBox* toggle = addSettingRow(card, title,
                                      SettingsPages::tr("Launch Zelmor automatically when you "
                                                        "sign in.",
                                                        "settings.general.autoStart.desc"),
                                      platform::autostartEnabled(), {});
    QObject::connect(toggle, &QCheckBox::toggled, toggle, [toggle](bool on) {
        const std::string program = QCoreApplication::applicationFilePath().toStdString();
        if (platform::setAutostart(on, program)) {
            config().setAutoStart(on);
            return;
        }
        const QSignalBlocker quiet(toggle);
        toggle->setChecked(!on);
        core::notifyUser(toggle->accessibleName(),
                         SettingsPages::tr("The autostart entry could not be changed.",
                                           "settings.general.autoStart.failed"),
                         3000);
    });
}

} // namespace

QWidget* SettingsPages::general()
{
    const Page page =
        makePage(tr("General", "settings.general.page.title"),
                 tr("Appearance, language, and startup behavior.", "settings.general.page.desc"));
    QVBoxLayout* appearance = addCard(
        page.body, tr("Appearance", "settings.general.appearance"),
        tr("Match Zelmor to your system or pick a theme.", "settings.general.appearance.desc"));
    QComboBox* theme = makeCombo({{"system", tr("System", "settings.general.theme.system")},
                                  {"light", tr("Light", "settings.general.theme.light")},
                                  {"dark", tr("Dark", "settings.general.theme.dark")}},
                                 config().theme(), &ConfigManager::setTheme);
    // The tray changes the theme too.
    QObject::connect(&config(), &ConfigManager::themeChanged, theme, [theme] {
        const QSignalBlocker quiet(theme);
        theme->setCurrentIndex(theme->findData(config().theme()));
    });
    QComboBox* language =
        makeCombo({{"system", tr("System default", "settings.general.lang.system")},
                   {"zh_CN", QStringLiteral("简体中文")},
                   {"en_US", QStringLiteral("English")}},
                  config().language(), &ConfigManager::setLanguage);
    appearance->addWidget(
        makeFieldPair(makeField(tr("Theme", "settings.general.theme"), theme),
                      makeField(tr("Language", "settings.general.language"), language)));

    QVBoxLayout* startup = addCard(
        page.body, tr("Startup", "settings.general.startup"),
        tr("Decide when Zelmor launches and what it shows.", "settings.general.startup.desc"));
    addAutostartRow(startup);
    addSettingRow(startup, tr("Start minimized to tray", "settings.general.startMinimized"),
                  tr("Open to the tray, no main window.", "settings.general.startMinimized.desc"),
                  config().startMinimizedToTray(),
                  [](bool on) { config().setStartMinimizedToTray(on); });
    addSettingRow(
        startup, tr("Check for updates on startup", "settings.general.checkUpdates"),
        tr("Ping the update server once when Zelmor starts.", "settings.general.checkUpdates.desc"),
        config().checkUpdatesOnStart(), [](bool on) { config().setCheckUpdatesOnStart(on); });
    // Offered only where the system can start a program with administrator rights.
    if (platform::elevationAvailable())
        addSettingRow(startup, tr("Run as administrator", "settings.general.runAsAdmin"),
                      tr("Restart with elevated privileges so Zelmor can capture UAC prompts.",
                         "settings.general.runAsAdmin.desc"),
                      config().runAsAdmin(), [](bool on) { config().setRunAsAdmin(on); });
    page.body->addStretch(1);
    return page.scroll;
}

QWidget* SettingsPages::hotkeys()
{
    using Hotkeys = QList<HotkeyLabel>;
    const Hotkeys capture = {
        {"region", tr("Region capture:", "settings.hotkeys.region")},
        {"fullscreen", tr("Fullscreen capture:", "settings.hotkeys.fullscreen")},
        {"window", tr("Window capture:", "settings.hotkeys.window")},
        {"delayed", tr("Delayed capture:", "settings.hotkeys.delayed")}};
    const Hotkeys tools = {
        {"gif", tr("GIF record:", "settings.hotkeys.gif")},
        {"scroll", tr("Scroll capture:", "settings.hotkeys.scroll")},
        {"pinClickThrough", tr("Pin click-through:", "settings.hotkeys.pinClickThrough")},
        {"pinFromClipboard", tr("Pin from clipboard:", "settings.hotkeys.pinFromClipboard")},
        {"history", tr("History panel:", "settings.hotkeys.history")},
        {"shortcutSheet", tr("Shortcut sheet:", "settings.hotkeys.shortcutSheet")}};
    const platform::HotkeyBinder binder = platform::hotkeyBinder();
    const bool desktopBinds = binder == platform::HotkeyBinder::Desktop;
    const Page page = makePage(tr("Hotkeys", "settings.hotkeys.page.title"),
                               binder == platform::HotkeyBinder::Program
                                   ? tr("Global keyboard shortcuts. Edits apply immediately.",
                                        "settings.hotkeys.page.desc")
                                   : tr("Global keyboard shortcuts, bound by the desktop.",
                                        "settings.hotkeys.page.descDesktop"));
    if (desktopBinds) {
        Hotkeys all;
        for (HotkeyLabel hotkey : capture + tools)
            all << HotkeyLabel{hotkey.name, hotkey.label.remove(QRegularExpression(
                                                QStringLiteral("[:\\x{FF1A}]$")))};
        addDesktopBindingsCard(page.body, all);
    }
    const auto addGrid = [&page](const QString& title, const QString& description, int columns,
                                 const Hotkeys& hotkeys) {
        QVBoxLayout* card = addCard(page.body, title, description);
        auto* grid = new QGridLayout;
        grid->setHorizontalSpacing(20);
        int cell = 0;
        for (const HotkeyLabel& hotkey : hotkeys) {
            const char* name = hotkey.name;
            auto* edit = new HotkeyEdit(
                QKeySequence::fromString(config().hotkey(name), QKeySequence::PortableText));
            QObject::connect(edit, &HotkeyEdit::committed, edit, [name](const QKeySequence& keys) {
                config().setHotkey(name, keys.toString(QKeySequence::PortableText));
            });
            QWidget* field = makeField(hotkey.label, edit);
            addRefusalNote(field, edit, QLatin1String(name));
            grid->addWidget(field, cell / columns, cell % columns);
            ++cell;
        }
        card->addLayout(grid);
    };
    addGrid(tr("Capture", "settings.hotkeys.capture"),
            tr("Take a screenshot of a region, screen, window, or after a delay.",
               "settings.hotkeys.capture.desc"),
            2, capture);
    addGrid(tr("Tools & Utility Shortcuts", "settings.hotkeys.tools"),
            tr("Specialized capture modes, pin toggles, and shortcut utility panels.",
               "settings.hotkeys.tools.desc"),
            3, tools);
    // Where the desktop binds the keys, an edit takes effect when the desktop takes it up; a
    // desktop that took them through its portal keeps its own copy of them from then on.
    if (!desktopBinds) {
        auto* hint = new QLabel(
            binder == platform::HotkeyBinder::Program
                ? tr("Hotkeys take effect immediately after editing.", "settings.hotkeys.hint")
                : tr("The desktop took these keys when Zelmor first offered them; change them "
                     "later in the desktop's shortcut settings, under Zelmor.",
                     "settings.hotkeys.portalHint"));
        hint->setObjectName(QStringLiteral("fieldHint"));
        hint->setWordWrap(true);
        page.body->addWidget(hint);
    }
    page.body->addStretch(1);
    return page.scroll;
}

QWidget* SettingsPages::capture()
{
    const Page page = makePage(tr("Capture", "settings.capture.page.title"),
                               tr("Output format, save location, and auto-behavior after a "
                                  "capture.",
                                  "settings.capture.page.desc"));
    QVBoxLayout* format =
        addCard(page.body, tr("Format", "settings.capture.format"),
                tr("Default image format. PNG for lossless, JPG for smaller files.",
                   "settings.capture.format.desc"));
    QComboBox* formatCombo =
        makeCombo({{"png", QStringLiteral("PNG")}, {"jpg", QStringLiteral("JPG")}},
                  config().captureFormat(), &ConfigManager::setCaptureFormat);
    QSpinBox* quality =
        makeSpin(1, 100, config().jpgQuality(), [](int q) { config().setJpgQuality(q); });
    format->addWidget(makeFieldPair(
        makeField(tr("Default format", "settings.capture.defaultFormat"), formatCombo),
        makeField(tr("JPG quality", "settings.capture.jpgQuality"), quality)));

    QVBoxLayout* save = addCard(page.body, tr("Save", "settings.capture.save"),
                                tr("Where captured images are written and how files are named.",
                                   "settings.capture.save.desc"));
    auto* dirWrap = new QWidget;
    dirWrap->setObjectName(QStringLiteral("inlineInputWrap"));
    auto* dirRow = new QHBoxLayout(dirWrap);
    dirRow->setContentsMargins(0, 0, 0, 0);
    dirRow->setSpacing(6);
    QLineEdit* dir = makeLineEdit(config().outputDir(), &ConfigManager::setOutputDir);
    dir->setAccessibleName(tr("Output directory", "settings.capture.outputDir"));
    QPushButton* browse = makeSettingsButton(tr("Browse…", "settings.capture.browse"));
    browse->setObjectName(QStringLiteral("inlineBtn"));
    QObject::connect(browse, &QPushButton::clicked, dir, [dir] {
        const QString chosen =
            QFileDialog::getExistingDirectory(dir->window(), QString(), dir->text());
        if (chosen.isEmpty()) return;
        dir->setText(chosen);
        config().setOutputDir(chosen);
    });
    dirRow->addWidget(dir, 1);
    dirRow->addWidget(browse);
    save->addWidget(makeField(tr("Output directory", "settings.capture.outputDir"), dirWrap));
    save->addWidget(makeField(
        tr("File name pattern", "settings.capture.fileNaming"),
        makeLineEdit(config().fileNaming(), &ConfigManager::setFileNaming),
        tr("Variables: {date}, {time}, {seq}, {w}, {h}.", "settings.capture.fileNaming.hint")));
    addSettingRow(save, tr("Auto-copy to clipboard", "settings.capture.autoCopy"), QString(),
                  config().autoCopy(), [](bool on) { config().setAutoCopy(on); });
    addSettingRow(save, tr("Auto-save file", "settings.capture.autoSave"), QString(),
                  config().autoSave(), [](bool on) { config().setAutoSave(on); });
    addSettingRow(save, tr("Hide pinned windows before capture", "settings.capture.hidePins"),
                  QString(), config().hidePins(), [](bool on) { config().setHidePins(on); });

    QVBoxLayout* gif =
        addCard(page.body, tr("GIF", "settings.capture.gif"),
                tr("Defaults for GIF screen recordings.", "settings.capture.gif.desc"));
    gif->addWidget(makeFieldPair(
        makeField(tr("GIF fps", "settings.capture.gifFps"),
                  makeSpin(1, 30, config().gifFps(), [](int v) { config().setGifFps(v); })),
        makeField(tr("GIF duration (s)", "settings.capture.gifDuration"),
                  makeSpin(1, 60, config().gifDurationSecs(),
                           [](int v) { config().setGifDurationSecs(v); }))));
    page.body->addStretch(1);
    return page.scroll;
}

QWidget* SettingsPages::pin()
{
    const Page page =
        makePage(tr("Pin", "settings.pin.page.title"),
                 tr("Defaults for pinned screenshot windows.", "settings.pin.page.desc"));
    QVBoxLayout* appearance = addCard(
        page.body, tr("Appearance", "settings.pin.appearance"),
        tr("Default opacity and where new pins appear on screen.", "settings.pin.appearance.desc"));
    auto* opacityRow = new QWidget;
    auto* opacityLayout = new QHBoxLayout(opacityRow);
    opacityLayout->setContentsMargins(0, 0, 0, 0);
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setRange(20, 100);
    slider->setValue(qRound(config().pinOpacity() * 100));
    auto* percent = new QLabel;
    percent->setMinimumWidth(40);
    const auto showPercent = [percent](int value) {
        percent->setText(QStringLiteral("%1%").arg(value));
    };
    showPercent(slider->value());
    QObject::connect(slider, &QSlider::valueChanged, percent, [showPercent](int value) {
        showPercent(value);
        config().setPinOpacity(value / 100.0);
    });
    opacityLayout->addWidget(slider, 1);
    opacityLayout->addWidget(percent);
    appearance->addWidget(makeField(tr("Default opacity", "settings.pin.opacity"), opacityRow));
    slider->setAccessibleName(tr("Default opacity", "settings.pin.opacity"));
    appearance->addWidget(
        makeField(tr("Default position", "settings.pin.position"),
                  makeCombo({{"center", tr("Screen center", "settings.pin.position.center")},
                             {"cursor", tr("Under cursor", "settings.pin.position.cursor")}},
                            config().pinPosition(), &ConfigManager::setPinPosition)));

    // The two bounds are not checked against each other.
    QVBoxLayout* zoom = addCard(page.body, tr("Zoom", "settings.pin.zoom"),
                                tr("How far a pin can be zoomed in or out with the scroll wheel.",
                                   "settings.pin.zoom.desc"));
    zoom->addWidget(
        makeFieldPair(makeField(tr("Min zoom (%)", "settings.pin.minZoom"),
                                makeSpin(
                                    10, 500, qRound(config().pinMinZoom() * 100),
                                    [](int v) { config().setPinMinZoom(v / 100.0); }, 10)),
                      makeField(tr("Max zoom (%)", "settings.pin.maxZoom"),
                                makeSpin(
                                    10, 500, qRound(config().pinMaxZoom() * 100),
                                    [](int v) { config().setPinMaxZoom(v / 100.0); }, 10))));
    page.body->addStretch(1);
    return page.scroll;
}

QWidget* SettingsPages::privacy()
{
    const Page page = makePage(tr("Privacy", "settings.privacy.page.title"),
                               tr("Zelmor works fully offline. Confirm where your data lives and "
                                  "clear it on demand.",
                                  "settings.privacy.page.desc"));
    QVBoxLayout* data =
        addCard(page.body, tr("Data", "settings.privacy.data"),
                tr("All captures and AI conversations stay on this machine. Nothing is uploaded.",
                   "settings.privacy.data.desc"));
    auto* folder = new QLabel(dataFolder());
    folder->setObjectName(QStringLiteral("fieldHint"));
    folder->setTextInteractionFlags(Qt::TextSelectableByMouse);
    data->addWidget(folder);
    auto* buttons = new QHBoxLayout;
    QPushButton* clear = makeSettingsButton(tr("Clear capture history", "settings.privacy.clear"));
    QPushButton* open = makeSettingsButton(tr("Open data folder", "settings.privacy.openFolder"));
    QWidget* pageWidget = page.scroll;
    QObject::connect(clear, &QPushButton::clicked, pageWidget, [pageWidget] {
        const auto answer =
            QMessageBox::question(pageWidget, tr("Clear history", "settings.privacy.clearTitle"),
                                  tr("Delete all history records? Files on disk are kept.",
                                     "settings.privacy.clearConfirm"),
                                  QMessageBox::Yes | QMessageBox::No);
        if (answer == QMessageBox::Yes) service::history::HistoryService::instance().clear();
    });
    QObject::connect(open, &QPushButton::clicked, open,
                     [] { QDesktopServices::openUrl(QUrl::fromLocalFile(dataFolder())); });
    buttons->addWidget(clear);
    buttons->addWidget(open);
    buttons->addStretch(1);
    data->addLayout(buttons);
    page.body->addStretch(1);
    return page.scroll;
}

QWidget* SettingsPages::about()
{
    const Page page =
        makePage(tr("About", "settings.about.page.title"),
                 tr("Version, updates, and open-source notices.", "settings.about.page.desc"));
    QVBoxLayout* card = addCard(
        page.body, QStringLiteral("Zelmor"),
        tr("Version %1", "settings.about.version").arg(QCoreApplication::applicationVersion()));
    auto* buttons = new QHBoxLayout;
    QPushButton* website = makeSettingsButton(tr("🌐 官方网站", "settings.about.website"));
    QPushButton* notice = makeSettingsButton(tr("Open-source notice", "settings.about.notice"));
    QObject::connect(website, &QPushButton::clicked, website,
                     [] { QDesktopServices::openUrl(QUrl(QStringLiteral("https://zelmor.app"))); });
    QWidget* pageWidget = page.scroll;
    QObject::connect(notice, &QPushButton::clicked, pageWidget, [pageWidget] {
        QString html;
        for (const LicenseNotice& n : licenseNotices())
            html += QStringLiteral("<p><b>%1</b> — %2<br>%3</p>")
                        .arg(n.component.toHtmlEscaped(), n.use.toHtmlEscaped(),
                             n.license.toHtmlEscaped());
        QMessageBox box(QMessageBox::NoIcon, tr("Open-source notice", "settings.about.notice"),
                        html, QMessageBox::Ok, pageWidget);
        box.setTextFormat(Qt::RichText);
        box.setTextInteractionFlags(Qt::TextBrowserInteraction);
        box.exec();
    });
    buttons->addWidget(website);
    buttons->addWidget(notice);
    buttons->addStretch(1);
    card->addLayout(buttons);
    card->addWidget(new UpdateSection);
    page.body->addStretch(1);
    return page.scroll;
}

} // namespace zelmor::widget::settings
