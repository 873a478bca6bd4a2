#include "SettingsBlocks.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>

namespace zelmor::widget::settings {

namespace {

QLabel* makeLabel(const QString& text, const char* objectName, bool wrap = false)
{
    auto* label = new QLabel(text);
    label->setObjectName(QLatin1String(objectName));
    label->setWordWrap(wrap);
    return label;
}

// Title over an optional description; nothing when both are empty.
QWidget* makeHeader(const QString& title, const char* titleName, const QString& description,
                    const char* descriptionName)
{
    if (title.isEmpty() && description.isEmpty()) return nullptr;
    auto* header = new QWidget;
    auto* layout = new QVBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(makeLabel(title, titleName));
    if (!description.isEmpty()) layout->addWidget(makeLabel(description, descriptionName, true));
    return header;
}

QString withoutColon(QString text)
{
    if (text.endsWith(QLatin1Char(':'))) text.chop(1);
    return text;
}

} // namespace

Page makePage(const QString& title, const QString& description)
{
    auto* scroll = new QScrollArea;
    scroll->setObjectName(QStringLiteral("settingsPageScroll"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    auto* inner = new QWidget;
    inner->setObjectName(QStringLiteral("settingsInner"));
    auto* body = new QVBoxLayout(inner);
    body->setContentsMargins(12, 12, 12, 14);
    body->setSpacing(8);
    if (QWidget* header = makeHeader(title, "settingsPageTitle", description, "settingsPageDesc"))
        body->addWidget(header);
    scroll->setWidget(inner);
    return {scroll, body};
}

QVBoxLayout* addCard(QVBoxLayout* page, const QString& title, const QString& description)
{
    auto* card = new QFrame;
    card->setObjectName(QStringLiteral("settingsCard"));
    card->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(16, 10, 16, 12);
    layout->setSpacing(8);
    if (QWidget* header = makeHeader(title, "settingsCardTitle", description, "settingsCardDesc")) {
        layout->addWidget(header);
        layout->addSpacing(4);
    }
    page->addWidget(card);
    return layout;
}

QWidget* makeField(const QString& label, QWidget* control, const QString& hint)
{
    auto* field = new QWidget;
    auto* layout = new QVBoxLayout(field);
    layout->setContentsMargins(0, 2, 0, 2);
    layout->setSpacing(4);
    QLabel* title = makeLabel(label, "fieldLabel");
    title->setBuddy(control);
    layout->addWidget(title);
    if (qobject_cast<QSpinBox*>(control) || qobject_cast<QDoubleSpinBox*>(control))
        control->setMaximumWidth(120);
    else if (qobject_cast<QComboBox*>(control))
        control->setMaximumWidth(240);
    // A plain container takes no focus; the control inside it carries its own name.
    if (control->focusPolicy() != Qt::NoFocus) control->setAccessibleName(withoutColon(label));
    layout->addWidget(control);
    if (!hint.isEmpty()) layout->addWidget(makeLabel(hint, "fieldHint", true));
    return field;
}

QWidget* makeFieldPair(QWidget* left, QWidget* right)
{
    auto* pair = new QWidget;
    auto* layout = new QHBoxLayout(pair);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(20);
    layout->addWidget(left);
    layout->addWidget(right);
    return pair;
}

QCheckBox* addSettingRow(QVBoxLayout* card, const QString& title, const QString& description,
                         bool initial, const std::function<void(bool)>& onToggled)
{
    QWidget* cardWidget = card->parentWidget();
    const bool first = !cardWidget->findChild<QFrame*>(QStringLiteral("settingRowWrapFirst"),
                                                       Qt::FindDirectChildrenOnly);
    auto* wrap = new QFrame;
    wrap->setObjectName(first ? QStringLiteral("settingRowWrapFirst")
                              : QStringLiteral("settingRowWrap"));
    auto* row = new QHBoxLayout(wrap);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(12);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(3);
    texts->addWidget(makeLabel(title, "settingRowTitle"));
    if (!description.isEmpty()) texts->addWidget(makeLabel(description, "settingRowDesc", true));
    row->addLayout(texts, 1);

    auto* toggle = new QCheckBox;
    toggle->setObjectName(QStringLiteral("settingToggle"));
    toggle->setAccessibleName(title);
    if (!description.isEmpty()) toggle->setAccessibleDescription(description);
    toggle->setChecked(initial);
    toggle->setCursor(Qt::PointingHandCursor);
    if (onToggled) QObject::connect(toggle, &QCheckBox::toggled, toggle, onToggled);
    row->addWidget(toggle, 0, description.isEmpty() ? Qt::AlignVCenter : Qt::AlignTop);
    card->addWidget(wrap);
    return toggle;
}

QPushButton* makeSettingsButton(const QString& text, bool primary)
{
    auto* button = new QPushButton(text);
    button->setObjectName(primary ? QStringLiteral("settingsPrimaryBtn")
                                  : QStringLiteral("settingsSecondaryBtn"));
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

} // namespace zelmor::widget::settings
