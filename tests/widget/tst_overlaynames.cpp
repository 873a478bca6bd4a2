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

// The names of the window's controls; an unnamed one shows as "?" and its id.
QStringList controlNames(WindowHandle window)
{
    QStringList names;
    for (const UiElement& e : uiElementOfWindow(window).descendants()) {
        const UiElementInfo info = e.describe();
        const int type = info.controlType; // checkable buttons read as check or radio boxes
        if (type != UiButton && type != UiCheckBox && type != UiRadioButton && type != UiComboBox &&
            type != UiSpinner)
            continue;
        const std::string name = info.name.value_or("");
        names << QString::fromStdString(name.empty() ? "?" + info.automationId.value_or("") : name);
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
        // The suite's own sandbox, and a runtime folder of its own against other instances.
        QTemporaryDir runtime;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());
        env.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
        QProcess zelmor;
        zelmor.setProcessEnvironment(env);
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
