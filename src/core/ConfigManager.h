#pragma once

#include <QObject>
#include <QSettings>
#include <QStringList>

namespace zelmor::core {

// The one store of user settings. It keeps nothing of its own: every getter asks the
// INI file's QSettings and applies the key's default; setters write what they are given.
class ConfigManager : public QObject
{
    Q_OBJECT
public:
    static ConfigManager& instance();

    // A store on an explicit INI file; the application uses instance().
    explicit ConfigManager(const QString& iniPath, QObject* parent = nullptr);

    QString fileName() const { return m_settings.fileName(); }

    QString theme() const;
    void setTheme(const QString& theme);
    QString language() const;
    void setLanguage(const QString& language);
    QString outputDir() const;
    void setOutputDir(const QString& dir);
    QString fileNaming() const;
    void setFileNaming(const QString& pattern);
    bool startMinimizedToTray() const;
    void setStartMinimizedToTray(bool on);

    // `name` is the key without "hotkeys/", e.g. "region".
    QString hotkey(const char* name) const;
    void setHotkey(const char* name, const QString& sequence);
    QString hotkeyRegion() const { return hotkey("region"); }
    QString hotkeyFullscreen() const { return hotkey("fullscreen"); }
    QString hotkeyWindow() const { return hotkey("window"); }
    QString hotkeyDelayed() const { return hotkey("delayed"); }
    QString hotkeyGif() const { return hotkey("gif"); }
    QString hotkeyScroll() const { return hotkey("scroll"); }
    QString hotkeyPinClickThrough() const { return hotkey("pinClickThrough"); }
    QString hotkeyPinFromClipboard() const { return hotkey("pinFromClipboard"); }
    QString hotkeyHistory() const { return hotkey("history"); }
    QString hotkeyShortcutSheet() const { return hotkey("shortcutSheet"); }

    int gifFps() const;
    void setGifFps(int fps);
    int gifDurationSecs() const;
    void setGifDurationSecs(int secs);
    // Edited in the file only.
    int scrollIntervalMs() const;
    int scrollIdleFrames() const;

    double pinMinZoom() const;
    void setPinMinZoom(double zoom);
    double pinMaxZoom() const;
    void setPinMaxZoom(double zoom);
    double pinOpacity() const;
    void setPinOpacity(double opacity);
    QString pinPosition() const;
    void setPinPosition(const QString& position);

    bool autoStart() const;
    void setAutoStart(bool on);
    bool runAsAdmin() const;
    void setRunAsAdmin(bool on);
    bool checkUpdatesOnStart() const;
    void setCheckUpdatesOnStart(bool on);

    QString captureFormat() const;
    void setCaptureFormat(const QString& format);
    int jpgQuality() const;
    void setJpgQuality(int quality);
    bool autoCopy() const;
    void setAutoCopy(bool on);
    bool autoSave() const;
    void setAutoSave(bool on);
    bool hidePins() const;
    void setHidePins(bool on);

    QStringList mcpCustomPaths() const;
    void addMcpCustomPath(const QString& path);
    void removeMcpCustomPath(const QString& path);

Q_SIGNALS:
    void languageChanged();
    void themeChanged();
    void hotkeysChanged();

public:
    enum class Key;

private:
    QVariant read(Key key) const;
    void write(Key key, const QVariant& value);
    bool writeIfChanged(const QString& key, const QString& value, bool flush);
    void migrateOlderFile();
    void keepCopyOfUnreadableFile();

    mutable QSettings m_settings;
};

} // namespace zelmor::core
