#include "ChatWidgets.h"

#include "core/Utilities.h"
#include "widget/ControlName.h"
#include "widget/HistoryDetailPanel.h"

#include <QApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTextBlock>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

namespace zelmor::widget {

SessionItemWidget::SessionItemWidget(const QString& id, const QString& title,
                                     const QString& subtitle, QWidget* parent)
    : QWidget(parent), m_id(id), m_delete(new QPushButton(QStringLiteral("✕"), this))
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 6, 8, 6);
    row->setSpacing(8);
    auto* icon = new QLabel(QStringLiteral("💬"), this);
    icon->setObjectName(QStringLiteral("sessionIcon"));
    row->addWidget(icon);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    auto* titleLabel = new QLabel(title, this);
    titleLabel->setObjectName(QStringLiteral("sessionTitle"));
    titleLabel->setTextFormat(Qt::PlainText); // a title is what the user typed, markup and all
    auto* timeLabel = new QLabel(subtitle, this);
    timeLabel->setObjectName(QStringLiteral("sessionTime"));
    texts->addWidget(titleLabel);
    texts->addWidget(timeLabel);
    row->addLayout(texts, 1);
    m_delete->setObjectName(QStringLiteral("btnDeleteSession"));
    m_delete->setFixedSize(18, 18);
    setTipAndName(m_delete, tr("删除对话", "ai.session.delete"));
    m_delete->hide();
    row->addWidget(m_delete);
    setAccessibleName(title);
    connect(m_delete, &QPushButton::clicked, this, [this] { Q_EMIT deleteRequested(m_id); });
}

// Taken here, so that the list under the row does not select the session a second time.
void SessionItemWidget::mousePressEvent(QMouseEvent* event)
{
    event->accept();
    Q_EMIT clicked(m_id);
}

void SessionItemWidget::enterEvent(QEnterEvent* event)
{
    QWidget::enterEvent(event);
    m_delete->show();
}

void SessionItemWidget::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    m_delete->hide();
}

WelcomeCard::WelcomeCard(const QString& title, const QString& description, QWidget* parent)
    : QFrame(parent)
{
    setObjectName(QStringLiteral("welcomeCard"));
    setCursor(Qt::PointingHandCursor);
    setAccessibleName(title);
    setAccessibleDescription(description);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(12, 10, 12, 10);
    auto* titleLabel = new QLabel(title, this);
    titleLabel->setObjectName(QStringLiteral("cardTitle"));
    auto* descLabel = new QLabel(description, this);
    descLabel->setObjectName(QStringLiteral("cardDesc"));
    column->addWidget(titleLabel);
    column->addWidget(descLabel);
}

void WelcomeCard::mousePressEvent(QMouseEvent* event)
{
    QFrame::mousePressEvent(event);
    Q_EMIT clicked();
}

ChatInputEdit::ChatInputEdit(QWidget* parent) : QTextEdit(parent)
{
    setAcceptRichText(false);
}

void ChatInputEdit::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && !(event->modifiers() & Qt::ShiftModifier)) {
        Q_EMIT sendRequested();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT stopRequested();
        event->accept();
        return;
    }
    QTextEdit::keyPressEvent(event);
}

void ChatInputEdit::insertFromMimeData(const QMimeData* source)
{
    if (!source) {
        QTextEdit::insertFromMimeData(source);
        return;
    }
    if (source->hasImage()) {
        const QImage image = qvariant_cast<QImage>(source->imageData());
        if (!image.isNull()) {
            Q_EMIT imagePasted(image);
            return;
        }
    }
    if (source->hasUrls()) {
        for (const QUrl& url : source->urls()) {
            if (!url.isLocalFile()) continue;
            QString tooLarge;
            const QPixmap picture = HistoryDetailPanel::loadPicture(url.toLocalFile(), &tooLarge);
            if (!tooLarge.isEmpty()) {
                Q_EMIT pictureRefused(tooLarge);
                return;
            }
            if (picture.isNull()) continue;
            Q_EMIT imagePasted(picture.toImage());
            return;
        }
    }
    QTextEdit::insertFromMimeData(source);
}

