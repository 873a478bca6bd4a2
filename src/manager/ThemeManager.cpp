#include "ThemeManager.h"

#include "core/ThemeFlag.h"

#include <QApplication>
#include <QPalette>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleHints>

#include <array>
#include <utility>

namespace zelmor::manager {

namespace {

struct Token
{
    const char* dark;
    const char* light;
};

// Fills every placeholder of a template in one multi-argument substitution, so a value can
// never be read as a later placeholder.
template <std::size_t N, std::size_t... I>
QString fillTemplate(const char* text, const std::array<Token, N>& tokens, bool dark,
                     std::index_sequence<I...>)
{
    return QString::fromLatin1(text).arg(QLatin1String(dark ? tokens[I].dark : tokens[I].light)...);
}

template <std::size_t N>
QString fillTemplate(const char* text, const std::array<Token, N>& tokens, bool dark)
{
    return fillTemplate(text, tokens, dark, std::make_index_sequence<N>());
}

const char* const kDarkBlock = R"(
/* ---- Dark theme ---- */
QMainWindow, QDialog { background: #141418; color: #F4F4F5; }
QMenu { background: #18181C; color: #F4F4F5; border: 1px solid #2E2E34; border-radius: 8px; padding: 4px; }
QMenu::item { padding: 5px 20px 5px 12px; border-radius: 4px; }
QMenu::item:selected { background: #2E2E34; }
QMenu::item:disabled { color: #6B7280; }
QMenu::separator { height: 1px; background: #2E2E34; margin: 4px 8px; }
QScrollBar:vertical { background: transparent; width: 10px; margin: 0; }
QScrollBar:horizontal { background: transparent; height: 10px; margin: 0; }
QScrollBar::handle:vertical { background: #3F3F46; border-radius: 3px; min-height: 32px; margin: 2px; }
QScrollBar::handle:horizontal { background: #3F3F46; border-radius: 3px; min-width: 32px; margin: 2px; }
QScrollBar::handle:hover { background: #52525B; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; border: none; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QGroupBox { color: #F4F4F5; border: 1px solid #2E2E34; border-radius: 8px; margin-top: 14px; padding-top: 6px; }
QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 4px; }
QComboBox, QSpinBox, QDoubleSpinBox { background: #18181C; color: #F4F4F5; border: 1px solid #2E2E34; border-radius: 6px; padding: 3px 8px; }
QComboBox:hover, QSpinBox:hover, QDoubleSpinBox:hover { border-color: #52525B; }
QComboBox:focus, QSpinBox:focus, QDoubleSpinBox:focus { border-color: #E67E22; }
QComboBox::drop-down { subcontrol-origin: padding; subcontrol-position: center right; border: none; width: 20px; }
QComboBox::down-arrow { image: url(:/icons/common/chevron-down.svg); width: 10px; height: 10px; }
QComboBox QAbstractItemView { background: #18181C; color: #F4F4F5; border: 1px solid #2E2E34; selection-background-color: #E67E22; selection-color: white; outline: none; }
QSpinBox::up-button, QSpinBox::down-button, QDoubleSpinBox::up-button, QDoubleSpinBox::down-button { subcontrol-origin: border; background: transparent; border: none; width: 16px; }
QSpinBox::up-button, QDoubleSpinBox::up-button { subcontrol-position: top right; }
QSpinBox::down-button, QDoubleSpinBox::down-button { subcontrol-position: bottom right; }
QSpinBox::up-arrow, QDoubleSpinBox::up-arrow { image: url(:/icons/common/chevron-up.svg); width: 10px; height: 10px; }
QSpinBox::down-arrow, QDoubleSpinBox::down-arrow { image: url(:/icons/common/chevron-down.svg); width: 10px; height: 10px; }
)";

const char* const kLightBlock = R"(
/* ---- Light theme ---- */
QMainWindow, QDialog { background: #F5F5F7; color: #222222; }
QMenu { background: #FFFFFF; color: #222222; border: 1px solid #E5E5E5; border-radius: 8px; padding: 4px; }
QMenu::item { padding: 5px 20px 5px 12px; border-radius: 4px; }
QMenu::item:selected { background: #FFF3E0; }
QMenu::item:disabled { color: #9CA3AF; }
QMenu::separator { height: 1px; background: #E5E5E5; margin: 4px 8px; }
QScrollBar:vertical { background: transparent; width: 10px; margin: 0; }
QScrollBar:horizontal { background: transparent; height: 10px; margin: 0; }
QScrollBar::handle:vertical { background: #C8C8CE; border-radius: 3px; min-height: 32px; margin: 2px; }
QScrollBar::handle:horizontal { background: #C8C8CE; border-radius: 3px; min-width: 32px; margin: 2px; }
QScrollBar::handle:hover { background: #A8A8B0; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; border: none; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QGroupBox { color: #222222; border: 1px solid #E5E5E5; border-radius: 8px; margin-top: 14px; padding-top: 6px; }
QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 4px; }
QComboBox, QSpinBox, QDoubleSpinBox { background: #FFFFFF; color: #222222; border: 1px solid #D4D4D8; border-radius: 6px; padding: 3px 8px; }
QComboBox:hover, QSpinBox:hover, QDoubleSpinBox:hover { border-color: #A8A8B0; }
QComboBox:focus, QSpinBox:focus, QDoubleSpinBox:focus { border-color: #E67E22; }
QComboBox::drop-down { subcontrol-origin: padding; subcontrol-position: center right; border: none; width: 20px; }
QComboBox::down-arrow { image: url(:/icons/common/chevron-down.svg); width: 10px; height: 10px; }
QComboBox QAbstractItemView { background: #FFFFFF; color: #222222; border: 1px solid #E5E5E5; selection-background-color: #FFF3E0; selection-color: #222222; outline: none; }
QSpinBox::up-button, QSpinBox::down-button, QDoubleSpinBox::up-button, QDoubleSpinBox::down-button { subcontrol-origin: border; background: transparent; border: none; width: 16px; }
QSpinBox::up-button, QDoubleSpinBox::up-button { subcontrol-position: top right; }
QSpinBox::down-button, QDoubleSpinBox::down-button { subcontrol-position: bottom right; }
QSpinBox::up-arrow, QDoubleSpinBox::up-arrow { image: url(:/icons/common/chevron-up.svg); width: 10px; height: 10px; }
QSpinBox::down-arrow, QDoubleSpinBox::down-arrow { image: url(:/icons/common/chevron-down.svg); width: 10px; height: 10px; }
)";

const char* const kSettingsTemplate = R"(
#settingsRoot, #settingsBody { background: %1; }
#settingsTitleBar { background: %2; border-bottom: 1px solid %3; }
#settingsTitle { color: %4; background: transparent; font-size: 18px; font-weight: 600; }
#settingsNav { background: transparent; border: none; border-right: 1px solid %3; color: %4; outline: none; }
#settingsNav::item { padding: 6px 10px; margin: 1px 6px; border-radius: 6px; }
#settingsNav::item:hover { background: %9; }
#settingsNav::item:selected { background: %8; color: %7; font-weight: 600; }
#settingsFooter { background: %2; border-top: 1px solid %3; }
#footerText { color: %5; background: %1; border: 1px solid %3; border-radius: 9px; padding: 1px 8px; }
#settingsPageScroll, #settingsInner { background: transparent; border: none; }
#settingsPageTitle { color: %4; font-size: 18px; font-weight: 600; }
#settingsPageDesc, #settingsCardDesc, #settingRowDesc, #fieldHint { color: %6; }
#settingsCard { background: %2; border: 1px solid %3; border-radius: 10px; }
#settingsCardTitle { color: %4; font-weight: 600; }
#fieldLabel, #settingRowTitle, #groupTitle { color: %4; }
#groupTitle { font-weight: 600; }
#settingRowWrapFirst { background: transparent; border: none; }
#settingRowWrap { background: transparent; border: none; border-top: 1px solid %3; }
#settingToggle::indicator { width: 36px; height: 20px; }
#settingToggle::indicator:unchecked { image: url(%12); }
#settingToggle::indicator:checked { image: url(:/icons/common/toggle-on.svg); }
#settingsRoot QLineEdit, #settingsRoot QComboBox, #settingsRoot QSpinBox, #settingsRoot QDoubleSpinBox { background: %10; color: %4; border: 1px solid %3; border-radius: 6px; padding: 4px 8px; placeholder-text-color: %11; }
#settingsRoot QLineEdit:focus, #settingsRoot QComboBox:focus, #settingsRoot QSpinBox:focus, #settingsRoot QDoubleSpinBox:focus { border-color: %7; }
#settingsRoot QKeySequenceEdit QLineEdit { background: %10; font-weight: 600; }
#inlineInputWrap { background: transparent; border: none; }
#inlineBtn { background: %9; color: %4; border: 1px solid %3; border-radius: 6px; padding: 4px 12px; }
#inlineBtn:hover { border-color: %7; color: %7; }
#settingsPrimaryBtn { background: %7; color: white; border: none; border-radius: 6px; padding: 5px 14px; font-weight: 600; }
#settingsSecondaryBtn { background: transparent; color: %4; border: 1px solid %3; border-radius: 6px; padding: 5px 12px; }
#settingsSecondaryBtn:hover { background: %9; border-color: %7; color: %7; }
#aiTabTitle { color: %4; font-size: 18px; font-weight: 600; }
#aiTabSubtitle, #aiFormHint, #aiProviderItemModel { color: %6; }
#aiListCard, #aiFormCard { background: %2; border: 1px solid %3; border-radius: 10px; }
#aiProviderList { background: %10; border: 1px solid %3; border-radius: 8px; outline: none; }
#aiProviderList::item:hover { background: %9; }
#aiProviderList::item:selected { background: %8; }
#aiProviderItem { background: transparent; }
#aiProviderItemName, #aiFieldLabel { color: %4; }
#aiProviderItemStar { color: %7; }
#aiProviderItemPill { color: %15; background: %16; border-radius: 8px; padding: 1px 8px; }
#aiListBtnWrap { background: transparent; border: none; }
#aiInput { background: %10; color: %4; border: 1px solid %3; border-radius: 6px; padding: 5px 8px; placeholder-text-color: %11; }
#aiInput:focus { border-color: %7; }
#aiListBtn, #aiGhostBtn, #aiBottomBtn { background: transparent; color: %4; border: 1px solid %3; border-radius: 6px; padding: 5px 12px; }
#aiListBtn:hover, #aiGhostBtn:hover, #aiBottomBtn:hover { background: %9; border-color: %7; color: %7; }
#aiPrimaryBtn { background: %7; color: white; border: none; border-radius: 6px; padding: 6px 16px; font-weight: 600; }
QLabel[badge="success"] { color: %13; background: %14; border-radius: 8px; padding: 1px 8px; font-weight: 600; }
QLabel[badge="neutral"] { color: %15; background: %16; border-radius: 8px; padding: 1px 8px; }
QPushButton[removeButton="true"] { background: %17; color: %18; border: 1px solid %19; border-radius: 6px; padding: 5px 12px; }
QPushButton[removeButton="true"]:hover { background: %20; }
)";

constexpr std::array<Token, 20> kSettingsTokens = {{
    {"#1F1F23", "#F5F5F7"}, {"#2A2A30", "#FFFFFF"},
    {"#3A3A40", "#E5E5E5"}, {"#E4E4E7", "#222222"},
    {"#9AA3AF", "#5F6876"}, {"#6F7681", "#7D8593"},
    {"#E67E22", "#E67E22"}, {"#3a2a18", "#FDF1E5"},
    {"#2F2F35", "#F0F0F2"}, {"#1F1F23", "#FFFFFF"},
    {"#5A5F68", "#9AA3AF"}, {":/icons/common/toggle-off_dark.svg", ":/icons/common/toggle-off.svg"},
    {"#81C784", "#2E7D32"}, {"#1B382B", "#E8F5E9"},
    {"#A1A1AA", "#616161"}, {"#2A2A32", "#F5F5F5"},
    {"#3D1E22", "#FFEBEE"}, {"#FF8A80", "#D32F2F"},
    {"#5C282D", "#FFCDD2"}, {"#4A2328", "#FFCDD2"},
}};

const char* const kHistoryTemplate = R"(
#historyWindow { background: %1; color: %4; }
#historyToolbar { background: %1; border-bottom: 1px solid %3; }
#historySearch { background: %2; color: %4; border: 1px solid %3; border-radius: 6px; padding: 0 10px; placeholder-text-color: %6; }
#historySearch:focus { border-color: %7; }
#historyTab { background: transparent; color: %5; border: none; border-radius: 6px; padding: 0 12px; }
#historyTab:hover { color: %4; }
#historyTab:checked { background: %7; color: white; font-weight: 600; }
#historyViewSwitch { background: %2; border: 1px solid %3; border-radius: 8px; }
#historyViewBtn { background: transparent; border: none; border-radius: 6px; }
#historyViewBtn:checked { background: %3; }
#historyFilter, #historySort { background: %2; color: %4; border: 1px solid %3; border-radius: 6px; padding: 0 8px; }
#historyFilter:hover, #historySort:hover { border-color: %7; }
#historyRefreshBtn { background: %2; border: 1px solid %3; border-radius: 6px; }
#historyRefreshBtn:hover { border-color: %7; }
#historySplit::handle { background: %3; }
#historyThumbView { background: %1; border: none; outline: none; }
#historyStatusBar { background: %1; border-top: 1px solid %3; }
#historyStatusText { color: %5; }
#historyDetail { background: %1; border-left: 1px solid %3; }
#detailTitle { color: %4; font-size: 15px; font-weight: 600; }
#detailPreview { background: %2; border: 1px solid %3; border-radius: 8px; }
#detailKey, #detailFieldLabel { color: %5; }
#detailValue { color: %4; }
#detailInput { background: %2; color: %4; border: 1px solid %3; border-radius: 6px; padding: 5px 8px; placeholder-text-color: %6; }
#detailInput:focus { border-color: %7; }
#detailPrimary { background: %7; color: white; border: none; border-radius: 6px; padding: 7px; font-weight: 600; }
#detailPrimary:hover { background: %8; }
#detailSecondary { background: %2; color: %4; border: 1px solid %3; border-radius: 6px; padding: 6px; }
#detailSecondary:hover { border-color: %7; color: %7; }
#detailDanger { background: %10; color: %9; border: none; border-radius: 6px; padding: 6px; }
#detailDanger:hover { background: %11; }
)";

constexpr std::array<Token, 11> kHistoryTokens = {{
    {"#1b1b1f", "#FFFFFF"},
    {"#232328", "#FAFAFA"},
    {"#333339", "#E5E5E5"},
    {"#E4E4E7", "#222222"},
    {"#9a9aa0", "#666666"},
    {"#7a7a80", "#999999"},
    {"#F57C00", "#F57C00"},
    {"#E66A00", "#E66A00"},
    {"#F44336", "#F44336"},
    {"#3a1f22", "#FFECEC"},
    {"#4a2528", "#FFDADA"},
}};

const char* const kChatTemplate = R"(
#aiChatPanel, #mainContainer { background: %1; color: %5; }
#sidebarContainer { background: %2; border-right: 1px solid %4; }
#logoLabel { color: %5; font-size: 15px; font-weight: 700; }
#btnNewChat { background: %7; color: white; border: none; border-radius: 8px; padding: 8px; font-weight: 600; }
#btnNewChat:hover { background: %8; }
#searchBox { background: %3; color: %5; border: 1px solid %4; border-radius: 8px; padding: 6px 10px; placeholder-text-color: %6; }
#searchBox:focus { border-color: %7; }
#sessionList { background: transparent; border: none; outline: none; }
#sessionList::item { border-radius: 8px; }
#sessionList::item:hover { background: %3; }
#sessionList::item:selected { background: %9; }
#sessionTitle { color: %5; }
#sessionTime { color: %6; font-size: 11px; }
#btnDeleteSession { background: transparent; color: %6; border: none; }
#btnDeleteSession:hover { color: %7; }
#topbar { background: %1; border-bottom: 1px solid %4; }
#topTitleLabel { color: %5; font-weight: 600; }
#modelSelect { background: %3; color: %5; border: 1px solid %4; border-radius: 6px; padding: 2px 8px; }
#btnTopAction, #btnTopDanger, #btnSettings { background: transparent; color: %5; border: 1px solid %4; border-radius: 6px; padding: 4px 10px; }
#btnTopAction:hover, #btnTopDanger:hover, #btnSettings:hover { border-color: %7; color: %7; }
#modelWarning, #providerInfoLabel, #statusLabel, #attachInfo, #bubbleName, #bubbleSystem { color: %6; }
#bubbleName { font-size: 11px; }
#welcomeScrollArea, #welcomePage, #aiScrollArea, #scrollWidget { background: %1; border: none; }
#welcomeIconCircle { background: %9; border-radius: 32px; }
#welcomeTitle { color: %5; font-size: 20px; font-weight: 700; }
#welcomeDesc, #cardDesc { color: %6; }
#welcomeCard { background: %3; border: 1px solid %4; border-radius: 10px; }
#welcomeCard:hover { background: %9; border-color: %7; }
#cardTitle { color: %5; font-weight: 600; }
#inputContainer { background: %1; border-top: 1px solid %4; }
#attachFrame { background: %3; border: 1px solid %4; border-radius: 8px; }
#chatInput { background: %10; color: %5; border: 1px solid %4; border-radius: 10px; padding: 8px; placeholder-text-color: %6; }
#chatInput:focus { border-color: %7; }
#bubbleUser { background: %9; border: 1px solid %7; border-radius: 12px; }
#bubbleAi { background: %3; border: 1px solid %4; border-radius: 12px; }
)";

constexpr std::array<Token, 10> kChatTokens = {{
    {"#1F1F23", "#FAFAFC"},
    {"#18181B", "#F4F4F6"},
    {"#2A2A30", "#FFFFFF"},
    {"#3A3A40", "#E5E5E5"},
    {"#E4E4E7", "#222222"},
    {"#9AA3AF", "#6F7681"},
    {"#E67E22", "#E67E22"},
    {"#F39C12", "#D35400"},
    {"#3A2A18", "#FFFBF8"},
    {"#2A2A30", "#FFFFFF"},
}};

// The capture panels sit on a frozen screenshot, so they stay dark and translucent in both
// themes.
const char* const kBaseTemplate = R"(
QWidget { font-family: 'Segoe UI Variable', 'Segoe UI', 'Microsoft YaHei UI', sans-serif; font-size: 14px; }
#captureToolbar, #captureAnnToolbar, #captureSidePanel { background: rgba(28, 28, 32, 235); border: 1px solid rgba(76, 194, 255, 70); border-radius: 8px; }
#captureToolbar QToolButton, #captureAnnToolbar QToolButton { background: transparent; border: none; border-radius: 6px; }
#captureToolbar QToolButton:hover, #captureAnnToolbar QToolButton:hover { background: rgba(255, 255, 255, 28); }
#captureAnnToolbar QToolButton:checked { background: rgba(76, 194, 255, 80); }
#captureToolbar QComboBox, #captureAnnToolbar QSpinBox { background: rgba(255, 255, 255, 20); color: rgba(255, 255, 255, 230); border: 1px solid rgba(255, 255, 255, 40); border-radius: 4px; padding: 2px 6px; }
#captureToolbar QComboBox QAbstractItemView { background: rgb(28, 28, 32); color: rgba(255, 255, 255, 230); border: 1px solid rgba(76, 194, 255, 70); selection-background-color: rgba(76, 194, 255, 80); selection-color: white; outline: none; }
#captureSidePanel QLabel { background: transparent; color: rgba(255, 255, 255, 220); }
#annotateWindow { background: %1; color: %5; }
#annotateScrollArea { background: %2; border: none; }
#annotateToolBar { background: %3; border: none; border-bottom: 1px solid %4; }
#annotateToolBar QToolButton { background: transparent; color: %5; border: none; border-radius: 6px; padding: 4px; }
#annotateToolBar QToolButton:hover { background: %4; }
#annotateSidePanel { background: %6; border-left: 1px solid %4; }
#annotateSidePanel QLabel { color: %5; }
#annotateStatusBar { background: %7; border-top: 1px solid %4; }
#annotateStatusBar QLabel { color: %8; }
)";

constexpr std::array<Token, 8> kBaseTokens = {{
    {"#1e1e22", "#F5F5F7"},
    {"#131316", "#FFFFFF"},
    {"#2a2a30", "#FFFFFF"},
    {"#3a3a40", "#E5E5E5"},
    {"#e4e4e7", "#222222"},
    {"#1a1a1f", "#FFFFFF"},
    {"#1a1a1f", "#FFFFFF"},
    {"#b4b4b8", "#5F6876"},
}};

// placeholder-text-color is a property of Qt 6.5 on. Older versions warn of it at every widget
// they style; they take the placeholder's colour from the palette and the text colour instead.
QString withSupportedProperties(QString sheet)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
    static const QRegularExpression placeholder(QStringLiteral(" ?placeholder-text-color: [^;]*;"));
    sheet.remove(placeholder);
#endif
    return sheet;
}

// Later blocks win over earlier ones at equal specificity, so the base block comes last.
QString buildStyleSheet(bool dark)
{
    return withSupportedProperties(QLatin1String(dark ? kDarkBlock : kLightBlock) +
                                   fillTemplate(kSettingsTemplate, kSettingsTokens, dark) +
                                   fillTemplate(kHistoryTemplate, kHistoryTokens, dark) +
                                   fillTemplate(kChatTemplate, kChatTokens, dark) +
                                   fillTemplate(kBaseTemplate, kBaseTokens, dark));
}

QPalette darkPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(0x14, 0x14, 0x18));
    palette.setColor(QPalette::WindowText, QColor(0xF4, 0xF4, 0xF5));
    palette.setColor(QPalette::Base, QColor(0x18, 0x18, 0x1C));
    palette.setColor(QPalette::AlternateBase, QColor(0x22, 0x22, 0x28));
    palette.setColor(QPalette::ToolTipBase, QColor(0x22, 0x22, 0x28));
    palette.setColor(QPalette::ToolTipText, QColor(0xF4, 0xF4, 0xF5));
    palette.setColor(QPalette::Text, QColor(0xF4, 0xF4, 0xF5));
    palette.setColor(QPalette::Button, QColor(0x22, 0x22, 0x28));
    palette.setColor(QPalette::ButtonText, QColor(0xF4, 0xF4, 0xF5));
    palette.setColor(QPalette::BrightText, Qt::red);
    palette.setColor(QPalette::Link, QColor(0xE6, 0x7E, 0x22));
    palette.setColor(QPalette::Highlight, QColor(0xE6, 0x7E, 0x22));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, QColor(0x7A, 0x7A, 0x80));
    const QColor disabledText(0x6B, 0x72, 0x80);
    palette.setColor(QPalette::Disabled, QPalette::Text, disabledText);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, disabledText);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, disabledText);
    return palette;
}

bool systemPrefersDark()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    return QGuiApplication::styleHints()->colorScheme() == Qt::ColorScheme::Dark;
#else
    // Without a colour scheme query the system's scheme is unknown, which reads as light.
    return false;
#endif
}

} // namespace

ThemeManager& ThemeManager::instance()
{
    static ThemeManager manager;
    return manager;
}

void ThemeManager::apply(const QString& name)
{
    QString resolved = name;
    if (name.isEmpty() || name == QLatin1String("system"))
        resolved = systemPrefersDark() ? QStringLiteral("dark") : QStringLiteral("light");
    m_currentTheme = resolved;

    const bool dark = resolved == QLatin1String("dark");
    core::setDarkTheme(dark);

    QApplication::setPalette(dark ? darkPalette() : QApplication::style()->standardPalette());
    qApp->setStyleSheet(buildStyleSheet(dark));
    Q_EMIT themeChanged(dark);
}

bool ThemeManager::isDarkTheme()
{
    return core::isDarkTheme();
}

} // namespace zelmor::manager
