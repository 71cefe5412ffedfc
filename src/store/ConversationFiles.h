#pragma once

#include "base/FileIdentity.h"
#include "model/ConversationMeta.h"
#include "store/ConversationFile.h"
#include "store/ConversationSummary.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QUuid>
#include <optional>

namespace morvane {

/// The folder of conversation files, `{ID}.json` each. Every call blocks for the disk; one thread at a time.
///
/// Whatever lies in the folder, no call fails, hangs or deletes it: a file that cannot be decoded is passed
/// over. What a scan found is remembered for as long as the file does not change, so that a second list only
/// looks at the names.
class ConversationFiles {
public:
    /// Larger files are neither listed nor opened: they would not fit into memory several times over.
    static constexpr qint64 maximumFileBytes = qint64(1) << 30;

    explicit ConversationFiles(QString folder) : m_folder(std::move(folder)) {}

    /// Creates the folder for the user alone, narrows an older one, clears what crashed writes left.
    void prepareFolder();

    /// Every file that decodes, newest first; equal dates keep the folder's order. Files of older versions
    /// that others could read are narrowed.
    QList<ConversationMeta> list();

    /// The content of `{id}.json`; nothing if there is no such file or it cannot be decoded.
    std::optional<ConversationFile> load(QUuid id) const;

    /// Writes `{id}.json` atomically and durably, keeping the creation date of an older one that decodes. The
    /// older file stands when the write fails.
    void save(QUuid id, const QString &title, const QList<ChatMessage> &messages, double now);

    /// Removes `{id}.json` if it is there.
    void remove(QUuid id);

private:
    /// What is known of a file in one of its states; no summary for one that does not decode.
    struct Scanned {
        FileIdentity identity;
        std::optional<ConversationSummary> summary;
    };

    QString path(const QByteArray &name) const;
    std::optional<Scanned> scan(const QByteArray &name) const;
    void scanChanged(const QList<QByteArray> &names);
    std::optional<double> creationDate(const QByteArray &name);

    QString m_folder;
    QHash<QByteArray, Scanned> m_scanned; ///< By file name.
};

} // namespace morvane
