#pragma once

#include "ui/sheets/Sheet.h"

namespace morvane {

class AppModel;
class OnboardingModelCard;
class WrappingButton;

/// Greets a first-time user, and lets the local model be set up while they read. Shows itself until the user
/// has begun or skipped.
class OnboardingView : public Sheet {
    Q_OBJECT
public:
    /// `model` must outlive the view; `window` owns it. Starts what is missing of the local model.
    OnboardingView(AppModel &model, QWidget *window, SteadyNow now = &std::chrono::steady_clock::now);

private:
    void showOrClose();
    void updateState();

    AppModel &m_model;
    OnboardingModelCard *m_modelCard;
    WrappingButton *m_start;
    WrappingButton *m_skip;
};

} // namespace morvane
