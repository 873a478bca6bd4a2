#include "ConfigManager.h"

#include "Log.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace zelmor::core {

enum class ConfigManager::Key {
    Theme,
    Language,
    OutputDir,
    FileNaming,
    StartMinimizedToTray,
    GifFps,
    GifDurationSecs,
    ScrollIntervalMs,
    ScrollIdleFrames,
    PinMinZoom,
    PinMaxZoom,
    PinOpacity,
    PinPosition,
    AutoStart,
    RunAsAdmin,
    CheckUpdatesOnStart,
    CaptureFormat,
    JpgQuality,
    AutoCopy,
    AutoSave,
    HidePins,
    McpCustomPaths,
};

namespace {

struct Setting
{
    ConfigManager::Key id;
    const char* key;
    QVariant fallback;
    bool flushAtOnce;
};

using Key = ConfigManager::Key;

const Setting& setting(Key key)
{
    static const Setting table[] = {
        {Key::Theme, "general/theme", QStringLiteral("system"), false},
        {Key::Language, "general/language", QStringLiteral("system"), true},
        {Key::OutputDir, "general/outputDir", QVariant(), false},
        {Key::FileNaming, "general/fileNaming", QStringLiteral("Zelmor_{date}_{time}"), false},
        {Key::StartMinimizedToTray, "general/startMinimizedToTray", true, false},
        {Key::GifFps, "record/gifFps", 15, false},
        {Key::GifDurationSecs, "record/gifDurationSecs", 5, false},
        {Key::ScrollIntervalMs, "record/scrollIntervalMs", 250, false},
        {Key::ScrollIdleFrames, "record/scrollIdleFrames", 6, false},
        {Key::PinMinZoom, "pin/minZoom", 0.1, false},
        {Key::PinMaxZoom, "pin/maxZoom", 5.0, false},
        {Key::PinOpacity, "pin/opacity", 1.0, true},
        {Key::PinPosition, "pin/position", QStringLiteral("center"), true},
        {Key::AutoStart, "startup/autoStart", false, true},
        {Key::RunAsAdmin, "startup/runAsAdmin", false, true},
        {Key::CheckUpdatesOnStart, "startup/checkUpdatesOnStart", true, true},
        {Key::CaptureFormat, "capture/format", QStringLiteral("png"), true},
        {Key::JpgQuality, "capture/jpgQuality", 90, true},
        {Key::AutoCopy, "capture/autoCopy", true, true},
        {Key::AutoSave, "capture/autoSave", true, true},
        {Key::HidePins, "capture/hidePins", false, true},
        {Key::McpCustomPaths, "mcp/customPaths", QStringList(), true},
    };
    const Setting& s = table[int(key)];
    Q_ASSERT(s.id == key);
    return s;
}

struct HotkeyDefault
{
    const char* name;
    const char* sequence;
};

constexpr HotkeyDefault kHotkeyDefaults[] = {
    {"region", "F6"},          {"fullscreen", "Ctrl+F6"},  {"window", "Ctrl+Alt+W"},
    {"delayed", "Ctrl+Alt+D"}, {"gif", "Ctrl+Alt+G"},      {"scroll", "Ctrl+Alt+S"},
    {"pinClickThrough", "F9"}, {"pinFromClipboard", "F7"}, {"history", "Ctrl+Alt+H"},
    {"shortcutSheet", "F1"},
};

// QSettings writes the group "general" as [%General], which reads back as "General"; keys
// compare case-sensitively here (not on Windows), so the group is stored capitalised.
QString storedKey(const QString& key)
{
    if (key.startsWith(QLatin1String("general/"))) return QLatin1Char('G') + key.mid(1);
    return key;
}

QString defaultIniPath()
{
    return QSettings(QSettings::IniFormat, QSettings::UserScope,
                     QCoreApplication::organizationName(), QCoreApplication::applicationName())
        .fileName();
}

} // namespace

ConfigManager& ConfigManager::instance()
{
    static ConfigManager manager(defaultIniPath());
    return manager;
}

