#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>

namespace morvane {

/// Lets the text cursor stand still while nobody works with the program, as other desktop programs do: a
/// cursor that blinks wakes the processor and the X server twice a second, all day. The next key, click or
/// change of focus lets it blink again. One for the whole program; main thread.
class CursorRest : public QObject {
public:
    /// Long enough to find the cursor after a look elsewhere.
    static constexpr std::chrono::milliseconds defaultPatience{5000};

    explicit CursorRest(std::chrono::milliseconds patience = defaultPatience, QObject *parent = nullptr);
    ~CursorRest() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void rest();
    void blink();

    QTimer m_patience;
    int m_flashTime = 0; ///< What the desktop asks for, while the cursor rests; 0 while it blinks.
};

} // namespace morvane
