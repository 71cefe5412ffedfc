#include "attachments/reader/DocumentText.h"

#include "attachments/AttachmentLimits.h"
#include "attachments/reader/RecognitionQueue.h"
#include "base/Text.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QStringList>
#include <QVariant>
#include <algorithm>
#include <cmath>
#include <poppler-qt6.h>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

namespace limits = attachmentLimits;

/// The picture of a scanned page: what an American letter takes at 200 dots an inch.
constexpr QSizeF thumbnail(1'700, 2'200);
constexpr double pointsPerInch = 72;

bool hasExpired(const QVariant &deadline)
{
    return deadline.value<QDeadlineTimer>().hasExpired();
}

/// The words of a page in reading order, a line feed behind each line. Pages of honest documents take
/// milliseconds; what a page has not given when the time is over is left out.
QString textOf(const Poppler::Page &page, const QDeadlineTimer &deadline)
{
    QString text;
    const auto words = page.textList(Poppler::Page::Rotate0, &hasExpired, QVariant::fromValue(deadline));
    for (const auto &word : words) {
        text += word->text();
        if (!word->nextWord())
            text += u'\n';
        else if (word->hasSpaceAfter())
            text += u' ';
    }
    return trimmed(text);
}

/// The entries of the result, and how many of its characters they make up.
class Entries {
public:
    void append(const QString &entry)
    {
        m_characters += characterCount(entry) + (m_entries.isEmpty() ? 0 : 2);
        m_entries.append(entry);
    }
    /// Whether everything further would be cut off.
    bool isFull() const { return m_characters > limits::textCharacters; }
    QString joined() const { return m_entries.join(u"\n\n"_s); }

private:
    QStringList m_entries;
    qsizetype m_characters = 0;
};

struct PagePicture {
    QImage image;
    int dotsPerInch = 0;
};

PagePicture rendered(const Poppler::Page &page, const QDeadlineTimer &deadline)
{
    const QSizeF size = page.pageSizeF();
    if (!(size.width() > 0 && size.height() > 0))
        return {};
    const double scale = std::min(thumbnail.width() / size.width(), thumbnail.height() / size.height());
    const double resolution = pointsPerInch * scale;
    return {page.renderToImage(resolution, resolution, -1, -1, -1, -1, Poppler::Page::Rotate0, nullptr,
                               nullptr, &hasExpired, QVariant::fromValue(deadline)),
            static_cast<int>(std::lround(resolution))};
}

/// Appends what is recognised on the pages, which are rendered one by one and recognised several at once.
void appendScannedPages(const Poppler::Document &document, const QList<int> &pages, Entries &entries)
{
    RecognitionQueue queue;
    QList<int> waiting;
    const auto takeNext = [&] {
        const QString text = queue.takeNext();
        const int index = waiting.takeFirst();
        if (!text.isEmpty())
            entries.append(u"[Scanned page %1]\n"_s.arg(index + 1) + text);
    };
    const QDeadlineTimer all(limits::recognitionTime);
    for (const int index : pages) {
        if (queue.isFull())
            takeNext();
        if (entries.isFull() || all.hasExpired())
            break;
        const std::unique_ptr<Poppler::Page> page = document.page(index);
        const std::chrono::milliseconds timeOfPage(limits::recognitionTimeOfPage);
        const QDeadlineTimer deadline(std::min<qint64>(all.remainingTime(), timeOfPage.count()));
        const PagePicture picture = page ? rendered(*page, deadline) : PagePicture();
        queue.add(picture.image, picture.dotsPerInch, deadline);
        waiting.append(index);
    }
    while (!queue.isEmpty() && !entries.isFull())
        takeNext();
}

} // namespace

std::optional<QString> documentText(const QByteArray &bytes)
{
    Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(bytes);
    if (!document || document->isLocked())
        return std::nullopt;
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    const int pages = std::min(document->numPages(), limits::documentPages);
    Entries entries;
    QList<int> scanned;
    const QDeadlineTimer deadline(limits::documentTextTime);
    for (int index = 0; index < pages && !entries.isFull(); ++index) {
        const std::unique_ptr<Poppler::Page> page = document->page(index);
        const QString text = page ? textOf(*page, deadline) : QString();
        if (text.isEmpty())
            scanned.append(index);
        else
            entries.append(text);
    }
    appendScannedPages(*document, scanned, entries);
    return entries.joined();
}

} // namespace morvane
