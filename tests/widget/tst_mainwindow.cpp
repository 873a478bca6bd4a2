#include "TestMain.h"

#include "widget/MainWindow.h"

#include <QStackedWidget>

using zelmor::widget::MainWindow;

class TestMainWindow : public QObject
{
    Q_OBJECT

    static int shownIndex(const MainWindow& w)
    {
        return static_cast<QStackedWidget*>(w.centralWidget())->currentIndex();
    }

private Q_SLOTS:
    void nothingIsBuiltBeforeAPageIsAskedFor()
    {
        MainWindow w;
        w.retranslateUi();
        QCoreApplication::processEvents();
        QVERIFY(!w.panelsBuilt());
        QVERIFY(!w.pageWidget(MainWindow::HistoryPage));
    }

    void showSlotsRouteToTheirPageAndClosingOnlyHides_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("settings") << int(MainWindow::SettingsPage);
        QTest::newRow("history") << int(MainWindow::HistoryPage);
        QTest::newRow("chat") << int(MainWindow::AiChatPage);
    }
    void showSlotsRouteToTheirPageAndClosingOnlyHides()
    {
        QFETCH(int, page);
        MainWindow w;
        if (page == MainWindow::SettingsPage) w.showSettings();
        if (page == MainWindow::HistoryPage) w.showHistory();
        if (page == MainWindow::AiChatPage) w.showAiChat();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QCOMPARE(w.currentPage(), page);
        QCOMPARE(shownIndex(w), page);
        QWidget* shown = w.pageWidget(page);
        QVERIFY(!w.close());
        QVERIFY(!w.isVisible());
        QCOMPARE(w.pageWidget(page), shown);
    }

    void languageChangeRebuildsWithoutShowing()
    {
        MainWindow w;
        w.showSettings();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        w.hide();
        QPointer<QWidget> oldSettings = w.pageWidget(MainWindow::SettingsPage);
        w.retranslateUi();
        QVERIFY(oldSettings); // deleted only once the event loop runs
        QTRY_VERIFY(oldSettings.isNull());
        QVERIFY(w.pageWidget(MainWindow::SettingsPage));
        QCOMPARE(shownIndex(w), int(MainWindow::SettingsPage));
        QVERIFY(!w.isVisible());
    }
};

ZELMOR_TEST_MAIN(TestMainWindow, QApplication)
#include "tst_mainwindow.moc"
