#pragma once

#include "ui/sheets/Sheet.h"

#include <QUuid>

class QLineEdit;
class QVBoxLayout;

namespace morvane {

class HeadingLabel;
class Questions;
class ScrollingText;
class SheetHeader;

/// The sheet that shows a question of the model with its suggested answers and a field for another one. It
/// shows itself while a question is pending. It has no cancel: a question is always answered.
class QuestionView : public Sheet {
    Q_OBJECT
public:
    /// `questions` must outlive the view; `window` owns it.
    QuestionView(Questions &questions, QWidget *window, SteadyNow now = &std::chrono::steady_clock::now);

protected:
    void returnPressed() override;

private:
    void showPending();
    void showOptions(const QStringList &options);
    void sendCustom();

    Questions &m_questions;
    SheetHeader *m_header;
    ScrollingText *m_question;
    HeadingLabel *m_optionsHeading;
    QWidget *m_options;
    HeadingLabel *m_customHeading;
    QLineEdit *m_custom;
    QUuid m_shown; ///< The question on display.
};

} // namespace morvane
