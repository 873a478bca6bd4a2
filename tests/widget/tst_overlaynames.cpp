// The capture overlay's controls as screen readers see them: read from another process
// through the accessibility bus, as the UI tools see other programs.

#include "TestMain.h"

#include "platform/Input.h"
#include "platform/UiElements.h"
#include "platform/Windows.h"

#include <QProcess>
#include <QRegularExpression>

using namespace zelmor::platform;

namespace {

WindowHandle windowTitled(const std::string& title)
{
    for (const WindowRecord& w : listTopLevelWindows())
        if (w.title == title && w.visible) return w.handle;
    return 0;
}

bool isControl(int type)
{
    return type == UiButton || type == UiCheckBox || type == UiRadioButton ||
           type == UiComboBox || type == UiSpinner;
}

// The names of the window's controls; an unnamed one shows as "?" and its id.
QStringList controlNames(WindowHandle window)
{
    QStringList names;
    for (const UiElement& e : uiElementOfWindow(window).descendants()) {
        const UiElementInfo info = e.describe();
        if (!isControl(info.controlType)) continue;
        const std::string name = info.name.value_or("");
        names << QString::fromStdString(name.empty() ? "?" + info.automationId.value_or("")
                                                     : name);
    }
    return names;
}

} // namespace

class TestOverlayNames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyControlOfTheOverlayHasAName()
    {
        QTemporaryDir home;
        QVERIFY(QDir(home.path()).mkpath(QStringLiteral("run")));
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), home.path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.filePath(QStringLiteral("run")));
        env.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
        QProcess zelmor;
        zelmor.setProcessEnvironment(env);
        zelmor.setProcessChannelMode(QProcess::ForwardedChannels);
        zelmor.start(qEnvironmentVariable("ZELMOR_BIN_DIR") + QStringLiteral("/zelmor"),
                     {QStringLiteral("--capture-region")});

        WindowHandle overlay = 0;
        QTRY_VERIFY_WITH_TIMEOUT((overlay = windowTitled("Zelmor capture")), 20000);
        QVERIFY(setCursorPosition({300, 300}));
        QVERIFY(sendMouseButtons({{MouseButton::Left, true}}));
        QVERIFY(setCursorPosition({450, 400}) && setCursorPosition({700, 500}));
        QVERIFY(sendMouseButtons({{MouseButton::Left, false}}));

        // Twelve tools, nine colours, the action buttons and the boxes: the toolbars are up.
        QStringList names;
        QTRY_VERIFY_WITH_TIMEOUT((names = controlNames(overlay)).size() >= 30, 10000);
        const QStringList unnamed = names.filter(QRegularExpression(QStringLiteral("^\\?")));
        QVERIFY2(unnamed.isEmpty(), qPrintable(unnamed.join(QLatin1String(", "))));
        for (const char* name : {"Copy", "Rectangle", "Pen width", "#FFFF5252"})
            QVERIFY2(names.contains(QLatin1String(name)), name);
        zelmor.kill();
        zelmor.waitForFinished();
    }
};

ZELMOR_TEST_MAIN(TestOverlayNames, QApplication)
#include "tst_overlaynames.moc"
