#include "OcrResultDialog.h"

#include "ControlName.h"
#include "FollowLanguage.h"
#include "Translucency.h"
#include "core/Toast.h"
#include "core/Utilities.h"
#include "manager/ThemeManager.h"

#include <QFrame>
#include <QGraphicsDropShadowEffect>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextEdit>

namespace zelmor::widget {

namespace {

QPushButton* makeButton(const QString& text, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

constexpr int kShadowRoom = 12;

QString dialogSheet(bool dark)
{
    const QString common = QStringLiteral(
        "#ocrResultContainer { background: %1; border: 1px solid %2; }"
        "#ocrTitle { color: %3; font-size: 14px; font-weight: bold; }"
        "#ocrTextEdit { background: %4; color: %5; border: 1px solid %6; border-radius: 8px;"
        " font-family: \"Segoe UI\"; font-size: 13px; padding: 8px; }"
        "#ocrResultContainer QPushButton { background: %7; color: %5; border: none; border-radius: "
        "6px;"
        " padding: 6px 14px; }"
        "#ocrResultContainer QPushButton:hover { background: %8; }"
        "#ocrResultContainer QPushButton#btnCopy { background: #E67E22; color: #FFFFFF; }"
        "#ocrResultContainer QPushButton#btnCopy:hover { background: #D35400; }");
    if (dark)
        return common.arg(QStringLiteral("#202020"), QStringLiteral("#3A3A3A"),
                          QStringLiteral("#FFFFFF"), QStringLiteral("#2B2B2B"),
                          QStringLiteral("#E0E0E0"), QStringLiteral("#383838"),
                          QStringLiteral("#333333"), QStringLiteral("#404040"));
    return common.arg(QStringLiteral("#FFFFFF"), QStringLiteral("#E0E0E0"),
                      QStringLiteral("#1A1A1A"), QStringLiteral("#F8F9FA"),
                      QStringLiteral("#202020"), QStringLiteral("#E5E7EB"),
                      QStringLiteral("#F3F4F6"), QStringLiteral("#E5E7EB"));
}

} // namespace

OcrResultDialog::OcrResultDialog(const QString& text, QWidget* parent) : QDialog(parent)
{
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    resize(520, 360);
    m_outer = new QVBoxLayout(this);

    auto* container = new QFrame(this);
    container->setObjectName(QStringLiteral("ocrResultContainer"));
    m_shadow = new QGraphicsDropShadowEffect(container);
    m_shadow->setBlurRadius(24);
    m_shadow->setColor(QColor(0, 0, 0, 80));
    m_shadow->setOffset(0, 4);
    container->setGraphicsEffect(m_shadow);
    m_outer->addWidget(container);

    auto* column = new QVBoxLayout(container);
    column->setContentsMargins(16, 14, 16, 14);
    column->setSpacing(12);
    auto* header = new QHBoxLayout;
    auto* title = new QLabel(container);
    title->setObjectName(QStringLiteral("ocrTitle"));
    QPushButton* cross = makeButton(QStringLiteral("✕"), container);
    cross->setFixedSize(24, 24);
    connect(cross, &QPushButton::clicked, this, &QDialog::close);
    header->addWidget(title);
    header->addStretch();
    header->addWidget(cross);
    column->addLayout(header);

    m_edit = new QTextEdit(container);
    m_edit->setObjectName(QStringLiteral("ocrTextEdit"));
    m_edit->setPlainText(text);
    column->addWidget(m_edit);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    QPushButton* copy = makeButton(QString(), container);
    copy->setObjectName(QStringLiteral("btnCopy"));
    connect(copy, &QPushButton::clicked, this, [this] {
        core::copyTextToClipboard(this->text());
        core::notifyUser(tr("已复制", "ocr.copy.title"),
                         tr("文本已成功复制到剪贴板！", "ocr.copy.body"), 3000);
    });
    QPushButton* pin = makeButton(QString(), container);
    connect(pin, &QPushButton::clicked, this, [this] {
        Q_EMIT pinRequested(this->text());
        close();
    });
    QPushButton* chat = makeButton(QString(), container);
    connect(chat, &QPushButton::clicked, this, [this] {
        Q_EMIT chatRequested(this->text());
        close();
    });
    QPushButton* closeButton = makeButton(QString(), container);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::close);
    for (QPushButton* b : {copy, pin, chat, closeButton})
        buttons->addWidget(b);
    column->addLayout(buttons);
    followLanguage(this, [=] {
        title->setText(tr("文字识别结果 (OCR)", "ocr.dialog.title"));
        setTipAndName(cross, tr("Close", "ocr.dialog.closeTip"));
        copy->setText(tr("📋 复制全部", "ocr.dialog.copy"));
        pin->setText(tr("📌 钉在屏幕", "ocr.dialog.pin"));
        chat->setText(tr("💬 移至 AI 聊天", "ocr.dialog.chat"));
        closeButton->setText(tr("关闭", "ocr.dialog.close"));
    });

    connect(&manager::ThemeManager::instance(), &manager::ThemeManager::themeChanged, this,
            &OcrResultDialog::applyTheme);
    connect(&Translucency::instance(), &Translucency::availableChanged, this,
            &OcrResultDialog::applyTheme);
    applyTheme();
}

void OcrResultDialog::applyTheme()
{
    const bool translucent = Translucency::instance().available();
    const int shadowRoom = translucent ? kShadowRoom : 0;
    m_outer->setContentsMargins(shadowRoom, shadowRoom, shadowRoom, shadowRoom);
    m_shadow->setEnabled(translucent);
    setStyleSheet(
        dialogSheet(manager::ThemeManager::instance().currentTheme() == QLatin1String("dark")) +
        QStringLiteral("#ocrResultContainer { border-radius: %1; }")
            .arg(Translucency::instance().cornerRadius(12)));
}

QString OcrResultDialog::text() const
{
    return m_edit->toPlainText();
}

} // namespace zelmor::widget
