#pragma once

#include <QString>
#include <QStringList>
#include <random>

namespace morvane {

/// Texts of tokens in random order, the same ones at every run.
class RandomTokens {
public:
    RandomTokens(QStringList tokens, unsigned seed) : m_tokens(std::move(tokens)), m_engine(seed) {}

    QString text(int maximumTokens)
    {
        QString text;
        for (auto left = m_engine() % static_cast<unsigned>(maximumTokens + 1); left > 0; --left)
            text += m_tokens.at(static_cast<qsizetype>(m_engine() % static_cast<unsigned>(m_tokens.size())));
        return text;
    }

private:
    QStringList m_tokens;
    std::mt19937 m_engine;
};

} // namespace morvane
