#pragma once

#include <QDialog>
#include <QFrame>
#include <QLabel>
#include <QTextEdit>

class QPlainTextEdit;
class QPushButton;

// The small pieces of the chat page: a session row, a welcome card, the input box, and a
// picture that opens a larger preview when clicked.
namespace zelmor::widget {

class SessionItemWidget : public QWidget
{
    Q_OBJECT
public:
    SessionItemWidget(const QString& id, const QString& title, const QString& subtitle,
                      QWidget* parent = nullptr);

    QString id() const { return m_id; }

Q_SIGNALS:
    void clicked(const QString& id);
    void deleteRequested(const QString& id);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QString m_id;
    QPushButton* m_delete;
};

class WelcomeCard : public QFrame
{
    Q_OBJECT
public:
    WelcomeCard(const QString& title, const QString& description, QWidget* parent = nullptr);

Q_SIGNALS:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
};

// Enter sends and Shift+Enter breaks the line; a pasted picture becomes the attachment
// instead of text.
class ChatInputEdit : public QTextEdit
{
    Q_OBJECT
public:
    explicit ChatInputEdit(QWidget* parent = nullptr);

Q_SIGNALS:
    void sendRequested();
    void imagePasted(const QImage& img);
    // A dropped or pasted picture file that cannot be opened here, and why.
    void pictureRefused(const QString& why);
    void stopRequested();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
};

// A picture in the chat: a click opens it at up to 85 % of the screen.
class ChatPictureLabel : public QLabel
{
    Q_OBJECT
public:
    explicit ChatPictureLabel(QWidget* parent = nullptr) : QLabel(parent) {}
    void setPicture(const QPixmap& picture) { m_picture = picture; }
    const QPixmap& picture() const { return m_picture; }

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    QPixmap m_picture;
};

// The whole of a long message, in a plain view that lays out only what is on screen. It is
// filled a slice per turn of the event loop, so that megabytes keep the window responsive.
class ChatTextViewer : public QDialog
{
    Q_OBJECT
public:
    ChatTextViewer(const QString& text, QWidget* parent = nullptr);
    const QString& text() const { return m_text; }
    bool filled() const { return m_filled >= m_text.size(); }

private:
    void appendSlice();

    QString m_text;
    qsizetype m_filled = 0;
    QPlainTextEdit* m_view;
};

void showChatTextViewer(const QString& text, QWidget* parent);

// The modal preview of a chat picture.
void showChatPicturePreview(const QPixmap& picture, QWidget* parent);

} // namespace zelmor::widget
