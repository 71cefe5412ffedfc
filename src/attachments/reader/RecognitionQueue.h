#pragma once

#include "attachments/reader/TextRecognition.h"

#include <QDeadlineTimer>
#include <QImage>
#include <atomic>
#include <deque>
#include <future>
#include <vector>

namespace morvane {

/// Recognises the text of several pictures at once, on as many threads as the
/// machine has processors and memory allows; gives the results in the order of
/// the pictures.
class RecognitionQueue {
public:
    RecognitionQueue();
    /// Gives up what is under way.
    ~RecognitionQueue();

    bool isEmpty() const { return m_running.empty(); }
    /// Whether a result has to be taken before the next picture is added.
    bool isFull() const { return m_running.size() == m_engines.size(); }

    /// `dotsPerInch` and the time are those of TextRecognition::lines.
    void add(const QImage &image, int dotsPerInch, QDeadlineTimer deadline);

    /// Waits for the text of the oldest picture.
    RecognizedText takeNext();

private:
    std::atomic<bool> m_givesUp = false;
    std::vector<TextRecognition> m_engines; ///< Used in turn.
    std::size_t m_nextEngine = 0;
    std::deque<std::future<RecognizedText>> m_running; ///< Oldest first; waits for them when it goes.
};

} // namespace morvane
