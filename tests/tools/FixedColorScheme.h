#pragma once

#include "platform/ColorScheme.h"

namespace morvane {

/// A desktop that wants light or dark and never changes its mind.
class FixedColorScheme : public ColorScheme {
public:
    explicit FixedColorScheme(Preference preference) : m_preference(preference) {}
    Preference preference() const override { return m_preference; }

private:
    Preference m_preference;
};

} // namespace morvane
