#include "browser/window/PageFinder.h"

#include "async/Scheduler.h"
#include "browser/pages/EvaluateWithTimeout.h"
#include "browser/pages/PageText.h"
#include "platform/Announcer.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

constexpr std::chrono::seconds scriptLimit{5};

/// As it stands between single quotes in a script.
QString escaped(QString query)
{
    return query.replace(u'\\', u"\\\\"_s).replace(u'\'', u"\\'"_s);
}

QString countScript(const QString &query)
{
    return u"(function () {\n  var q = '"_s + escaped(query.toLower()) +
           u"';\n"
           "  var text = (document.body.innerText || '').toLowerCase();\n"
           "  var count = 0, i = text.indexOf(q);\n"
           "  while (i !== -1) { count++; i = text.indexOf(q, i + q.length); }\n"
           "  return count;\n"
           "})()"_s;
}

QString findScript(const QString &query, PageFinder::Direction direction)
{
    const QString backwards = direction == PageFinder::Direction::backwards ? u"true"_s : u"false"_s;
    return u"window.find('"_s + escaped(query) + u"', false, "_s + backwards + u", true)"_s;
}

} // namespace

PageFinder::PageFinder(Scheduler &scheduler, Announcer &announcer, QObject *parent)
    : QObject(parent), m_scheduler(scheduler), m_announcer(announcer)
{
}

PageFinder::~PageFinder()
{
    if (m_counting)
        m_counting->cancel();
}

void PageFinder::setQuery(const QString &query, const QPointer<WebPage> &page)
{
    m_query = query;
    m_page = page;
    if (m_counting)
        m_counting->cancel();
    m_counting.reset();
    if (query.isEmpty() || !page)
        return setCount(0);
    m_counting = m_scheduler.spawn(countMatches(this, query, page));
}

bool PageFinder::looksFor(const QString &query, const WebPage *page) const
{
    return page && m_query == query && m_page == page;
}

Task<void> PageFinder::countMatches(QPointer<PageFinder> self, QString query, QPointer<WebPage> page)
{
    const QVariant count = co_await evaluateWithTimeout(countScript(query), page, scriptLimit);
    if (self && self->looksFor(query, page))
        self->setCount(count.toInt());
}

void PageFinder::setCount(int count)
{
    m_count = count;
    Q_EMIT counted();
}

void PageFinder::findNext(const QPointer<WebPage> &page, Direction direction)
{
    if (m_query.isEmpty() || !page)
        return;
    m_page = page;
    m_scheduler.spawn(step(this, m_query, page, direction));
}

Task<void> PageFinder::step(QPointer<PageFinder> self, QString query, QPointer<WebPage> page,
                            Direction direction)
{
    co_await evaluateWithTimeout(findScript(query, direction), page, scriptLimit);
    if (!self || !self->looksFor(query, page))
        co_return;
    // A page goes on changing after it was counted, and what is said must not contradict what is shown.
    co_await countMatches(self, query, page);
    if (!self || !self->looksFor(query, page))
        co_return;
    const QString words = pageText(query);
    self->m_announcer.announce(self->m_count == 0 ? u"No matches for "_s + words
                                                  : u"%1 matches for "_s.arg(self->m_count) + words);
}

} // namespace morvane
