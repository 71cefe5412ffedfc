#pragma once

#include "browser/history/RecordsFile.h"

#include <QList>
#include <QObject>
#include <functional>
#include <optional>
#include <utility>
#include <variant>

namespace morvane {

/// Records that lie in a file and are kept in memory. The file is read in the background; what is changed
/// before it is there waits for it, and nothing is lost when the program ends earlier. Main thread.
template <class Record> class StoredRecords {
public:
    using Records = QList<Record>;
    /// Changes the records; whether there was anything to change.
    using Change = std::function<bool(Records &)>;

    struct Form {
        QByteArray (*encode)(const Records &);
        std::optional<Records> (*decode)(QByteArrayView);
    };

    /// `isRead` may change the records that were read, and what it changes is not written; `changed` is told
    /// of each change that can be seen.
    StoredRecords(const QString &path, Form form, std::function<void(Records &)> isRead,
                  std::function<void()> changed)
        : m_form(form), m_isRead(std::move(isRead)), m_changed(std::move(changed)), m_file(path)
    {
        m_file.read([this](std::optional<QByteArray> content) {
            if (content)
                m_found = m_form.decode(*content);
            QMetaObject::invokeMethod(&m_mainThread, [this] { takeFound(); }, Qt::QueuedConnection);
        });
    }

    /// Makes the changes that still wait, and tells of them; waits for the file.
    ~StoredRecords()
    {
        m_file.finish();
        takeFound();
    }

    StoredRecords(const StoredRecords &) = delete;
    StoredRecords &operator=(const StoredRecords &) = delete;

    /// None while the file is being read.
    const Records &records() const { return m_records; }

    /// Changes the records and writes them, as soon as they are there.
    void change(Change change)
    {
        if (auto *reading = std::get_if<Reading>(&m_phase)) {
            reading->waiting.append(std::move(change));
            return;
        }
        if (!change(m_records))
            return;
        write();
        m_changed();
    }

    /// Forgets all records, those that are still being read too, and removes the file.
    void clear()
    {
        m_phase = Ready();
        m_records.clear();
        m_file.remove();
        m_changed();
    }

private:
    struct Reading {
        QList<Change> waiting;
    };
    struct Ready {};

    void takeFound()
    {
        const auto *reading = std::get_if<Reading>(&m_phase);
        if (!reading) { // they were cleared before they came
            m_found.reset();
            return;
        }
        const QList<Change> waiting = reading->waiting;
        m_phase = Ready();
        if (m_found) {
            m_records = *std::exchange(m_found, std::nullopt);
            m_isRead(m_records);
        }
        bool isChanged = false;
        for (const Change &change : waiting)
            isChanged = change(m_records) || isChanged;
        if (isChanged)
            write();
        m_changed();
    }

    void write()
    {
        m_file.write([records = m_records, encode = m_form.encode] { return encode(records); });
    }

    const Form m_form;
    const std::function<void(Records &)> m_isRead;
    std::function<void()> m_changed;
    std::variant<Reading, Ready> m_phase;
    Records m_records;
    std::optional<Records> m_found; ///< The file's thread sets it before it tells the main thread.
    QObject m_mainThread;
    RecordsFile m_file;
};

} // namespace morvane
