#include "Toast.h"

#include "ThemeFlag.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QVBoxLayout>

namespace zelmor::core {

namespace {

QPointer<tool::Toast> shownToast;
QPointer<QSystemTrayIcon> trayIcon;

constexpr int kMinWidth = 320;
constexpr int kMaxWidth = 460;
constexpr int kScreenMargin = 16;
constexpr QChar kZeroWidthSpace(0x200B);

QString toastStyleSheet(bool dark)
{
    return QStringLiteral("#toast { background: %1; border: 1px solid %2; border-radius: 10px; }"
                          "#toastAccent { background: #F57C00; border-top-left-radius: 10px;"
                          " border-bottom-left-radius: 10px; }"
                          // Sizes again here: the application sheet's font size would win
                          // over the labels' own fonts.
                          "#toastTitle { color: %3; background: transparent; font-size: 9pt;"
                          " font-weight: 700; }"
                          "#toastBody { color: %4; background: transparent; font-size: 9pt; }")
        .arg(dark ? QStringLiteral("#2b2b30") : QStringLiteral("#FFFFFF"),
             dark ? QStringLiteral("#3a3a40") : QStringLiteral("#E6E6E6"),
             dark ? QStringLiteral("#e4e4e7") : QStringLiteral("#222222"),
             dark ? QStringLiteral("#b4b4b8") : QStringLiteral("#666666"));
}

void retire(tool::Toast* toast)
{
    toast->hide();
    toast->deleteLater();
}

} // namespace

QString withPathWrapPoints(const QString& text)
{
    QString out;
    out.reserve(text.size() + text.size() / 8);
    for (QChar c : text) {
        out += c;
        if (c == QLatin1Char('/') || c == QLatin1Char('\\')) out += kZeroWidthSpace;
    }
    return out;
}

namespace tool {

Toast::Toast() : QWidget(nullptr)
{
    setObjectName(QStringLiteral("toast"));
    // Click-through needs both flags on X11: the window manager's frame would take the click
    // otherwise (Windows: WindowTransparentForInput alone).
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                   Qt::WindowTransparentForInput | Qt::X11BypassWindowManagerHint);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_StyledBackground);

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 10, 14, 10);
    row->setSpacing(10);
    auto* accent = new QWidget(this);
    accent->setObjectName(QStringLiteral("toastAccent"));
    accent->setFixedWidth(4);
    accent->setAttribute(Qt::WA_StyledBackground);
    row->addWidget(accent);

    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    titleLabel = new QLabel(this);
    titleLabel->setObjectName(QStringLiteral("toastTitle"));
    QFont titleFont = titleLabel->font();
    titleFont.setWeight(QFont::Bold);
    titleFont.setPointSize(9);
    titleLabel->setFont(titleFont);
    bodyLabel = new QLabel(this);
    bodyLabel->setObjectName(QStringLiteral("toastBody"));
    QFont bodyFont = bodyLabel->font();
    bodyFont.setPointSize(9);
    bodyLabel->setFont(bodyFont);
    bodyLabel->setWordWrap(true);
    texts->addWidget(titleLabel);
    texts->addWidget(bodyLabel);
    row->addLayout(texts);
    applyStyle();
}

void Toast::applyStyle()
{
    setStyleSheet(toastStyleSheet(isDarkTheme()));
}

void Toast::setTexts(const QString& title, const QString& body)
{
    titleLabel->setText(title);
    const QString shown = withPathWrapPoints(body);
    bodyLabel->setText(shown);
    bodyLabel->setVisible(!shown.isEmpty());

    // Measured in the fonts the style sheets give, which apply at polish.
    titleLabel->ensurePolished();
    bodyLabel->ensurePolished();
    const int titleWidth = QFontMetrics(titleLabel->font()).horizontalAdvance(title);
    const int bodyWidth = QFontMetrics(bodyLabel->font())
                              .boundingRect(QRect(0, 0, 412, 1000), Qt::TextWordWrap, shown)
                              .width();
    setFixedWidth(qBound(kMinWidth, qMax(titleWidth, bodyWidth) + 48, kMaxWidth));
    adjustSize();
}

void Toast::showToast(const QString& title, const QString& body, int ms)
{
    if (shownToast) retire(shownToast);
    auto* toast = new Toast;
    shownToast = toast;
    toast->applyStyle();
    toast->setTexts(title, body);

    const QScreen* screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect();
    if (area.isNull()) return;
    toast->move(area.right() - kScreenMargin - toast->width(),
                area.bottom() - kScreenMargin - toast->height());
    toast->raise();
    toast->show();
    QTimer::singleShot(ms, toast, [toast] { retire(toast); });
}

Toast* Toast::current()
{
    return shownToast;
}

QString Toast::title() const
{
    return titleLabel->text();
}

QString Toast::body() const
{
    return bodyLabel->text();
}

} // namespace tool

bool notifyUser(const QString& title, const QString& body, int ms)
{
    tool::Toast::showToast(title, body, ms);
    return trayIcon && trayIcon->isVisible();
}

void setNotificationTrayIcon(QSystemTrayIcon* icon)
{
    trayIcon = icon;
}

} // namespace zelmor::core