void ChatPictureLabel::mousePressEvent(QMouseEvent* event)
{
    QLabel::mousePressEvent(event);
    if (!m_picture.isNull()) showChatPicturePreview(m_picture, window());
}

namespace {

constexpr qsizetype kSliceChars = 16 * 1024;

} // namespace

ChatTextViewer::ChatTextViewer(const QString& text, QWidget* parent)
    : QDialog(parent), m_text(text), m_view(new QPlainTextEdit(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Whole message", "ai.viewer.title"));
    resize(900, 700);
    auto* column = new QVBoxLayout(this);
    m_view->setReadOnly(true);
    m_view->setAccessibleName(windowTitle());
    column->addWidget(m_view, 1);
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    // The view may break a line that has no end of its own; the copy is the message as it is.
    QPushButton* copy = makeButton(tr("Copy all", "ai.viewer.copy"), "btnCopyAll", this);
    connect(copy, &QPushButton::clicked, this, [this] { core::copyTextToClipboard(m_text); });
    row->addWidget(copy);
    QPushButton* close = makeButton(tr("Close", "ai.viewer.close"), "btnCloseViewer", this);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    row->addWidget(close);
    column->addLayout(row);
    appendSlice();
}

// A slice ends after a line break where there is one, so that lines stay whole.
void ChatTextViewer::appendSlice()
{
    qsizetype end = std::min(m_text.size(), m_filled + kSliceChars);
    if (end < m_text.size()) {
        const qsizetype lineEnd = m_text.lastIndexOf(QLatin1Char('\n'), end - 1);
        if (lineEnd >= m_filled) end = lineEnd + 1;
    }
    QTextCursor cursor(m_view->document());
    cursor.movePosition(QTextCursor::End);
    QString slice = m_text.mid(m_filled, end - m_filled);
    if (!slice.endsWith(QLatin1Char('\n')) && end < m_text.size()) slice += QLatin1Char('\n');
    cursor.insertText(slice);
    m_filled = end;
    if (!filled()) QTimer::singleShot(0, this, &ChatTextViewer::appendSlice);
}

void showChatTextViewer(const QString& text, QWidget* parent)
{
    auto* viewer = new ChatTextViewer(text, parent);
    viewer->show();
}

void showChatPicturePreview(const QPixmap& picture, QWidget* parent)
{
    auto* dialog = new QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(true);
    auto* outer = new QVBoxLayout(dialog);
    outer->setContentsMargins(12, 12, 12, 12);
    auto* container = new QFrame(dialog);
    container->setObjectName(QStringLiteral("imgPreviewContainer"));
    container->setStyleSheet(QStringLiteral(
        "#imgPreviewContainer { background: #1E1E22; border-radius: 12px; } QLabel { color: "
        "#F0F0F0; } QPushButton { background: transparent; color: #F0F0F0; border: none; }"));
    outer->addWidget(container);
    auto* column = new QVBoxLayout(container);
    column->setContentsMargins(16, 12, 16, 16);
    column->setSpacing(12);
    auto* header = new QHBoxLayout;
    header->addWidget(new QLabel(QObject::tr("Screenshot (%1 × %2 px)", "ai.preview.title")
                                     .arg(picture.width())
                                     .arg(picture.height()),
                                 container),
                      1);
    auto* close = new QPushButton(QStringLiteral("✕"), container);
    close->setFixedSize(24, 24);
    setTipAndName(close, QObject::tr("点击关闭预览", "ai.tip.closePreview"));
    QObject::connect(close, &QPushButton::clicked, dialog, &QDialog::close);
    header->addWidget(close);
    column->addLayout(header);
    QSize bound(1200, 800);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        bound = screen->availableGeometry().size() * 0.85;
    auto* image = new QLabel(container);
    image->setPixmap(picture.scaled(bound, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    image->setAccessibleName(QObject::tr("Screenshot preview", "ai.preview.image"));
    column->addWidget(image, 0, Qt::AlignCenter);
    dialog->exec();
}

} // namespace zelmor::widget
