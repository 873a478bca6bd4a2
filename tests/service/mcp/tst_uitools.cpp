// Another program's elements through the accessibility bus and the UI element tools: a search
// capped at 30, a click that passes over elements without a rectangle, a write that passes over
// elements refusing the text, the element under a point, and this program's own left out.

#include "TestMain.h"
#include "UiFixture.h"

#include "platform/UiElements.h"
#include "service/mcp/McpTool.h"

#include <QPushButton>

#include <future>

using namespace zelmor::platform;
using namespace zelmor::service::mcp;
using zelmor::test::succeeded;
using zelmor::test::UiFixture;

namespace {

QVariantMap record(const QString& name, const QString& type, const QRect& r)
{
    return {{"name", name}, {"controlType", type}, {"x", r.x()},
            {"y", r.y()},   {"width", r.width()},  {"height", r.height()}};
}

UiElement findByName(const QString& name, const UiElement& under = {})
{
    for (const UiElement& e : under.descendants())
        if (e.name() == name.toStdString()) return e;
    return {};
}

} // namespace

class TestUiTools : public QObject
{
    Q_OBJECT

    std::unique_ptr<UiFixture> m_fixture;
    zelmor::platform::WindowHandle m_window = 0;

private Q_SLOTS:
    void initTestCase()
    {
        m_fixture = std::make_unique<UiFixture>("Tools fixture", QRect(100, 120, 420, 460));
        m_fixture->add("hidden", 1, "Send (hidden)");
        m_fixture->add("button", 1, "Send");
        m_fixture->add("label", 1, "Note label");
        m_fixture->add("edit", 1, "Note field");
        m_fixture->add("label", 100, "Row");
        QTRY_VERIFY((m_window = m_fixture->handle()) && m_fixture->shown("Tools fixture extras"));
        QTRY_COMPARE(callMcpTool("find_ui_elements", {{"name", "Row 100"}}).value("count"), 1);
    }

    void failures_data()
    {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QVariantMap>("args");
        QTest::addColumn<QString>("message");
        QTest::newRow("find, blanks")
            << "find_ui_elements" << QVariantMap{{"name", " "}} << "name cannot be empty";
        QTest::newRow("click, no name")
            << "click_ui_element" << QVariantMap{} << "name cannot be empty";
        QTest::newRow("click, no match")
            << "click_ui_element" << QVariantMap{{"name", " nothing 4711 "}}
            << "no UI element found matching 'nothing 4711'";
        QTest::newRow("set, a slider but no number")
            << "set_ui_element_text" << QVariantMap{{"name", "level"}, {"text", "3x"}}
            << "no editable UI element found matching 'level'";
        QTest::newRow("set, only a button")
            << "set_ui_element_text" << QVariantMap{{"name", "save"}, {"text", "x"}}
            << "no editable UI element found matching 'save'";
    }
    void failures()
    {
        QFETCH(QString, tool);
        QFETCH(QVariantMap, args);
        QFETCH(QString, message);
        QCOMPARE(callMcpTool(tool, args), mcpToolError(message));
    }

    void findReturnsTheFirstThirty()
    {
        const McpToolResult found = callMcpTool("find_ui_elements", {{"name", " ROW "}});
        QCOMPARE(found.value("count"), 30);
        const QVariantList elements = found.value("elements").toList();
        QCOMPARE(elements.size(), 30);
        QCOMPARE(elements[29].toMap().value("name"), "Row 30");
        QCOMPARE(elements[0].toMap(), record("Row 1", "Text", m_fixture->where("Row 1")));
        QCOMPARE(callMcpTool("find_ui_elements", {{"name", "nothing 4711"}}),
                 succeeded({{"elements", QVariantList()}, {"count", 0}}));
    }

    void clickPassesOverElementsWithoutRectangle()
    {
        const QVariantList matches =
            callMcpTool("find_ui_elements", {{"name", "send"}}).value("elements").toList();
        QCOMPARE(matches.size(), 2);
        QCOMPARE(matches[0].toMap().value("name"), "Send (hidden)");
        QCOMPARE(matches[0].toMap().value("width", 0), 0);
        const QRect send = m_fixture->where("Send");
        QCOMPARE(callMcpTool("click_ui_element", {{"name", "send"}}),
                 succeeded({{"matchedName", "Send"},
                            {"x", send.x() + send.width() / 2},
                            {"y", send.y() + send.height() / 2}}));
        QTRY_VERIFY(m_fixture->saw("clicked Send"));
        QVERIFY(!m_fixture->saw("clicked Send (hidden)"));
    }

    // Elements refusing text, or this text, are passed over.
    void setTextWritesEditsAndValues_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("matched");
        QTest::addColumn<QString>("reported");
        QTest::newRow("edit after a label")
            << QString(" NOTE ") << QString(" 写入 ") << QString("Note field")
            << QString("changed Note field:  写入 ");
        QTest::newRow("spin box") << QString("count") << QString("42") << QString("Count")
                                  << QString("value 42");
        QTest::newRow("slider") << QString("Level") << QString(" 30 ") << QString("Level")
                                << QString("level 30");
    }
    void setTextWritesEditsAndValues()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        QFETCH(QString, matched);
        QFETCH(QString, reported);
        QCOMPARE(callMcpTool("set_ui_element_text", {{"name", name}, {"text", text}}),
                 succeeded({{"matchedName", matched}, {"text", text}}));
        QTRY_VERIFY(m_fixture->saw(reported));
    }

    void inspectsTheElementAtAPoint_data()
    {
        QTest::addColumn<QString>("control");
        QTest::addColumn<bool>("onlyX"); // then the cursor's position counts
        QTest::addColumn<QString>("type");
        QTest::newRow("button under the cursor") << "Save" << true << "Button";
        QTest::newRow("pane at a point") << "Pad" << false << "Custom(50033)";
        QTest::newRow("slider at a point") << "Level" << false << "Slider";
        QTest::newRow("nothing is no failure") << QString() << false << QString();
    }
    void inspectsTheElementAtAPoint()
    {
        QFETCH(QString, control);
        QFETCH(bool, onlyX);
        QFETCH(QString, type);
        const QRect r = control.isEmpty() ? QRect(1900, 1060, 1, 1) : m_fixture->where(control);
        McpToolArgs args{{"x", r.center().x()}, {"y", r.center().y()}};
        if (onlyX) {
            callMcpTool("mouse_move", args);
            args = {{"x", 3}};
        }
        const McpToolResult none{{"element", QVariantMap()}, {"success", false}};
        QCOMPARE(callMcpTool("inspect_ui_element", args),
                 control.isEmpty() ? none : succeeded({{"element", record(control, type, r)}}));
    }

    void ownProgramIsLeftOut()
    {
        QPushButton own(QStringLiteral("Own button"));
        own.setGeometry(800, 600, 150, 40);
        own.show();
        QVERIFY(QTest::qWaitForWindowExposed(&own));
        // Asked from another thread, while this one answers the bus, it could be found.
        auto found = std::async(std::launch::async, [&own] {
            return !findByName("Own button").isNull() || !uiElementOfWindow(own.winId()).isNull() ||
                   !uiElementAt({875, 620}).isNull();
        });
        QTRY_VERIFY(found.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
        QVERIFY(!found.get());
    }
};

ZELMOR_TEST_MAIN(TestUiTools, QApplication)
#include "tst_uitools.moc"
