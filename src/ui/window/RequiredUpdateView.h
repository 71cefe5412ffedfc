#pragma once

#include "ui/sheets/Sheet.h"

class QPushButton;

namespace morvane {

class NoteLabel;
class UpdateModel;
class UpdateProgress;

/// The sheet that holds the window while a required update is not installed. Nothing dismisses it, and what
/// else asks something stays below it. Shows itself.
class RequiredUpdateView : public Sheet {
    Q_OBJECT
public:
    /// `updates` must outlive the view; `window` owns it.
    RequiredUpdateView(UpdateModel &updates, QWidget *window,
                       SteadyNow now = &std::chrono::steady_clock::now);

protected:
    int rank() const override { return 1; }
    void returnPressed() override;

private:
    void showOrClose();
    void updatePhase();

    UpdateModel &m_updates;
    NoteLabel *m_sentence;
    UpdateProgress *m_progress;
    QPushButton *m_install;
};

} // namespace morvane
