#include "store/ConversationFiles.h"

#include "base/AtomicFile.h"
#include "base/RegularFile.h"
#include "base/Uuid.h"
#include "store/ConversationScanner.h"
#include "store/Log.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <exception>
#include <expected>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

/// Files are read in pieces of this size. In bytes.
constexpr qint64 pieceBytes = 256 * 1024;

QByteArray fileName(QUuid id)
{
    return uuidText(id).toLatin1() + ".json";
}

/// Opens a regular file of a size that can be read; a pipe or a device with a file's name is never waited
/// for. Or why not.
std::expected<RegularFile, QString> openForReading(const QString &path)
{
    auto file = RegularFile::open(QFile::encodeName(path).constData());
    if (file && file->size() > ConversationFiles::maximumFileBytes)
        return std::unexpected(u"File too large"_s);
    return file;
}

/// Runs `work` on this thread and, for more than a handful of items, on a second one at once. The work is
/// complete when the two have returned, or the first one alone.
template <class Work> void runOnTwoThreads(const Work &work, qsizetype items)
{
    constexpr qsizetype worthAThread = 8;
    std::jthread second;
    try {
        if (items >= worthAThread)
            second = std::jthread(work);
    } catch (const std::system_error &error) { // No thread to be had.
        qCInfo(storeLog) << "one thread only:" << kindOfFailure(error);
    }
    work();
}

