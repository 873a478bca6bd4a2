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
    void startsHiddenWithoutPanels()
    {
        MainWindow w;
        QVERIFY(!w.isVisible());
        QVERIFY(!w.panelsBuilt());
        QVERIFY(!w.pageWidget(MainWindow::HistoryPage));
        QCOMPARE(w.size(), QSize(1200, 740));
        w.retranslateUi(); // nothing built: nothing happens
        QCoreApplication::processEvents();
        QVERIFY(!w.panelsBuilt());
    }

    void showSlotsRouteToTheirPage_data()
    {
        QTest::addColumn<int>("page");
        QTest::newRow("settings") << int(MainWindow::SettingsPage);
        QTest::newRow("history") << int(MainWindow::HistoryPage);
        QTest::newRow("chat") << int(MainWindow::AiChatPage);
    }
    void showSlotsRouteToTheirPage()
    {
        QFETCH(int, page);
        MainWindow w;
        if (page == MainWindow::SettingsPage) w.showSettings();
        if (page == MainWindow::HistoryPage) w.showHistory();
        if (page == MainWindow::AiChatPage) w.showAiChat();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QVERIFY(w.panelsBuilt());
        QCOMPARE(w.currentPage(), page);
        QCOMPARE(shownIndex(w), page);
        QCOMPARE(static_cast<QStackedWidget*>(w.centralWidget())->currentWidget(),
                 w.pageWidget(page));
    }

    void closingHidesAndKeepsState()
    {
        MainWindow w;
        w.showAiChat();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QWidget* history = w.pageWidget(MainWindow::HistoryPage);
        QVERIFY(w.close() == false); // the close is refused: the window only hides
        QVERIFY(!w.isVisible());
        w.showHistory();
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        QCOMPARE(w.pageWidget(MainWindow::HistoryPage), history);
        QCOMPARE(shownIndex(w), int(MainWindow::HistoryPage));
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
        QVERIFY(w.panelsBuilt());
        QVERIFY(w.pageWidget(MainWindow::SettingsPage));
        QCOMPARE(shownIndex(w), int(MainWindow::SettingsPage));
        QVERIFY(!w.isVisible());
    }
};

ZELMOR_TEST_MAIN(TestMainWindow, QApplication)
#include "tst_mainwindow.moc"
