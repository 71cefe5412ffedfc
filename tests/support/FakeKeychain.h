#pragma once

#include "platform/KeychainStore.h"

#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QSemaphore>
#include <QStringList>
#include <QThread>

namespace morvane {

/// A keychain in memory that records what it was asked, and whether the main thread asked it.
class FakeKeychain final : public KeychainStore {
public:
    std::optional<QByteArray> read(const QString &key, const QString &service) override
    {
        if (held)
            gate.acquire();
        const QMutexLocker lock(&m_mutex);
        m_reads.append(service + u'/' + key);
        m_askedByMainThread |= QThread::currentThread() == m_mainThread;
        const auto item = m_items.constFind(service + u'/' + key);
        return item == m_items.cend() ? std::nullopt : std::optional(*item);
    }

    void remove(const QString &key, const QString &service) override
    {
        const QMutexLocker lock(&m_mutex);
        m_askedByMainThread |= QThread::currentThread() == m_mainThread;
        m_items.remove(service + u'/' + key);
        m_removals.append(service + u'/' + key);
    }

    void put(const QString &key, const QString &service, const QByteArray &data)
    {
        const QMutexLocker lock(&m_mutex);
        m_items.insert(service + u'/' + key, data);
    }

    QMap<QString, QByteArray> items() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_items;
    }
    QStringList reads() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_reads;
    }
    QStringList removals() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_removals;
    }
    bool askedByMainThread() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_askedByMainThread;
    }

    bool held = false; ///< Set before the first question: every read then waits for a token of `gate`.
    QSemaphore gate;

private:
    mutable QMutex m_mutex;
    QMap<QString, QByteArray> m_items; ///< By "service/key".
    QStringList m_reads;
    QStringList m_removals;
    bool m_askedByMainThread = false;
    const QThread *const m_mainThread = QThread::currentThread();
};

} // namespace morvane