ConfigManager::ConfigManager(const QString& iniPath, QObject* parent)
    : QObject(parent), m_settings(iniPath, QSettings::IniFormat)
{
    migrateOlderFile();
    keepCopyOfUnreadableFile();
    writeLogLine(QStringLiteral("[config] ini=") + m_settings.fileName() +
                 QStringLiteral(" lang=") + language() + QStringLiteral(" theme=") + theme());
}

void ConfigManager::migrateOlderFile()
{
    const QString current = m_settings.fileName();
    if (QFileInfo::exists(current)) return;
    const QString older =
        QFileInfo(current).absoluteDir().filePath(QStringLiteral("Zelmor-Qt.ini"));
    if (!QFileInfo::exists(older)) return;
    if (!QFile::copy(older, current)) return;
    m_settings.sync();
    writeLogLine(QStringLiteral("[config] migrated prefs from ") + older);
}

// A file QSettings cannot parse would be overwritten by the next write, losing what the
// user had in it; a dated copy keeps it.
void ConfigManager::keepCopyOfUnreadableFile()
{
    if (m_settings.status() == QSettings::NoError) return;
    const QString current = m_settings.fileName();
    const QString copy = current + QStringLiteral(".unreadable-") +
                         QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss"));
    const bool kept = QFileInfo(current).isFile() && QFile::copy(current, copy);
    writeLogLine(
        QStringLiteral("[config] cannot read ") + current +
        (kept ? QStringLiteral(", kept a copy as ") + copy : QStringLiteral(", using defaults")));
}

QVariant ConfigManager::read(Key key) const
{
    const Setting& s = setting(key);
    return m_settings.value(storedKey(QLatin1String(s.key)), s.fallback);
}

void ConfigManager::write(Key key, const QVariant& value)
{
    const Setting& s = setting(key);
    m_settings.setValue(storedKey(QLatin1String(s.key)), value);
    if (s.flushAtOnce) m_settings.sync();
}

bool ConfigManager::writeIfChanged(const QString& key, const QString& value, bool flush)
{
    if (m_settings.value(storedKey(key)).toString() == value) return false;
    m_settings.setValue(storedKey(key), value);
    if (flush) m_settings.sync();
    return true;
}

QString ConfigManager::theme() const
{
    return read(Key::Theme).toString();
}
void ConfigManager::setTheme(const QString& theme)
{
    if (writeIfChanged(QStringLiteral("general/theme"), theme, false)) Q_EMIT themeChanged();
}

QString ConfigManager::language() const
{
    return read(Key::Language).toString();
}
void ConfigManager::setLanguage(const QString& language)
{
    if (writeIfChanged(QStringLiteral("general/language"), language, true))
        Q_EMIT languageChanged();
}

QString ConfigManager::outputDir() const
{
    const QString dir = read(Key::OutputDir).toString();
    if (!dir.isEmpty()) return dir;
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) +
           QStringLiteral("/Zelmor");
}
void ConfigManager::setOutputDir(const QString& dir)
{
    write(Key::OutputDir, dir);
}

QString ConfigManager::fileNaming() const
{
    return read(Key::FileNaming).toString();
}
void ConfigManager::setFileNaming(const QString& pattern)
{
    write(Key::FileNaming, pattern);
}

bool ConfigManager::startMinimizedToTray() const
{
    return read(Key::StartMinimizedToTray).toBool();
}
void ConfigManager::setStartMinimizedToTray(bool on)
{
    write(Key::StartMinimizedToTray, on);
}

QString ConfigManager::hotkey(const char* name) const
{
    QString fallback;
    for (const HotkeyDefault& d : kHotkeyDefaults)
        if (qstrcmp(d.name, name) == 0) fallback = QLatin1String(d.sequence);
    return m_settings.value(QStringLiteral("hotkeys/") + QLatin1String(name), fallback).toString();
}

// Compared with the key in effect: a default cleared before it was ever stored is stored
// empty, or it would come back.
void ConfigManager::setHotkey(const char* name, const QString& sequence)
{
    if (hotkey(name) == sequence) return;
    m_settings.setValue(QStringLiteral("hotkeys/") + QLatin1String(name), sequence);
    m_settings.sync();
    Q_EMIT hotkeysChanged();
}

