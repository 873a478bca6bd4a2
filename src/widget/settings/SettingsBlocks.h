#pragma once

#include <QString>

#include <functional>

class QCheckBox;
class QPushButton;
class QScrollArea;
class QVBoxLayout;
class QWidget;

// The pieces every settings page is made of. Their object names are what the theme's sheet
// styles, so a page built from them needs no style of its own.
namespace zelmor::widget::settings {

struct Page
{
    QScrollArea* scroll; // the page as the panel's stack holds it
    QVBoxLayout* body;   // cards and rows go here
};

// A scrolling page under a title and an optional description.
Page makePage(const QString& title, const QString& description);

// A card appended to the page; returns the layout for its rows. The header is left out when
// both texts are empty.
QVBoxLayout* addCard(QVBoxLayout* page, const QString& title, const QString& description);

// A labelled control with an optional hint below. The label's text, without a trailing
// colon, also becomes the control's accessible name unless it is a plain container.
QWidget* makeField(const QString& label, QWidget* control, const QString& hint = QString());
QWidget* makeFieldPair(QWidget* left, QWidget* right);

// A titled switch; `onToggled`, if given, runs on every change. Returns the switch.
QCheckBox* addSettingRow(QVBoxLayout* card, const QString& title, const QString& description,
                         bool initial, const std::function<void(bool)>& onToggled);

// A page's push button, in the primary accent or the quiet secondary look.
QPushButton* makeSettingsButton(const QString& text, bool primary = false);

} // namespace zelmor::widget::settings
