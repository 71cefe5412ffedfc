#pragma once

#include <QByteArray>
#include <QStringView>
#include <memory>

struct UCollator;

namespace morvane {

/// The order in which a person of the user's language looks names up, without regard to case. Objects are
/// used by one thread at a time.
class NameOrder {
public:
    NameOrder();
    ~NameOrder();
    NameOrder(const NameOrder &) = delete;
    NameOrder &operator=(const NameOrder &) = delete;

    /// Bytes that compare as the names do; equal for names that differ in case only.
    QByteArray sortKey(QStringView name) const;

private:
    struct Close {
        void operator()(UCollator *collator) const;
    };
    std::unique_ptr<UCollator, Close> m_collator;
};

} // namespace morvane
