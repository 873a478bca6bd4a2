#pragma once

#include <QList>
#include <QMutex>
#include <QObject>
#include <QPoint>
#include <QString>

#include <memory>

namespace zelmor::service::record {

struct ClickEvent
{
    qint64 timestampMs = 0; // since the epoch
    QPoint pos;             // physical desktop pixels
};

struct KeyEvent
{
    qint64 timestampMs = 0;
    QString label;
};

// A short timed log of the user's button and key presses while a recording runs, observed
// system-wide and never consumed. Where the session offers no source of global input the
// lists stay empty.
class InputHook : public QObject
{
    Q_OBJECT
public:
    explicit InputHook(QObject* parent = nullptr);
    ~InputHook() override;

    // Starts a new observation with empty lists; a second call leaves the running one in place.
    void install();
    void uninstall();
    // Whether the running observation sees anything: false where the desktop shows no
    // program the clicks and keys.
    bool observing() const;

    // Copies, oldest first; safe from any thread.
    QList<ClickEvent> recentClicks() const;
    QList<KeyEvent> recentKeys() const;

    // The chip text of a Windows virtual-key code.
    static QString keyLabel(int virtualKey);

private:
    friend class TestRecordingService;

    // Hook rows as the system delivers them, on the thread that installed.
    void onButtonDown(qint64 timestampMs, const QPoint& pos);
    void onKeyDown(qint64 timestampMs, int virtualKey);

    mutable QMutex m_mutex;
    QList<ClickEvent> m_clicks;
    QList<KeyEvent> m_keys;
    struct Observation;
    std::unique_ptr<Observation> m_observation; // null when not installed
};

} // namespace zelmor::service::record
