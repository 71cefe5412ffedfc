#pragma once

#include "browser/pages/PageText.h"

#include <QHash>
#include <QString>

namespace morvane {

/// How often in a row the user has refused what a site asked for. A site that goes on asking would hold the
/// window for ever, question upon question.
class RefusedSites {
public:
    static constexpr int mostRefusals = 3;
    /// A page can have one site after the other ask for it.
    static constexpr int mostInAll = 6;

    /// Whether the site is to be refused without a question.
    bool goesOnAsking(const QString &site) const
    {
        return m_inAll >= mostInAll || m_refusals.value(site) >= mostRefusals;
    }
    void refused(const QString &site)
    {
        ++m_refusals[site];
        ++m_inAll;
    }
    void agreed(const QString &site)
    {
        m_refusals.remove(site);
        m_inAll = 0;
    }
    /// Who is refused with a site that goes on asking.
    QString refusedWith(const QString &site) const
    {
        return m_inAll >= mostInAll ? QStringLiteral("all sites") : nameOf(site);
    }
    /// What a site is called; it may have no host.
    static QString nameOf(const QString &site) { return pageName(site, QStringLiteral("this page")); }
    /// All of them may ask again.
    void forget()
    {
        m_refusals.clear();
        m_inAll = 0;
    }

private:
    QHash<QString, int> m_refusals;
    int m_inAll = 0; ///< Without an agreement.
};

} // namespace morvane
