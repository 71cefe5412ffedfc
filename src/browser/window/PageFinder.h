#pragma once

#include "async/TaskHandle.h"
#include "browser/pages/WebPage.h"

#include <QObject>
#include <QPointer>
#include <optional>

namespace morvane {

class Announcer;
class Scheduler;

/// Looks for words in a page: counts them, goes from one to the next. Main thread.
class PageFinder : public QObject {
    Q_OBJECT
public:
    enum class Direction { forwards, backwards };

    /// Both outlive the object.
    PageFinder(Scheduler &scheduler, Announcer &announcer, QObject *parent = nullptr);
    ~PageFinder() override;

    const QString &query() const { return m_query; }
    /// Matches of the last count.
    int count() const { return m_count; }

    /// Counts these words in `page` from now on; none in no page, and nothing has no match.
    void setQuery(const QString &query, const QPointer<WebPage> &page);
    /// Shows the next match and says how many there are. Moves nothing without words.
    void findNext(const QPointer<WebPage> &page, Direction direction);

Q_SIGNALS:
    void counted();

private:
    static Task<void> countMatches(QPointer<PageFinder> self, QString query, QPointer<WebPage> page);
    static Task<void> step(QPointer<PageFinder> self, QString query, QPointer<WebPage> page,
                           Direction direction);
    /// Whether this is still what the user looks for, and where.
    bool looksFor(const QString &query, const WebPage *page) const;
    void setCount(int count);

    Scheduler &m_scheduler;
    Announcer &m_announcer;
    QString m_query;
    QPointer<WebPage> m_page; ///< Where the words were looked for last.
    int m_count = 0;
    std::optional<TaskHandle<void>> m_counting;
};

} // namespace morvane
