#pragma once

#include <functional>

class QWidget;

namespace zelmor::widget {

// Runs `apply` now and again whenever the application's translators change, so that a window
// that stays open shows its texts in the new language.
void followLanguage(QWidget* widget, std::function<void()> apply);

} // namespace zelmor::widget
