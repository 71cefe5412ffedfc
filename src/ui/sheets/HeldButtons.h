#pragma once

#include <QAbstractButton>
#include <QList>
#include <QPointer>

namespace morvane {

/// The buttons below an open sheet. Assistive technology presses a button without mouse or keyboard, so that
/// covering it does not help; while it is held, nobody hears of it. What can be checked is left alone, since
/// it would show what nobody was told.
class HeldButtons {
public:
    HeldButtons() = default;
    ~HeldButtons() { release(); }
    HeldButtons(const HeldButtons &) = delete;
    HeldButtons &operator=(const HeldButtons &) = delete;

    /// Holds those of the buttons that nobody holds yet.
    void hold(const QList<QAbstractButton *> &buttons);
    /// Sets free what it holds and what still is there.
    void release();

private:
    QList<QPointer<QAbstractButton>> m_buttons;
};

} // namespace morvane
