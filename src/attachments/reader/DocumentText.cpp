#include "attachments/reader/DocumentText.h"

#include "attachments/AttachmentLimits.h"
#include "attachments/reader/LogicalOrder.h"
#include "attachments/reader/PageNumbers.h"
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

/// What a page gives before the time is over, a line feed behind each line.
QString textOf(const Poppler::Page &page, const QDeadlineTimer &deadline)
{
    QStringList lines(QString{});
    const auto words = page.textList(Poppler::Page::Rotate0, &hasExpired, QVariant::fromValue(deadline));
    for (const auto &word : words) {
        lines.last() += word->text();
        if (!word->nextWord())
            lines.append(QString());
        else if (word->hasSpaceAfter())
            lines.last() += u' ';
    }
    return trimmed(inLogicalOrder(lines).join(u'\n'));
}

/// The entries of the result, and how many of its characters they make up.
class Entries {
public:
    void append(const QString &entry)
    {
        m_characters += characterCount(entry) + (m_entries.isEmpty() ? 0 : 2);
        m_entries.append(entry);
    }
    bool isEmpty() const { return m_entries.isEmpty(); }
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

/// Makes the text of one document.
class Reading {
public:
    Reading(const Poppler::Document &document, const DocumentTimes &times)
        : m_document(document), m_times(times)
    {
    }

    QString text()
    {
        const int pages = std::min(m_document.numPages(), limits::documentPages);
        const QDeadlineTimer deadline(m_times.text);
        for (int index = 0; index < pages && !m_entries.isFull(); ++index)
            readText(index, deadline);
        recognizeScans();
        if (!m_entries.isEmpty() && !m_entries.isFull() && !m_late.isEmpty())
            m_entries.append(lateNote());
        return m_entries.joined();
    }

private:
    void readText(int index, const QDeadlineTimer &deadline)
    {
        const std::unique_ptr<Poppler::Page> page = deadline.hasExpired() ? nullptr : m_document.page(index);
        const QString text = page ? textOf(*page, deadline) : QString();
        if (!text.isEmpty())
            m_entries.append(text);
        if (deadline.hasExpired())
            m_late.append(index + 1);
        else if (text.isEmpty())
            m_scans.append(index);
    }

    /// Pages are rendered one by one and recognised several at once.
    void recognizeScans()
    {
        RecognitionQueue queue;
        QList<int> waiting;
        const QDeadlineTimer deadline(m_times.recognition);
        for (const int index : m_scans) {
            if (queue.isFull())
                takeNext(queue, waiting.takeFirst());
            if (m_entries.isFull())
                return;
            const QDeadlineTimer ofPage(
                std::min<qint64>(deadline.remainingTime(), m_times.recognitionOfPage.count()));
            const std::unique_ptr<Poppler::Page> page =
                ofPage.hasExpired() ? nullptr : m_document.page(index);
            const PagePicture picture = page ? rendered(*page, ofPage) : PagePicture();
            queue.add(picture.image, picture.dotsPerInch, ofPage);
            waiting.append(index);
        }
        while (!queue.isEmpty() && !m_entries.isFull())
            takeNext(queue, waiting.takeFirst());
    }

    void takeNext(RecognitionQueue &queue, int index)
    {
        const RecognizedText recognized = queue.takeNext();
        if (!recognized.text.isEmpty())
            m_entries.append(u"[Scanned page %1]\n"_s.arg(index + 1) + recognized.text);
        if (recognized.end == RecognizedText::End::early)
            m_late.append(index + 1);
    }

    QString lateNote() const
    {
        return m_late.size() == 1
                   ? u"[Page %1 took too long and was not read in full.]"_s.arg(m_late.constFirst())
                   : u"[Pages %1 took too long and were not read in full.]"_s.arg(pageNumbers(m_late));
    }

    const Poppler::Document &m_document;
    DocumentTimes m_times;
    Entries m_entries;
    QList<int> m_scans; ///< Counted from 0.
    QList<int> m_late;  ///< Counted from 1.
};

} // namespace

std::optional<QString> documentText(const QByteArray &bytes, const DocumentTimes &times)
{
    Poppler::setDebugErrorFunction([](const QString &, const QVariant &) {}, {});
    const std::unique_ptr<Poppler::Document> document = Poppler::Document::loadFromData(bytes);
    if (!document || document->isLocked())
        return std::nullopt;
    document->setRenderHint(Poppler::Document::Antialiasing);
    document->setRenderHint(Poppler::Document::TextAntialiasing);
    return Reading(*document, times).text();
}

} // namespace morvane
