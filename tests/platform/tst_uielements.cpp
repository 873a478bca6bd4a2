// Elements of another program's window through the accessibility bus: found by name, described
// in control-type ids with screen rectangles, pressed, written and hit-tested.

#include "TestMain.h"
#include "UiFixture.h"

#include "platform/UiElements.h"

#include <QPushButton>

#include <future>

using namespace zelmor::platform;
using zelmor::test::UiFixture;

namespace {

UiElement findByName(const QString& name, const UiElement& under = {})
{
    for (const UiElement& e : under.descendants())
        if (e.name() == name.toStdString()) return e;
    return {};
}

QRect qRect(const std::optional<Rect>& r)
{
    return r ? QRect(r->x, r->y, r->width, r->height) : QRect();
}

} // namespace

class TestUiElements : public QObject
{
    Q_OBJECT

    std::unique_ptr<UiFixture> m_fixture;
    WindowHandle m_window = 0;

private Q_SLOTS:
    void initTestCase()
    {
        m_fixture = std::make_unique<UiFixture>(QStringLiteral("Elements fixture"),
                                                QRect(250, 180, 420, 460));
        QTRY_VERIFY((m_window = m_fixture->handle()));
        QTRY_VERIFY(!findByName(QStringLiteral("Save")).isNull());
    }

    void describesInControlTypesAndScreenPixels_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("controlType");
        QTest::addColumn<bool>("wholeWidget"); // a check box is its box and its text
        QTest::newRow("push button") << QStringLiteral("Save") << int(UiButton) << true;
        QTest::newRow("line edit") << QStringLiteral("Name field") << int(UiEdit) << true;
        QTest::newRow("label") << QStringLiteral("Name label") << int(UiText) << true;
        QTest::newRow("check box") << QStringLiteral("Remember") << int(UiCheckBox) << false;
        QTest::newRow("spin box") << QStringLiteral("Count") << int(UiSpinner) << true;
        QTest::newRow("slider") << QStringLiteral("Level") << int(UiSlider) << true;
    }
    void describesInControlTypesAndScreenPixels()
    {
        QFETCH(QString, name);
        QFETCH(int, controlType);
        QFETCH(bool, wholeWidget);
        const UiElementInfo info = findByName(name).describe();
        QCOMPARE(info.name, std::optional<std::string>(name.toStdString()));
        QCOMPARE(info.controlType, controlType);
        const QRect widget = m_fixture->where(name);
        QVERIFY(!widget.isEmpty());
        if (wholeWidget)
            QCOMPARE(qRect(info.rect), widget);
        else
            QVERIFY(widget.contains(qRect(info.rect)) && !info.rect->isEmpty());
    }

    void windowElementBelongsToTheWindow()
    {
        const UiElement window = uiElementOfWindow(m_window);
        QVERIFY(!window.isNull());
        QCOMPARE(window.name(), std::optional<std::string>("Elements fixture"));
        QCOMPARE(window.controlType(), int(UiWindow)); // a bare top-level widget
        QVERIFY(findByName(QStringLiteral("Save"), window) == findByName(QStringLiteral("Save")));
        QVERIFY(uiElementOfWindow(0).isNull());
    }

    void ownProgramIsLeftOut()
    {
        QPushButton own(QStringLiteral("Own button"));
        own.setGeometry(800, 600, 150, 40);
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        // Asked from another thread, while this one answers the bus, it could be found.
        auto found = std::async(std::launch::async, [&own] {
            return !findByName(QStringLiteral("Own button")).isNull() ||
                   !uiElementOfWindow(own.winId()).isNull() || !uiElementAt({875, 620}).isNull();
        });
        QTRY_VERIFY(found.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
        QVERIFY(!found.get());
    }

    void invokePressesTheDefaultAction_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reported");
        QTest::newRow("button") << QStringLiteral("Save") << QStringLiteral("clicked Save");
        QTest::newRow("check box") << QStringLiteral("Remember") << QStringLiteral("toggled 1");
    }
    void invokePressesTheDefaultAction()
    {
        QFETCH(QString, name);
        QFETCH(QString, reported);
        QVERIFY(findByName(name).invoke());
        QTRY_VERIFY(m_fixture->saw(reported));
    }

    void setTextWritesEditsAndValues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("reported"); // empty: refused
        QTest::newRow("line edit")
            << QStringLiteral("Name field") << QStringLiteral("set via atspi 中文")
            << QStringLiteral("text set via atspi 中文");
        QTest::newRow("spin box text")
            << QStringLiteral("Count") << QStringLiteral("42") << QStringLiteral("value 42");
        QTest::newRow("slider value")
            << QStringLiteral("Level") << QStringLiteral(" 30 ") << QStringLiteral("level 30");
        QTest::newRow("slider, no number")
            << QStringLiteral("Level") << QStringLiteral("3x") << QString();
        QTest::newRow("label") << QStringLiteral("Name label") << QStringLiteral("no") << QString();
        QTest::newRow("button") << QStringLiteral("Save") << QStringLiteral("no") << QString();
    }
    void setTextWritesEditsAndValues()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(QString, reported);
        const UiElement element = findByName(name);
        QVERIFY(!element.isNull());
        QCOMPARE(element.setText(text.toStdString()), !reported.isEmpty());
        if (!reported.isEmpty()) QTRY_VERIFY(m_fixture->saw(reported));
    }

    void nullElementAnswersNothing()
    {
        const UiElement none;
        QVERIFY(!none.name());
        QVERIFY(!none.rect());
        QVERIFY(!none.invoke());
        QVERIFY(!none.setText("x"));
    }
};

ZELMOR_TEST_MAIN(TestUiElements, QApplication)
#include "tst_uielements.moc"
