#pragma once

#include "ui/sheets/AnswerGuard.h"

#include <QPointer>
#include <QWidget>

class QKeyEvent;

namespace morvane {

class SheetCard;

/// A question to the user that holds one window: it dims the window's content and shows a card in the middle.
/// While it is open neither mouse nor keyboard reach anything else in that window: it covers the window,
/// keeps the focus, and shortcuts of what lies below do nothing. Nothing below is disabled, so that assistive
/// technology reads it as it is; that it changes nothing there is for whoever takes its commands, by `holds`.
/// The menu bar's commands (quit, new conversation) belong to the program and stay at hand. The focus goes
/// into the card when the sheet opens and back to where it was when it closes. Input that comes before the
/// user can have noticed the sheet is dropped, and so is the second press of an impatient answer, which would
/// send a draft or stop a request once the sheet is gone.
class Sheet : public QWidget {
    Q_OBJECT
public:
    /// A sheet over `window`, which owns it, hidden. `now` tells the time for the guard against accidents.
    Sheet(QWidget *window, SteadyNow now);
    ~Sheet() override;

    bool isOpen() const { return m_phase == Phase::open; }
    /// Whether it is the one of the window's open sheets that takes input.
    bool isOnTop() const;
    SheetCard *card() const { return m_card; }
    /// Whether `widget` lies below an open sheet of its window.
    static bool holds(const QWidget &widget);

protected:
    /// Which of several open sheets is in front: one of a higher rank, and of the same rank the one that
    /// opened last.
    virtual int rank() const { return 0; }

    /// Shows the sheet with the focus on `first`; if it is open already, begins anew.
    void openSheet(QWidget *first);
    void closeSheet();

    /// Return was pressed, but not on a button.
    virtual void returnPressed() {}
    virtual void escapePressed() {}

    bool eventFilter(QObject *watched, QEvent *event) override;
    bool event(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    /// `leaving`: closed by a key or click that may be followed by a second one.
    enum class Phase { closed, open, leaving };

    bool dropsSecondAnswer(QEvent &event);
    void setPhase(Phase phase);
    bool handleFocusIn(QWidget &widget);
    bool handleInput(QEvent &event);
    bool handleKeyPress(const QKeyEvent &event);
    bool overridesShortcut(const QKeyEvent &event) const;
    void appear();
    void raiseByRank();
    void arrange();
    bool isBehind(const QWidget *widget) const;
    void takeFocusBack();
    void giveFocusBack();

    SheetCard *m_card;
    AnswerGuard m_guard;
    QPointer<QWidget> m_focus; ///< Of this sheet's parts, the one that has the focus or had it last.
    QPointer<QWidget> m_previousFocus;
    Phase m_phase = Phase::closed;
};

} // namespace morvane
