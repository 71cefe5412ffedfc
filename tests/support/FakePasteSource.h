#pragma once

#include "async/OneShot.h"
#include "platform/PasteSource.h"

#include <QList>
#include <algorithm>
#include <utility>

namespace morvane {

/// Another program that has copied something, and answers when the test says so.
class FakePasteSource : public PasteSource {
public:
    using Answer = std::expected<PasteContent, PasteFailure>;

    bool isReachable() const override { return reachable; }
    Task<Answer> read(Selection selection) override
    {
        asked.append(selection);
        return wait(answerTo(static_cast<int>(asked.size()) - 1));
    }

    /// Answers one of the questions, also one that comes later; they are counted from 0.
    void answer(Answer answer, int question = 0) { answerTo(question).resume(std::move(answer)); }
    void answerText(const QString &text, int question = 0)
    {
        PasteContent content;
        content.text = text;
        answer(content, question);
    }

    bool reachable = true;
    QList<Selection> asked;

private:
    OneShot<Answer> answerTo(int question)
    {
        m_answers.resize(std::max<qsizetype>(m_answers.size(), question + 1));
        return m_answers[question];
    }
    static Task<Answer> wait(OneShot<Answer> answer) { co_return co_await answer.wait(); }

    QList<OneShot<Answer>> m_answers;
};

} // namespace morvane
