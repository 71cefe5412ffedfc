#pragma once

#include "ui/controls/WrappedText.h"

#include <QFontMetrics>
#include <QMargins>
#include <QSizePolicy>
#include <algorithm>
#include <utility>

namespace morvane {

/// What the widgets have in common whose text wraps instead of widening the window: they want the room of one
/// line, make do with some words on a line, and grow downwards.
template <class Widget> class Wrapping : public Widget {
public:
    using Widget::Widget;

    QSize sizeHint() const override
    {
        const WrappedText &text = laidOut();
        return inMargins(text.size(text.naturalWidth()));
    }
    QSize minimumSizeHint() const override
    {
        const WrappedText &text = laidOut();
        const QFontMetrics metrics(text.font);
        const int least = std::min(text.naturalWidth(), leastCharacters * metrics.averageCharWidth());
        return inMargins({least, metrics.lineSpacing()});
    }
    int heightForWidth(int width) const override
    {
        const QMargins margins = textMargins();
        return inMargins(laidOut().size(width - margins.left() - margins.right())).height();
    }
    bool hasHeightForWidth() const override { return true; }

protected:
    /// The text as it is laid out.
    virtual WrappedText wrappedText() const = 0;
    /// The same, as long as nothing about it changes; only this one remembers its lines.
    const WrappedText &laidOut() const
    {
        if (WrappedText now = wrappedText(); !(now == m_laidOut))
            m_laidOut = std::move(now);
        return m_laidOut;
    }
    /// The room around it.
    virtual QMargins textMargins() const = 0;
    /// Of what stands beside the text, in logical pixels.
    virtual int leastHeight() const { return 0; }

    /// To be called by constructors: a fixed height would hold that of a single line against the layout.
    void growDownwards()
    {
        QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
        policy.setHeightForWidth(true);
        this->setSizePolicy(policy);
    }

private:
    static constexpr int leastCharacters = 12;

    mutable WrappedText m_laidOut;

    QSize inMargins(const QSize &text) const
    {
        return QSize(text.width(), std::max(text.height(), leastHeight())).grownBy(textMargins());
    }
};

} // namespace morvane
