// The input log's rules on rows handed to it, and the path from input on the display to rows.

#include "TestMain.h"

#include "platform/Input.h"
#include "service/record/InputHook.h"

namespace platform = zelmor::platform;
using Presses = QList<QPair<qint64, int>>; // time in ms, virtual key

namespace zelmor::service::record {

class TestInputHook : public QObject
{
    Q_OBJECT

    static QStringList labels(const InputHook& hook)
    {
        QStringList result;
        for (const KeyEvent& key : hook.recentKeys())
            result << key.label;
        return result;
    }

private slots:
    void keyRows_data()
    {
        QTest::addColumn<Presses>("presses");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("repeat within 150 ms")
            << Presses{{1000, 'A'}, {1030, 'A'}, {1060, 'A'}, {1090, 'A'}, {1149, 'A'}}
            << QStringList{"A"};
        QTest::newRow("repeat reaching 150 ms")
            << Presses{{1000, 'A'}, {1030, 'A'}, {1150, 'A'}} << QStringList{"A", "A"};
        QTest::newRow("only the last row is compared")
            << Presses{{1000, 'A'}, {1010, 'B'}, {1020, 'A'}} << QStringList{"A", "B", "A"};
    }
    void keyRows()
    {
        QFETCH(Presses, presses);
        QFETCH(QStringList, expected);
        InputHook hook;
        for (const auto& [timeMs, virtualKey] : presses)
            hook.onKeyDown(timeMs, virtualKey);
        QCOMPARE(labels(hook), expected);
    }

    void keyLabel_data()
    {
        QTest::addColumn<int>("virtualKey");
        QTest::addColumn<QString>("label");
        QTest::newRow("arrow") << 37 << "←";
        QTest::newRow("letter") << 0x41 << "A";
        QTest::newRow("past the F-keys") << 136 << "Key136";
        QTest::newRow("left Ctrl") << 162 << "Key162";
    }
    void keyLabel()
    {
        QFETCH(int, virtualKey);
        QFETCH(QString, label);
        QCOMPARE(InputHook::keyLabel(virtualKey), label);
    }

    // Keys held with Alt, and Alt itself, are system keys to a Windows hook and never logged.
    void observesTheDisplay()
    {
        const QPoint at(345, 267);
        if (!platform::setCursorPosition({at.x(), at.y()}))
            QSKIP("no display with input injection");
        InputHook hook;
        hook.install();
        hook.install(); // keeps observing
        using platform::MouseButton;
        QVERIFY(
            platform::sendMouseButtons({{MouseButton::Left, true}, {MouseButton::Left, false}}));
        QVERIFY(platform::sendKeys({{0xA2, true},
                                    {0xA2, false},
                                    {0x12, true},
                                    {'X', true},
                                    {'X', false},
                                    {0x12, false},
                                    {'B', true},
                                    {'B', false}}));
        QTRY_COMPARE(labels(hook), (QStringList{"Key162", "B"}));
        QCOMPARE(hook.recentClicks().size(), 1);
        QCOMPARE(hook.recentClicks().first().pos, at);
        hook.uninstall();
        hook.uninstall();
    }
};

} // namespace zelmor::service::record

ZELMOR_TEST_MAIN(zelmor::service::record::TestInputHook, QCoreApplication)
#include "tst_inputhook.moc"
