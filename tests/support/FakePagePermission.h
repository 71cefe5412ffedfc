#pragma once

#include "browser/pages/PagePermission.h"

#include <QStringList>
#include <utility>

namespace morvane {

/// What a page asks for; remembers the answers.
class FakePagePermission final : public PagePermission {
    Q_OBJECT
public:
    FakePagePermission(Kind wanted, QString from) : m_kind(wanted), m_site(std::move(from)) {}

    Kind kind() const override { return m_kind; }
    QString site() const override { return m_site; }
    void grant() override { answers.append(QStringLiteral("granted")); }
    void refuse() override { answers.append(QStringLiteral("refused")); }

    QStringList answers;

private:
    Kind m_kind;
    QString m_site;
};

} // namespace morvane
