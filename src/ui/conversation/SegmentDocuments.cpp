#include "ui/conversation/SegmentDocuments.h"

namespace morvane {

namespace {

/// Segments that left the viewport are kept for this many passes, so that a small scroll back costs nothing.
constexpr quint64 passesKept = 24;
constexpr std::size_t documentLimit = 64;

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

void SegmentDocuments::beginPass()
{
    ++m_pass;
    const quint64 kept = m_entries.size() > documentLimit ? 1 : passesKept;
    std::erase_if(m_entries,
                  [this, kept](const auto &entry) { return entry.second.lastUse + kept < m_pass; });
}

} // namespace morvane
