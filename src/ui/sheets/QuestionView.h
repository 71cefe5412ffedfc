#pragma once

#include "ui/sheets/Sheet.h"

#include <QTimer>
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
    /// Makes the buttons of the next slice of options.
    void addOptions();
    void addOption(const QString &option);
    void sendCustom();

    Questions &m_questions;
    SheetHeader *m_header;
    ScrollingText *m_question;
    HeadingLabel *m_optionsHeading;
    QWidget *m_options;
    HeadingLabel *m_customHeading;
    QLineEdit *m_custom;
    QUuid m_shown;                    ///< The question on display.
    QStringList m_optionsLeft;        ///< Those that have no button yet.
    QWidget *m_lastInOrder = nullptr; ///< Of the question and its options, by the Tab key.
    QTimer m_nextSlice;
};

} // namespace morvane