int ConfigManager::gifFps() const
{
    return read(Key::GifFps).toInt();
}
void ConfigManager::setGifFps(int fps)
{
    write(Key::GifFps, fps);
}
int ConfigManager::gifDurationSecs() const
{
    return read(Key::GifDurationSecs).toInt();
}
void ConfigManager::setGifDurationSecs(int secs)
{
    write(Key::GifDurationSecs, secs);
}
int ConfigManager::scrollIntervalMs() const
{
    return read(Key::ScrollIntervalMs).toInt();
}
int ConfigManager::scrollIdleFrames() const
{
    return read(Key::ScrollIdleFrames).toInt();
}

double ConfigManager::pinMinZoom() const
{
    return read(Key::PinMinZoom).toDouble();
}
void ConfigManager::setPinMinZoom(double zoom)
{
    write(Key::PinMinZoom, zoom);
}
double ConfigManager::pinMaxZoom() const
{
    return read(Key::PinMaxZoom).toDouble();
}
void ConfigManager::setPinMaxZoom(double zoom)
{
    write(Key::PinMaxZoom, zoom);
}
double ConfigManager::pinOpacity() const
{
    return read(Key::PinOpacity).toDouble();
}
void ConfigManager::setPinOpacity(double opacity)
{
    write(Key::PinOpacity, opacity);
}
QString ConfigManager::pinPosition() const
{
    return read(Key::PinPosition).toString();
}
void ConfigManager::setPinPosition(const QString& position)
{
    write(Key::PinPosition, position);
}

bool ConfigManager::autoStart() const
{
    return read(Key::AutoStart).toBool();
}
void ConfigManager::setAutoStart(bool on)
{
    write(Key::AutoStart, on);
}
bool ConfigManager::runAsAdmin() const
{
    return read(Key::RunAsAdmin).toBool();
}
void ConfigManager::setRunAsAdmin(bool on)
{
    write(Key::RunAsAdmin, on);
}
bool ConfigManager::checkUpdatesOnStart() const
{
    return read(Key::CheckUpdatesOnStart).toBool();
}
void ConfigManager::setCheckUpdatesOnStart(bool on)
{
    write(Key::CheckUpdatesOnStart, on);
}

QString ConfigManager::captureFormat() const
{
    return read(Key::CaptureFormat).toString();
}
void ConfigManager::setCaptureFormat(const QString& format)
{
    write(Key::CaptureFormat, format);
}
int ConfigManager::jpgQuality() const
{
    return read(Key::JpgQuality).toInt();
}
void ConfigManager::setJpgQuality(int quality)
{
    write(Key::JpgQuality, quality);
}
bool ConfigManager::autoCopy() const
{
    return read(Key::AutoCopy).toBool();
}
void ConfigManager::setAutoCopy(bool on)
{
    write(Key::AutoCopy, on);
}
bool ConfigManager::autoSave() const
{
    return read(Key::AutoSave).toBool();
}
void ConfigManager::setAutoSave(bool on)
{
    write(Key::AutoSave, on);
}
bool ConfigManager::hidePins() const
{
    return read(Key::HidePins).toBool();
}
void ConfigManager::setHidePins(bool on)
{
    write(Key::HidePins, on);
}

QStringList ConfigManager::mcpCustomPaths() const
{
    return read(Key::McpCustomPaths).toStringList();
}

void ConfigManager::addMcpCustomPath(const QString& path)
{
    if (path.trimmed().isEmpty()) return;
    QStringList paths = mcpCustomPaths();
    if (paths.contains(path)) return;
    paths.append(path);
    write(Key::McpCustomPaths, paths);
}

void ConfigManager::removeMcpCustomPath(const QString& path)
{
    QStringList paths = mcpCustomPaths();
    if (paths.removeAll(path) > 0) write(Key::McpCustomPaths, paths);
}

} // namespace zelmor::core