QList<QByteArray> jsonNames(const QString &folder)
{
    QList<QByteArray> names;
    std::error_code error;
    const std::filesystem::path path(QFile::encodeName(folder).toStdString());
    for (auto entry = std::filesystem::directory_iterator(path, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        if (entry->path().extension() == ".json")
            names.append(QByteArray::fromStdString(entry->path().filename().string()));
    return names;
}

} // namespace

QString ConversationFiles::path(const QByteArray &name) const
{
    return m_folder + u'/' + QFile::decodeName(name);
}

void ConversationFiles::prepareFolder()
{
    static_cast<void>(ensurePrivateFolder(m_folder)); // Each save tries again, and tells why it fails.
    removeAbandonedTemporaryFiles(m_folder);
}

QList<ConversationMeta> ConversationFiles::list()
{
    const QList<QByteArray> names = jsonNames(m_folder);
    scanChanged(names);

    std::multimap<double, ConversationMeta, std::greater<>> newestFirst; // Equal keys keep their order.
    for (const QByteArray &name : names) {
        const auto scanned = m_scanned.constFind(name);
        if (scanned == m_scanned.cend() || !scanned->summary)
            continue;
        const ConversationSummary &summary = *scanned->summary;
        newestFirst.insert({summary.updatedAt,
                            {.id = summary.id,
                             .title = summary.title.isEmpty() ? u"Untitled"_s : summary.title,
                             .updatedAt = summary.updatedAt,
                             .messageCount = summary.messageCount}});
    }
    QList<ConversationMeta> conversations;
    conversations.reserve(static_cast<qsizetype>(newestFirst.size()));
    for (auto &[date, conversation] : newestFirst)
        conversations.append(std::move(conversation));
    return conversations;
}

void ConversationFiles::scanChanged(const QList<QByteArray> &names)
{
    QHash<QByteArray, Scanned> known;
    QList<QByteArray> changed;
    for (const QByteArray &name : names) {
        const auto before = m_scanned.constFind(name);
        if (before != m_scanned.cend() && FileIdentity::ofPath(path(name)) == before->identity)
            known.insert(name, *before);
        else
            changed.append(name);
    }

    std::vector<std::optional<Scanned>> results(static_cast<std::size_t>(changed.size()));
    std::atomic<qsizetype> next = 0;
    const auto scanAll = [this, &changed, &results, &next] {
        for (qsizetype i = next++; i < changed.size(); i = next++)
            results[static_cast<std::size_t>(i)] = scan(changed.at(i));
    };
    runOnTwoThreads(scanAll, changed.size());
    for (qsizetype i = 0; i < changed.size(); ++i)
        if (const auto &result = results[static_cast<std::size_t>(i)])
            known.insert(changed.at(i), *result);
    m_scanned = std::move(known);
}

std::optional<ConversationFiles::Scanned> ConversationFiles::scan(const QByteArray &name) const
try {
    auto file = openForReading(path(name));
    if (!file) {
        if (QFileInfo::exists(path(name))) // What is saved for the first time is not there.
            qCInfo(storeLog) << "a conversation was not scanned:" << file.error();
        return std::nullopt;
    }
    // What a link leads to may serve others too, and keeps its mode.
    if (!isLink(QFile::encodeName(path(name)).constData()))
        file->makePrivate();
    const auto identity = FileIdentity::ofDescriptor(file->descriptor());
    if (!identity)
        return std::nullopt;

    std::vector<char> buffer(static_cast<std::size_t>(std::min(pieceBytes, identity->size + 1)));
    ConversationScanner scanner;
    while (true) {
        const auto count = file->read(buffer.data(), std::ssize(buffer));
        if (!count) {
            qCWarning(storeLog) << "a conversation could not be scanned:" << count.error();
            return std::nullopt;
        }
        if (*count == 0)
            return Scanned{*identity, scanner.finish()};
        if (!scanner.feed(QByteArrayView(buffer.data(), *count))) {
            qCInfo(storeLog) << "a file among the conversations is none, and is left as it is";
            return Scanned{*identity, std::nullopt};
        }
    }
} catch (const std::exception &error) { // Out of memory.
    qCWarning(storeLog) << "a conversation could not be scanned:" << kindOfFailure(error);
    return std::nullopt;
}

std::optional<ConversationFile> ConversationFiles::load(QUuid id) const
try {
    auto file = openForReading(path(fileName(id)));
    if (!file) {
        qCWarning(storeLog) << "a conversation was not opened:" << file.error();
        return std::nullopt;
    }
    std::vector<char> buffer(static_cast<std::size_t>(std::min(pieceBytes, file->size() + 1)));
    return decodeConversation([&file, &buffer]() -> std::optional<QByteArrayView> {
        const auto count = file->read(buffer.data(), std::ssize(buffer));
        if (count)
            return QByteArrayView(buffer.data(), *count);
        qCWarning(storeLog) << "a conversation could not be read:" << count.error();
        return std::nullopt;
    });
} catch (const std::exception &error) { // Out of memory.
    qCWarning(storeLog) << "a conversation could not be read:" << kindOfFailure(error);
    return std::nullopt;
}

std::optional<double> ConversationFiles::creationDate(const QByteArray &name)
{
    const auto known = m_scanned.constFind(name);
    const auto scanned = known != m_scanned.cend() && FileIdentity::ofPath(path(name)) == known->identity
                             ? std::optional(*known)
                             : scan(name);
    return scanned && scanned->summary ? std::optional(scanned->summary->createdAt) : std::nullopt;
}

void ConversationFiles::save(QUuid id, const QString &title, const QList<ChatMessage> &messages, double now)
try {
    const QByteArray name = fileName(id);
    const ConversationFile file{.id = id,
                                .title = title,
                                .createdAt = creationDate(name).value_or(now),
                                .updatedAt = now,
                                .messages = messages};
    static_cast<void>(ensurePrivateFolder(m_folder)); // The user may have removed it in the meantime.
    m_scanned.remove(name);
    if (const auto written = writeFileAtomically(path(name), encodeConversation(file)); !written) {
        qCWarning(storeLog) << "a conversation could not be saved:" << written.error();
        return;
    }
    if (const auto identity = FileIdentity::ofPath(path(name)))
        m_scanned.insert(name, {*identity, ConversationSummary{.id = id,
                                                               .title = title,
                                                               .createdAt = file.createdAt,
                                                               .updatedAt = now,
                                                               .messageCount = messages.size()}});
} catch (const std::exception &error) { // Out of memory: the older file stands.
    qCWarning(storeLog) << "a conversation could not be saved:" << kindOfFailure(error);
}

void ConversationFiles::remove(QUuid id)
{
    const QByteArray name = fileName(id);
    m_scanned.remove(name);
    if (::unlink(QFile::encodeName(path(name)).constData()) != 0 && errno != ENOENT)
        qCWarning(storeLog) << "a conversation could not be removed:" << systemReason(errno);
}

} // namespace morvane
