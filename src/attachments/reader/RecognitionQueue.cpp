#include "attachments/reader/RecognitionQueue.h"

#include <algorithm>
#include <sched.h>

namespace morvane {
namespace {

/// Each takes a processor, and 100 MB of memory.
constexpr unsigned mostEngines = 4;

/// Those that this process may run on; what others ask for this reads a file.
unsigned processors()
{
    cpu_set_t set;
    return ::sched_getaffinity(0, sizeof set, &set) == 0 ? static_cast<unsigned>(CPU_COUNT(&set)) : 1;
}

} // namespace

RecognitionQueue::RecognitionQueue() : m_engines(std::clamp(processors(), 1U, mostEngines)) {}

RecognitionQueue::~RecognitionQueue()
{
    m_givesUp = true;
}

void RecognitionQueue::add(const QImage &image, int dotsPerInch, QDeadlineTimer deadline)
{
    TextRecognition &engine = m_engines[m_nextEngine];
    m_nextEngine = (m_nextEngine + 1) % m_engines.size();
    m_running.push_back(
        std::async(std::launch::async | std::launch::deferred, [this, &engine, image, dotsPerInch, deadline] {
            const std::chrono::milliseconds left(deadline.remainingTime());
            return engine.lines(image, dotsPerInch, left, &m_givesUp);
        }));
}

RecognizedText RecognitionQueue::takeNext()
{
    std::future<RecognizedText> oldest = std::move(m_running.front());
    m_running.pop_front();
    return oldest.get();
}

} // namespace morvane
