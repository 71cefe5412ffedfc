#include "ui/conversation/SegmentDocuments.h"

namespace morvane {

namespace {

/// Segments that left the viewport are kept for this many passes, so that a small scroll back costs nothing.
constexpr quint64 passesKept = 24;
constexpr std::size_t documentLimit = 64;
/// Bytes of pictures. More are kept only where the viewport shows more.
constexpr qsizetype pictureLimit = 16'000'000;

} // namespace

SegmentDocuments::Entry *SegmentDocuments::find(const SegmentKey &key)
{
    const auto found = m_entries.find(key);
    if (found == m_entries.end())
        return nullptr;
    found->second.lastUse = m_pass;
    return &found->second;
}

const SegmentDocuments::Entry *SegmentDocuments::peek(const SegmentKey &key) const
{
    const auto found = m_entries.find(key);
    return found == m_entries.end() ? nullptr : &found->second;
}

SegmentPicture *SegmentDocuments::picture(const SegmentKey &key)
{
    const auto found = m_entries.find(key);
    const bool isKept = found != m_entries.end() && found->second.isDear;
    return isKept ? &found->second.picture : nullptr;
}

SegmentDocuments::Entry &SegmentDocuments::insert(const SegmentKey &key,
                                                  std::unique_ptr<QTextDocument> document,
                                                  qsizetype shownLength)
{
    Entry &entry = m_entries[key];
    entry = Entry();
    entry.document = std::move(document);
    entry.shownLength = shownLength;
    entry.lastUse = m_pass;
    return entry;
}

void SegmentDocuments::removeRow(const ConversationItem &item)
{
    std::erase_if(m_entries, [&item](const auto &entry) { return entry.first.item == item; });
}

qsizetype SegmentDocuments::pictureBytes() const
{
    qsizetype bytes = 0;
    for (const auto &[key, entry] : m_entries) {
        const QPixmap &pixmap = entry.picture.pixmap;
        bytes += static_cast<qsizetype>(pixmap.width()) * pixmap.height() * pixmap.depth() / 8;
    }
    return bytes;
}

void SegmentDocuments::beginPass()
{
    if (pictureBytes() > pictureLimit) {
        for (auto &[key, entry] : m_entries)
            if (entry.lastUse < m_pass)
                entry.picture = {};
    }
    ++m_pass;
    const quint64 kept = m_entries.size() > documentLimit ? 1 : passesKept;
    std::erase_if(m_entries,
                  [this, kept](const auto &entry) { return entry.second.lastUse + kept < m_pass; });
}

} // namespace morvane
