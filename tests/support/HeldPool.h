#pragma once

#include <QSemaphore>
#include <QThreadPool>
#include <memory>

namespace morvane {

/// Keeps the global pool from whatever is asked of it, as a busy machine would, until it goes away.
class HeldPool {
public:
    HeldPool()
    {
        m_pool->setMaxThreadCount(1);
        m_pool->start([mayGoOn = m_mayGoOn] { mayGoOn->acquire(); });
    }
    ~HeldPool()
    {
        m_mayGoOn->release();
        m_pool->setMaxThreadCount(m_mostThreads);
    }
    Q_DISABLE_COPY_MOVE(HeldPool)

private:
    QThreadPool *m_pool = QThreadPool::globalInstance();
    const int m_mostThreads = m_pool->maxThreadCount();
    const std::shared_ptr<QSemaphore> m_mayGoOn = std::make_shared<QSemaphore>();
};

} // namespace morvane
